#pragma once

#include <QTextCharFormat>

class QTextCursor;
class QTextDocument;
class QWAttributedString;
class QWFont;
class SNTheme;

// Keeps a note's text apart from its theme while it is edited. In the editor a run carries only
// what is its own (size, bold, italic, a colour the user chose...); the theme's family and text
// colour are the editor's defaults. So a change of theme edits no text: the selection keeps its
// formats and the undo history stays whole. The note stores its text with the theme's family
// and colour written into every run, as other programs reading the archive or an RTF expect.
// It does not decide when a theme changes, nor draw the window; the note window does that.
class SNThemeTextStyler final
{
public:
    SNThemeTextStyler() = delete;

    // Makes freshly loaded text theme-neutral: every run loses its family (a note is always
    // drawn in its theme's family), and colours that are just the theme's text colour become
    // no colour. Not an edit: call it before the undo history starts.
    static void neutralizeDocument(QTextDocument &document, const SNTheme &theme);
    // Takes the family off the characters of the cursor's selection, as one step with the edit
    // just made (a paste brings the fonts of the program it came from).
    static void removeFamiliesInSelection(QTextCursor &cursor);
    // The text as the note keeps it: the theme's family and colour wherever a run has none.
    static QWAttributedString storedString(const QTextDocument &document, const SNTheme &theme);

    // A font as the text stores it: the family as the theme names it, then the installed
    // look-alikes that drawing falls back to.
    static QTextCharFormat fontFormat(const QWFont &font);
    // What new text is typed in: the theme's size, upright and not bold; family and colour
    // come from the editor's defaults.
    static QTextCharFormat typingFormat(const SNTheme &theme);
    // What a run without a font or colour of its own is in: the theme's font and text colour.
    static QTextCharFormat themeFormat(const SNTheme &theme);
    // How links are shown (not stored): the theme's link colour and default font, underlined
    // with dots.
    static QTextCharFormat linkFormat(const SNTheme &theme);
    // Whether a colour is the theme's text colour as drawn.
    static bool isThemeTextColor(const QTextCharFormat &format, const SNTheme &theme);

    static constexpr int linkUnderlineStyle = 257; // single line, dotted
};
