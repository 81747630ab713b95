#include "kit/QWKeyCodes.h"
#include "kit/QWKeyCombo.h"

#include <QSet>
#include <QTest>

#include <X11/X.h>
#include <X11/keysym.h>

using namespace Qt::Literals::StringLiterals;

class TestQWKeyCodes final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The table is one-to-one both ways, and the codes stored in settings name their keys.
    void everyCodeRoundTrips()
    {
        QSet<qint64> seenCodes;
        QSet<quint32> seenKeysyms;
        for (qint64 code : QWKeyCodes::allKeyCodes()) {
            const Qt::Key key = QWKeyCodes::qtKeyForKeyCode(code);
            const quint32 keysym = QWKeyCodes::keysymForKeyCode(code);
            QVERIFY2(key != Qt::Key_unknown && keysym != NoSymbol && !seenCodes.contains(code)
                    && !seenKeysyms.contains(keysym),
                qPrintable(QString::number(code)));
            seenCodes.insert(code);
            seenKeysyms.insert(keysym);
            QCOMPARE(QWKeyCodes::keyCodeForQtKey(key, QWKeyCodes::isKeypadKeyCode(code)), code);
            QCOMPARE(QWKeyCodes::keyCodeForKeysym(keysym), code);
            // Qt and X name the same key.
            if (key >= Qt::Key_A && key <= Qt::Key_Z)
                QCOMPARE(keysym, quint32(XK_a + (key - Qt::Key_A)));
            if (key >= Qt::Key_F1 && key <= Qt::Key_F20)
                QCOMPARE(keysym, quint32(XK_F1 + (key - Qt::Key_F1)));
        }
        for (int letter = 0; letter < 26; ++letter)
            QCOMPARE(QWKeyCodes::keyCodeForKeysym(XK_A + letter),
                QWKeyCodes::keyCodeForKeysym(XK_a + letter));
    }

    void unknownKeysAndAliases()
    {
        // Before, within and after the table.
        for (qint64 code : { -1, 52, 200 })
            QVERIFY(!QWKeyCodes::isKnownKeyCode(code));
        QVERIFY(QWKeyCodes::keyCodeForQtKey(Qt::Key_F35) == -1
            && QWKeyCodes::keyCodeForKeysym(0x1234567) == -1);
        // Shift+Tab arrives as Backtab (Qt) and ISO_Left_Tab (X).
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_Backtab), 48);
        QCOMPARE(QWKeyCodes::keyCodeForKeysym(XK_ISO_Left_Tab), 48);
        // Keys on both blocks follow the keypad flag; keys on one block are found either way.
        QVERIFY(QWKeyCodes::isKeypadKeyCode(QWKeyCodes::keyCodeForQtKey(Qt::Key_Minus, true)));
        QVERIFY(!QWKeyCodes::isKeypadKeyCode(QWKeyCodes::keyCodeForQtKey(Qt::Key_Minus, false)));
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_N, true), 45);
    }

    // Every combination of the four modifiers (which X modifier each is, real grabs show).
    void modifierMasks()
    {
        for (quint64 flags = 0; flags <= QWKeyCombo::ModifierKeysMask;
             flags += QWKeyCombo::ShiftKeyMask) {
            QCOMPARE(
                QWKeyCodes::flagsForQtModifiers(QWKeyCodes::qtModifiersForFlags(flags)), flags);
            // Caps Lock and Num Lock (Mod2) never change what combination was pressed.
            const quint32 locked = QWKeyCodes::x11ModifiersForFlags(flags) | LockMask | Mod2Mask;
            QCOMPARE(QWKeyCodes::flagsForX11Modifiers(locked), flags);
        }
        // Bits outside the four modifiers are dropped.
        QCOMPARE(
            QWKeyCodes::qtModifiersForFlags(0x10000 | QWKeyCombo::ShiftKeyMask), Qt::ShiftModifier);
        QCOMPARE(QWKeyCodes::flagsForQtModifiers(Qt::KeypadModifier | Qt::AltModifier),
            QWKeyCombo::OptionKeyMask);
    }

    // A cleared hot key is stored as no modifiers and code 0, and shows as nothing; a code from
    // the settings that no key has still shows. (The preferences' test records Ctrl+Alt+K.)
    void keyComboDescriptionsAndRecording()
    {
        QVERIFY((QWKeyCombo { 0, 0 }.isEmpty()) && (QWKeyCombo { 0, 0 }.description().isEmpty()));
        QVERIFY(!(QWKeyCombo { QWKeyCombo::ControlKeyMask, 0 }.isEmpty()));
        QCOMPARE((QWKeyCombo { QWKeyCombo::ControlKeyMask, 200 }.description()), u"Ctrl+Key 200"_s);
        QCOMPARE(QWKeyCombo::fromQtKey(Qt::Key_1, Qt::KeypadModifier), (QWKeyCombo { 0, 83 }));
        QVERIFY(QWKeyCombo::fromQtKey(Qt::Key_F35, Qt::ControlModifier).isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestQWKeyCodes)
#include "TestQWKeyCodes.moc"
