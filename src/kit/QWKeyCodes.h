#pragma once

#include <QList>
#include <Qt>

// The one translation table between the hardware key codes that settings store (the classic
// virtual key numbering the hot-key defaults were written in: 0 is A, 45 is N, 49 Space, 53
// Escape) and what this platform speaks: Qt key values for key events and X11 keysyms for
// global grabs. Modifier masks are translated here too, so that no other file knows the
// numbers. The modifier flags themselves are QWKeyCombo's.
class QWKeyCodes final
{
public:
    QWKeyCodes() = delete;

    // Every code the table knows, in table order.
    static QList<qint64> allKeyCodes();
    static bool isKnownKeyCode(qint64 code);

    // Qt::Key_unknown for a code outside the table. Keypad keys answer the Qt key of their
    // symbol; isKeypadKeyCode tells them apart from the main block.
    static Qt::Key qtKeyForKeyCode(qint64 code);
    static bool isKeypadKeyCode(qint64 code);
    // -1 when no code has that key. A key that exists only on the keypad (or only on the main
    // block) is found whatever `keypad` says, so Shift+= typed as Key_Plus still finds a code.
    static qint64 keyCodeForQtKey(int qtKey, bool keypad = false);

    // X11 keysyms. Letters answer their lower-case keysym (what a key produces without
    // Shift); both cases map back to the letter's code. 0 (NoSymbol) or -1 when unknown.
    static quint32 keysymForKeyCode(qint64 code);
    static qint64 keyCodeForKeysym(quint32 keysym);

    static Qt::KeyboardModifiers qtModifiersForFlags(quint64 flags);
    static quint64 flagsForQtModifiers(Qt::KeyboardModifiers modifiers);
    // X11 masks: Shift, Control, Mod1 (Alt) and Mod4 (Super). Lock and Num Lock bits are
    // ignored on the way back, since a grab sees them set or not at random.
    static quint16 x11ModifiersForFlags(quint64 flags);
    static quint64 flagsForX11Modifiers(quint32 mask);
};
