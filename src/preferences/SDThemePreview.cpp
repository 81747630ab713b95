#include "preferences/SDThemePreview.h"

#include "kit/widgets/QWGradientView.h"
#include "tags/SNHashtagScanner.h"
#include "themes/SNTheme.h"
#include "themeview/SNLinkHighlighter.h"
#include "themeview/SNThemeTextStyler.h"

#include <QTextBrowser>
#include <QTextCursor>

QString SDThemePreview::sampleText()
{
    return tr("Saturday market #home\n"
              "Bread, pears and flowers for the table. Ask about the cake for #family lunch.");
}

SDThemePreview::SDThemePreview(QWGradientView *gradientView, QTextBrowser *textView)
    : m_gradientView(gradientView), m_textView(textView)
{
    // The gradient shows through the text.
    m_textView->setStyleSheet(QStringLiteral("QTextBrowser { background: transparent; }"));
    m_textView->viewport()->setAutoFillBackground(false);
    m_textView->setFocusPolicy(Qt::NoFocus);
    m_textView->setPlainText(sampleText());
    m_linkHighlighter = new SNLinkHighlighter(m_textView->document());
    tokenizeTags();
}

SDThemePreview::~SDThemePreview() = default;

void SDThemePreview::tokenizeTags()
{
    // Links only: the preview's hashtags are not tags of any note.
    QTextDocument *document = m_textView->document();
    QTextCursor batch(document);
    batch.beginEditBlock();
    const QString text = document->toPlainText();
    for (const SNHashtagScanner::Occurrence &occurrence :
        SNHashtagScanner::occurrencesInString(text)) {
        QTextCursor cursor(document);
        cursor.setPosition(int(occurrence.start));
        cursor.setPosition(int(occurrence.start + occurrence.length), QTextCursor::KeepAnchor);
        QTextCharFormat link;
        link.setAnchor(true);
        link.setAnchorHref(occurrence.name);
        cursor.mergeCharFormat(link);
    }
    batch.endEditBlock();
}

void SDThemePreview::showTheme(const SNTheme &theme)
{
    m_gradientView->setStartColor(theme.startColor().toQColor());
    m_gradientView->setEndColor(theme.endColor().toQColor());
    m_gradientView->update();

    QPalette palette = m_textView->palette();
    palette.setColor(QPalette::Text, theme.defaultFontColor().toQColor());
    // The insertion point is drawn in the text colour of the palette; a preview has none, but
    // the colour is kept where an editable preview would look for it.
    palette.setColor(QPalette::WindowText, theme.cursorColor().toQColor());
    m_textView->setPalette(palette);
    const QWFont font = theme.defaultFont();
    m_textView->document()->setDefaultFont(font.toQFont());
    QTextCursor all(m_textView->document());
    all.select(QTextCursor::Document);
    all.mergeCharFormat(SNThemeTextStyler::fontFormat(font));
    m_linkHighlighter->setLinkFormat(SNThemeTextStyler::linkFormat(theme));
    m_linkHighlighter->rehighlight();
}
