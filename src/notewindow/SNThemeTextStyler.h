#pragma once

#include <QTextCharFormat>

class QTextDocument;
class QWFont;
class SNTheme;

// Puts a note's text into a theme: every run takes the theme's font family while keeping its
// own bold, italic and size, and text still in the previous theme's default colour takes the new
// theme's one. Colours the user chose stay as they are.
class SNThemeTextStyler final
{
public:
    SNThemeTextStyler() = delete;

    // True when the document changed. The change is not an edit the user can undo: a theme is
    // not part of the text's history, so an undo must not turn the text back into colours that
    // belong to another background. The undo history therefore starts afresh when anything
    // changed.
    static bool restyleDocument(
        QTextDocument &document, const SNTheme &theme, const SNTheme *previousTheme);

    // A font as the text stores it: the family as the theme names it, then the installed
    // look-alikes that drawing falls back to.
    static QTextCharFormat fontFormat(const QWFont &font);
    // What new text is typed in: the theme's default font and colour.
    static QTextCharFormat typingFormat(const SNTheme &theme);
    // How links are shown (not stored): the theme's link colour and default font, underlined
    // with dots.
    static QTextCharFormat linkFormat(const SNTheme &theme);

    static constexpr int linkUnderlineStyle = 257; // single line, dotted
};
