#include "preferences/SDThemePreview.h"

#include "kit/widgets/QWGradientView.h"
#include "themes/SNTheme.h"
#include "themeview/SNLinkHighlighter.h"
#include "themeview/SNThemeTextStyler.h"

#include <QRegularExpression>
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
    static const QRegularExpression hashtag(
        QStringLiteral("#(\\w+)"), QRegularExpression::CaseInsensitiveOption);
    QTextCursor batch(document);
    batch.beginEditBlock();
    const QString text = document->toPlainText();
    for (QRegularExpressionMatchIterator it = hashtag.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        QTextCursor cursor(document);
        cursor.setPosition(int(match.capturedStart()));
        cursor.setPosition(int(match.capturedEnd()), QTextCursor::KeepAnchor);
        QTextCharFormat link;
        link.setAnchor(true);
        link.setAnchorHref(match.captured());
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
