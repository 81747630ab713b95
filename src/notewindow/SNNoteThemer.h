#pragma once

class SNTheme;

namespace Ui {
class SNStickyNoteWindowController;
}

// Draws a note window in a theme: the gradient behind the text, the toolbar's images for a
// light or a dark theme, the colours of the caret, the scroller, the counter and the collapsed
// title, the look of links, and the font and colour of text that has none of its own. The text
// itself holds no theme, so none of this is an edit.
class SNNoteThemer final
{
public:
    explicit SNNoteThemer(Ui::SNStickyNoteWindowController &ui);

    void applyTheme(const SNTheme &theme);

private:
    void applyToolbarIcons(bool dark);

    Ui::SNStickyNoteWindowController &m_ui;
};
