#pragma once

#include <QString>

class QTextEdit;
class QWAttributedString;
class SNTheme;

// Puts a note's text, changed on another computer, into its open editor without disturbing
// whoever types there: the cursor and the selection stay on the same characters (moved by what
// was inserted or deleted before them), the view keeps its scroll position, and the change
// makes no edit of its own (no text-changed signal).
class SNMergedTextLoader final
{
public:
    SNMergedTextLoader() = delete;

    // False when the editor already shows this text, and nothing was done.
    static bool load(QTextEdit &editor, const QWAttributedString &text, const SNTheme *theme);
    // Where a position in `before` is in `after`: the same before the changed part, shifted by
    // the change after it, and at the change's end inside it.
    static int mapPosition(const QString &before, const QString &after, int position);
};
