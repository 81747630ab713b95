#include "kit/QWKeyCodes.h"
#include "kit/QWKeyCombo.h"

#include <QSet>
#include <QTest>

#include <X11/X.h>
#include <X11/keysym.h>

class TestQWKeyCodes final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The table is one-to-one both ways, and the codes stored in settings name their keys.
    void everyCodeRoundTrips()
    {
        const QList<qint64> codes = QWKeyCodes::allKeyCodes();
        QVERIFY(codes.size() >= 90);
        QSet<qint64> seenCodes;
        QSet<quint32> seenKeysyms;
        for (qint64 code : codes) {
            QVERIFY2(!seenCodes.contains(code), qPrintable(QString::number(code)));
            seenCodes.insert(code);
            const Qt::Key key = QWKeyCodes::qtKeyForKeyCode(code);
            QVERIFY(key != Qt::Key_unknown);
            QCOMPARE(QWKeyCodes::keyCodeForQtKey(key, QWKeyCodes::isKeypadKeyCode(code)), code);
            const quint32 keysym = QWKeyCodes::keysymForKeyCode(code);
            QVERIFY2(keysym != NoSymbol && !seenKeysyms.contains(keysym),
                qPrintable(QString::number(code)));
            seenKeysyms.insert(keysym);
            QCOMPARE(QWKeyCodes::keyCodeForKeysym(keysym), code);
            // Qt and X name the same key.
            if (key >= Qt::Key_A && key <= Qt::Key_Z)
                QCOMPARE(keysym, quint32(XK_a + (key - Qt::Key_A)));
            if (key >= Qt::Key_F1 && key <= Qt::Key_F20)
                QCOMPARE(keysym, quint32(XK_F1 + (key - Qt::Key_F1)));
        }
        QCOMPARE(QWKeyCodes::keysymForKeyCode(0), quint32(XK_a));
        QCOMPARE(QWKeyCodes::keysymForKeyCode(45), quint32(XK_n));
        QCOMPARE(QWKeyCodes::keysymForKeyCode(49), quint32(XK_space));
        QCOMPARE(QWKeyCodes::keysymForKeyCode(83), quint32(XK_KP_1));
        for (int letter = 0; letter < 26; ++letter)
            QCOMPARE(QWKeyCodes::keyCodeForKeysym(XK_A + letter),
                QWKeyCodes::keyCodeForKeysym(XK_a + letter));
    }

    void unknownKeysAndAliases()
    {
        for (qint64 code : { qint64(-1), qint64(52), qint64(200) }) {
            QVERIFY(!QWKeyCodes::isKnownKeyCode(code));
            QCOMPARE(QWKeyCodes::qtKeyForKeyCode(code), Qt::Key_unknown);
            QCOMPARE(QWKeyCodes::keysymForKeyCode(code), quint32(NoSymbol));
        }
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_F35), -1);
        QCOMPARE(QWKeyCodes::keyCodeForKeysym(0x1234567), -1);
        // Shift+Tab arrives as Backtab (Qt) and ISO_Left_Tab (X).
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_Backtab), 48);
        QCOMPARE(QWKeyCodes::keyCodeForKeysym(XK_ISO_Left_Tab), 48);
        // Keys on both blocks follow the keypad flag; keys on one block are found either way.
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_Minus, false), 27);
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_Minus, true), 78);
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_Plus, false), 69);
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(Qt::Key_N, true), 45);
    }

    void modifierMasks()
    {
        QCOMPARE(QWKeyCodes::qtModifiersForFlags(QWKeyCombo::ModifierKeysMask),
            Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
        QCOMPARE(QWKeyCodes::x11ModifiersForFlags(QWKeyCombo::ModifierKeysMask),
            quint16(ShiftMask | ControlMask | Mod1Mask | Mod4Mask));
        const quint64 masks[] = { QWKeyCombo::ShiftKeyMask, QWKeyCombo::ControlKeyMask,
            QWKeyCombo::OptionKeyMask, QWKeyCombo::CommandKeyMask };
        for (int subset = 0; subset < 16; ++subset) {
            quint64 flags = 0;
            for (int bit = 0; bit < 4; ++bit)
                flags |= (subset & (1 << bit)) ? masks[bit] : 0;
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

    void keyComboDescriptionsAndRecording()
    {
        // No modifiers and code 0 is what a cleared hot key is stored as; Ctrl+A is a combination.
        QVERIFY(QWKeyCombo().isEmpty());
        QVERIFY((QWKeyCombo { 0, 0 }.isEmpty()));
        QCOMPARE((QWKeyCombo { 0, 0 }.description()), QString());
        QVERIFY(!(QWKeyCombo { QWKeyCombo::ControlKeyMask, 0 }.isEmpty()));

        QCOMPARE((QWKeyCombo { 0x60000, 45 }.description()), QStringLiteral("Ctrl+Shift+N"));
        QCOMPARE((QWKeyCombo { 0x1C0000, 45 }.description()), QStringLiteral("Ctrl+Alt+Super+N"));
        QCOMPARE((QWKeyCombo { 0, 83 }.description()), QStringLiteral("Num+1"));
        QCOMPARE((QWKeyCombo { QWKeyCombo::ControlKeyMask, 200 }.description()),
            QStringLiteral("Ctrl+Key 200"));

        QCOMPARE(QWKeyCombo::fromQtKey(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier),
            (QWKeyCombo { 0x60000, 45 }));
        QCOMPARE(QWKeyCombo::fromQtKey(Qt::Key_1, Qt::KeypadModifier), (QWKeyCombo { 0, 83 }));
        QVERIFY(QWKeyCombo::fromQtKey(Qt::Key_F35, Qt::ControlModifier).isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestQWKeyCodes)
#include "TestQWKeyCodes.moc"
