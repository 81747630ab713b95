#pragma once

#include <QtGlobal>

class QWidget;

// What a note's pin state does to its window: 0 a normal window, 1 kept above other windows,
// 2 kept below them and shown on every workspace (so showing the desktop or switching
// workspaces leaves it in place). Any other stored value behaves as 0.
class SNWindowLevel final
{
public:
    enum class Level { Normal, Floating, Desktop };

    SNWindowLevel() = delete;

    static Level levelForPinState(qint64 pinState);
    static void applyPinState(QWidget *window, qint64 pinState);
    // For a dialog that belongs to a note: above other windows whenever the note is not a
    // normal window. Above a floating note it could otherwise end up behind the note; for a
    // note on the desktop, window managers stack the note's dialogs with the note, below every
    // other window, where nobody would see them.
    static void applyDialogLevel(QWidget *dialog, qint64 notePinState);

private:
    static void setLevel(QWidget *window, Level level);
};
