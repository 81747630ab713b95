#include "notewindow/SNNoteThemer.h"

#include "kit/widgets/QWGradientView.h"
#include "notewindow/SNTextView.h"
#include "notewindow/SNToolbarIcon.h"
#include "themes/SNTheme.h"
#include "themeview/SNThemeTextStyler.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QApplication>
#include <QSignalBlocker>

namespace {

void setTextColor(QWidget *widget, const QColor &color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

} // namespace

SNNoteThemer::SNNoteThemer(Ui::SNStickyNoteWindowController &ui) : m_ui(ui) { }

void SNNoteThemer::applyTheme(const SNTheme &theme)
{
    const QColor textColor = theme.defaultFontColor().toQColor();
    setTextColor(m_ui.wordCountLabel, textColor);
    QFont titleFont = QApplication::font();
    titleFont.setPointSizeF(13);
    m_ui.collapsedTitleLabel->setFont(titleFont);
    setTextColor(m_ui.collapsedTitleLabel, textColor);

    SNTextView *text = m_ui.textView;
    text->setInsertionPointColor(theme.cursorColor().toQColor());
    text->setScrollerColor(theme.isDark() ? QColor(255, 255, 255, 90) : QColor(0, 0, 0, 70));
    m_ui.contentView->setStartColor(theme.startColor().toQColor());
    m_ui.contentView->setEndColor(theme.endColor().toQColor());
    applyToolbarIcons(theme.isDark());

    // None of this is an edit of the note.
    const QSignalBlocker blocker(text);
    text->setLinkTextAttributes(SNThemeTextStyler::linkFormat(theme));
    text->setLinkCursor(QCursor(Qt::PointingHandCursor));

    // What text without a font or colour of its own is drawn in.
    text->setFont(theme.defaultFont().toQFont());
    QPalette textPalette = text->palette();
    textPalette.setColor(QPalette::Text, textColor);
    textPalette.setColor(QPalette::Base, Qt::transparent);
    text->setPalette(textPalette);

    // The text itself holds no theme, so nothing in it changes: not the formats of a
    // selection, nor the undo history. A selection keeps its formats for what replaces it.
    if (!text->textCursor().hasSelection())
        text->setCurrentCharFormat(SNThemeTextStyler::typingFormat(theme));
}

void SNNoteThemer::applyToolbarIcons(bool dark)
{
    const std::pair<QToolButton *, QString> buttons[]
        = { { m_ui.closeButton, SNToolbarIcon::closeIconName },
              { m_ui.pinButton, SNToolbarIcon::pinIconName },
              { m_ui.settingsButton, SNToolbarIcon::settingsIconName },
              { m_ui.tagButton, SNToolbarIcon::searchIconName } };
    for (const auto &[button, name] : buttons)
        button->setIcon(SNToolbarIcon::iconNamed(SNToolbarIcon::nameForTheme(name, dark)));
}
