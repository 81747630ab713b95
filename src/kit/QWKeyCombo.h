#pragma once

#include <QString>
#include <Qt>

// A key combination as settings store it: a modifier mask and a hardware key code (see
// QWKeyCodes for what the numbers mean here). The empty combination is stored as no modifiers
// and code 0 (what the preferences store when the user clears a hot key); a negative code reads
// as empty too. An empty combination is never registered but can be recorded over later like
// any other. (Code 0 is the A key, which without a modifier is never a hot key.)
struct QWKeyCombo final
{
    static constexpr quint64 ShiftKeyMask = 0x20000;
    static constexpr quint64 ControlKeyMask = 0x40000;
    static constexpr quint64 OptionKeyMask = 0x80000; // Alt
    static constexpr quint64 CommandKeyMask = 0x100000; // Super
    static constexpr quint64 ModifierKeysMask
        = ShiftKeyMask | ControlKeyMask | OptionKeyMask | CommandKeyMask;
    static constexpr qint64 NoKeyCode = -1;

    quint64 flags = 0;
    qint64 code = NoKeyCode;

    bool isEmpty() const { return code < 0 || (flags == 0 && code == 0); }

    // From a key event: the code of the key (keypad keys when the keypad modifier is set) and
    // the four modifiers; empty when the table has no code for the key.
    static QWKeyCombo fromQtKey(int qtKey, Qt::KeyboardModifiers modifiers);

    // As the user reads it, modifiers first: "Ctrl+Shift+N", "Ctrl+Alt+Super+N". Keypad keys
    // read "Num+5"; a code outside the table reads "Key 200". Empty for the empty combination.
    QString description() const;

    friend bool operator==(const QWKeyCombo &, const QWKeyCombo &) = default;
};
