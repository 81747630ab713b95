#include "kit/QWKeyCodes.h"

#include "kit/QWKeyCombo.h"

#include <X11/X.h>
#include <X11/keysym.h>
#include <array>

namespace {

struct KeyEntry
{
    qint64 code;
    Qt::Key qtKey;
    bool keypad;
    quint32 keysym;
};

// Codes follow the physical position on an ANSI keyboard, hence the unsorted letters.
constexpr std::array keyTable {
    KeyEntry { 0, Qt::Key_A, false, XK_a },
    KeyEntry { 1, Qt::Key_S, false, XK_s },
    KeyEntry { 2, Qt::Key_D, false, XK_d },
    KeyEntry { 3, Qt::Key_F, false, XK_f },
    KeyEntry { 4, Qt::Key_H, false, XK_h },
    KeyEntry { 5, Qt::Key_G, false, XK_g },
    KeyEntry { 6, Qt::Key_Z, false, XK_z },
    KeyEntry { 7, Qt::Key_X, false, XK_x },
    KeyEntry { 8, Qt::Key_C, false, XK_c },
    KeyEntry { 9, Qt::Key_V, false, XK_v },
    KeyEntry { 10, Qt::Key_section, false, XK_section },
    KeyEntry { 11, Qt::Key_B, false, XK_b },
    KeyEntry { 12, Qt::Key_Q, false, XK_q },
    KeyEntry { 13, Qt::Key_W, false, XK_w },
    KeyEntry { 14, Qt::Key_E, false, XK_e },
    KeyEntry { 15, Qt::Key_R, false, XK_r },
    KeyEntry { 16, Qt::Key_Y, false, XK_y },
    KeyEntry { 17, Qt::Key_T, false, XK_t },
    KeyEntry { 18, Qt::Key_1, false, XK_1 },
    KeyEntry { 19, Qt::Key_2, false, XK_2 },
    KeyEntry { 20, Qt::Key_3, false, XK_3 },
    KeyEntry { 21, Qt::Key_4, false, XK_4 },
    KeyEntry { 22, Qt::Key_6, false, XK_6 },
    KeyEntry { 23, Qt::Key_5, false, XK_5 },
    KeyEntry { 24, Qt::Key_Equal, false, XK_equal },
    KeyEntry { 25, Qt::Key_9, false, XK_9 },
    KeyEntry { 26, Qt::Key_7, false, XK_7 },
    KeyEntry { 27, Qt::Key_Minus, false, XK_minus },
    KeyEntry { 28, Qt::Key_8, false, XK_8 },
    KeyEntry { 29, Qt::Key_0, false, XK_0 },
    KeyEntry { 30, Qt::Key_BracketRight, false, XK_bracketright },
    KeyEntry { 31, Qt::Key_O, false, XK_o },
    KeyEntry { 32, Qt::Key_U, false, XK_u },
    KeyEntry { 33, Qt::Key_BracketLeft, false, XK_bracketleft },
    KeyEntry { 34, Qt::Key_I, false, XK_i },
    KeyEntry { 35, Qt::Key_P, false, XK_p },
    KeyEntry { 36, Qt::Key_Return, false, XK_Return },
    KeyEntry { 37, Qt::Key_L, false, XK_l },
    KeyEntry { 38, Qt::Key_J, false, XK_j },
    KeyEntry { 39, Qt::Key_Apostrophe, false, XK_apostrophe },
    KeyEntry { 40, Qt::Key_K, false, XK_k },
    KeyEntry { 41, Qt::Key_Semicolon, false, XK_semicolon },
    KeyEntry { 42, Qt::Key_Backslash, false, XK_backslash },
    KeyEntry { 43, Qt::Key_Comma, false, XK_comma },
    KeyEntry { 44, Qt::Key_Slash, false, XK_slash },
    KeyEntry { 45, Qt::Key_N, false, XK_n },
    KeyEntry { 46, Qt::Key_M, false, XK_m },
    KeyEntry { 47, Qt::Key_Period, false, XK_period },
    KeyEntry { 48, Qt::Key_Tab, false, XK_Tab },
    KeyEntry { 49, Qt::Key_Space, false, XK_space },
    KeyEntry { 50, Qt::Key_QuoteLeft, false, XK_grave },
    KeyEntry { 51, Qt::Key_Backspace, false, XK_BackSpace },
    KeyEntry { 53, Qt::Key_Escape, false, XK_Escape },
    KeyEntry { 64, Qt::Key_F17, false, XK_F17 },
    KeyEntry { 65, Qt::Key_Period, true, XK_KP_Decimal },
    KeyEntry { 67, Qt::Key_Asterisk, true, XK_KP_Multiply },
    KeyEntry { 69, Qt::Key_Plus, true, XK_KP_Add },
    KeyEntry { 71, Qt::Key_Clear, true, XK_Clear },
    KeyEntry { 75, Qt::Key_Slash, true, XK_KP_Divide },
    KeyEntry { 76, Qt::Key_Enter, true, XK_KP_Enter },
    KeyEntry { 78, Qt::Key_Minus, true, XK_KP_Subtract },
    KeyEntry { 79, Qt::Key_F18, false, XK_F18 },
    KeyEntry { 80, Qt::Key_F19, false, XK_F19 },
    KeyEntry { 81, Qt::Key_Equal, true, XK_KP_Equal },
    KeyEntry { 82, Qt::Key_0, true, XK_KP_0 },
    KeyEntry { 83, Qt::Key_1, true, XK_KP_1 },
    KeyEntry { 84, Qt::Key_2, true, XK_KP_2 },
    KeyEntry { 85, Qt::Key_3, true, XK_KP_3 },
    KeyEntry { 86, Qt::Key_4, true, XK_KP_4 },
    KeyEntry { 87, Qt::Key_5, true, XK_KP_5 },
    KeyEntry { 88, Qt::Key_6, true, XK_KP_6 },
    KeyEntry { 89, Qt::Key_7, true, XK_KP_7 },
    KeyEntry { 90, Qt::Key_F20, false, XK_F20 },
    KeyEntry { 91, Qt::Key_8, true, XK_KP_8 },
    KeyEntry { 92, Qt::Key_9, true, XK_KP_9 },
    KeyEntry { 96, Qt::Key_F5, false, XK_F5 },
    KeyEntry { 97, Qt::Key_F6, false, XK_F6 },
    KeyEntry { 98, Qt::Key_F7, false, XK_F7 },
    KeyEntry { 99, Qt::Key_F3, false, XK_F3 },
    KeyEntry { 100, Qt::Key_F8, false, XK_F8 },
    KeyEntry { 101, Qt::Key_F9, false, XK_F9 },
    KeyEntry { 103, Qt::Key_F11, false, XK_F11 },
    KeyEntry { 105, Qt::Key_F13, false, XK_F13 },
    KeyEntry { 106, Qt::Key_F16, false, XK_F16 },
    KeyEntry { 107, Qt::Key_F14, false, XK_F14 },
    KeyEntry { 109, Qt::Key_F10, false, XK_F10 },
    KeyEntry { 111, Qt::Key_F12, false, XK_F12 },
    KeyEntry { 113, Qt::Key_F15, false, XK_F15 },
    // The Help key sits where PC keyboards have Insert.
    KeyEntry { 114, Qt::Key_Insert, false, XK_Insert },
    KeyEntry { 115, Qt::Key_Home, false, XK_Home },
    KeyEntry { 116, Qt::Key_PageUp, false, XK_Page_Up },
    KeyEntry { 117, Qt::Key_Delete, false, XK_Delete },
    KeyEntry { 118, Qt::Key_F4, false, XK_F4 },
    KeyEntry { 119, Qt::Key_End, false, XK_End },
    KeyEntry { 120, Qt::Key_F2, false, XK_F2 },
    KeyEntry { 121, Qt::Key_PageDown, false, XK_Page_Down },
    KeyEntry { 122, Qt::Key_F1, false, XK_F1 },
    KeyEntry { 123, Qt::Key_Left, false, XK_Left },
    KeyEntry { 124, Qt::Key_Right, false, XK_Right },
    KeyEntry { 125, Qt::Key_Down, false, XK_Down },
    KeyEntry { 126, Qt::Key_Up, false, XK_Up },
};

// What Shift turns Tab into, on each side; the recorder and the grab both see these.
constexpr qint64 tabKeyCode = 48;

const KeyEntry *entryForCode(qint64 code)
{
    for (const KeyEntry &entry : keyTable) {
        if (entry.code == code)
            return &entry;
    }
    return nullptr;
}

struct ModifierPair
{
    quint64 flag;
    Qt::KeyboardModifier qtModifier;
    quint16 x11Mask;
};

constexpr std::array modifierTable {
    ModifierPair { QWKeyCombo::ShiftKeyMask, Qt::ShiftModifier, ShiftMask },
    ModifierPair { QWKeyCombo::ControlKeyMask, Qt::ControlModifier, ControlMask },
    ModifierPair { QWKeyCombo::OptionKeyMask, Qt::AltModifier, Mod1Mask },
    ModifierPair { QWKeyCombo::CommandKeyMask, Qt::MetaModifier, Mod4Mask },
};

} // namespace

QList<qint64> QWKeyCodes::allKeyCodes()
{
    QList<qint64> codes;
    codes.reserve(qsizetype(keyTable.size()));
    for (const KeyEntry &entry : keyTable)
        codes.append(entry.code);
    return codes;
}

bool QWKeyCodes::isKnownKeyCode(qint64 code)
{
    return entryForCode(code) != nullptr;
}

Qt::Key QWKeyCodes::qtKeyForKeyCode(qint64 code)
{
    const KeyEntry *entry = entryForCode(code);
    return entry ? entry->qtKey : Qt::Key_unknown;
}

bool QWKeyCodes::isKeypadKeyCode(qint64 code)
{
    const KeyEntry *entry = entryForCode(code);
    return entry && entry->keypad;
}

qint64 QWKeyCodes::keyCodeForQtKey(int qtKey, bool keypad)
{
    if (qtKey == Qt::Key_Backtab)
        return tabKeyCode;
    qint64 otherBlock = -1;
    for (const KeyEntry &entry : keyTable) {
        if (entry.qtKey != qtKey)
            continue;
        if (entry.keypad == keypad)
            return entry.code;
        otherBlock = entry.code;
    }
    return otherBlock;
}

quint32 QWKeyCodes::keysymForKeyCode(qint64 code)
{
    const KeyEntry *entry = entryForCode(code);
    return entry ? entry->keysym : quint32(NoSymbol);
}

qint64 QWKeyCodes::keyCodeForKeysym(quint32 keysym)
{
    if (keysym >= XK_A && keysym <= XK_Z)
        keysym += XK_a - XK_A;
    else if (keysym == XK_ISO_Left_Tab)
        return tabKeyCode;
    for (const KeyEntry &entry : keyTable) {
        if (entry.keysym == keysym)
            return entry.code;
    }
    return -1;
}

Qt::KeyboardModifiers QWKeyCodes::qtModifiersForFlags(quint64 flags)
{
    Qt::KeyboardModifiers modifiers;
    for (const ModifierPair &pair : modifierTable) {
        if (flags & pair.flag)
            modifiers |= pair.qtModifier;
    }
    return modifiers;
}

quint64 QWKeyCodes::flagsForQtModifiers(Qt::KeyboardModifiers modifiers)
{
    quint64 flags = 0;
    for (const ModifierPair &pair : modifierTable) {
        if (modifiers & pair.qtModifier)
            flags |= pair.flag;
    }
    return flags;
}

quint16 QWKeyCodes::x11ModifiersForFlags(quint64 flags)
{
    quint16 mask = 0;
    for (const ModifierPair &pair : modifierTable) {
        if (flags & pair.flag)
            mask |= pair.x11Mask;
    }
    return mask;
}

quint64 QWKeyCodes::flagsForX11Modifiers(quint32 mask)
{
    quint64 flags = 0;
    for (const ModifierPair &pair : modifierTable) {
        if (mask & pair.x11Mask)
            flags |= pair.flag;
    }
    return flags;
}
