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
    void knownKeys_data();
    void knownKeys();
    void everyCodeRoundTrips();
    void lettersMapFromBothCases();
    void unknownKeysAndAliases();
    void modifierMasks();
    void keyComboDescriptionsAndRecording();
};

void TestQWKeyCodes::knownKeys_data()
{
    QTest::addColumn<qint64>("code");
    QTest::addColumn<int>("qtKey");
    QTest::addColumn<bool>("keypad");
    QTest::addColumn<quint32>("keysym");

    auto row = [](const char *name, qint64 code, int qtKey, bool keypad, quint32 keysym) {
        QTest::newRow(name) << code << qtKey << keypad << keysym;
    };
    row("A", 0, Qt::Key_A, false, XK_a);
    row("S", 1, Qt::Key_S, false, XK_s);
    row("D", 2, Qt::Key_D, false, XK_d);
    row("N", 45, Qt::Key_N, false, XK_n);
    row("M", 46, Qt::Key_M, false, XK_m);
    row("1", 18, Qt::Key_1, false, XK_1);
    row("Return", 36, Qt::Key_Return, false, XK_Return);
    row("Tab", 48, Qt::Key_Tab, false, XK_Tab);
    row("Space", 49, Qt::Key_Space, false, XK_space);
    row("Backspace", 51, Qt::Key_Backspace, false, XK_BackSpace);
    row("Escape", 53, Qt::Key_Escape, false, XK_Escape);
    row("Home", 115, Qt::Key_Home, false, XK_Home);
    row("PageUp", 116, Qt::Key_PageUp, false, XK_Page_Up);
    row("Delete", 117, Qt::Key_Delete, false, XK_Delete);
    row("End", 119, Qt::Key_End, false, XK_End);
    row("PageDown", 121, Qt::Key_PageDown, false, XK_Page_Down);
    row("F1", 122, Qt::Key_F1, false, XK_F1);
    row("F20", 90, Qt::Key_F20, false, XK_F20);
    row("Left", 123, Qt::Key_Left, false, XK_Left);
    row("Right", 124, Qt::Key_Right, false, XK_Right);
    row("Down", 125, Qt::Key_Down, false, XK_Down);
    row("Up", 126, Qt::Key_Up, false, XK_Up);
    row("keypad 1", 83, Qt::Key_1, true, XK_KP_1);
    row("keypad Enter", 76, Qt::Key_Enter, true, XK_KP_Enter);
}

void TestQWKeyCodes::knownKeys()
{
    QFETCH(qint64, code);
    QFETCH(int, qtKey);
    QFETCH(bool, keypad);
    QFETCH(quint32, keysym);

    QCOMPARE(int(QWKeyCodes::qtKeyForKeyCode(code)), qtKey);
    QCOMPARE(QWKeyCodes::isKeypadKeyCode(code), keypad);
    QCOMPARE(QWKeyCodes::keysymForKeyCode(code), keysym);
    QCOMPARE(QWKeyCodes::keyCodeForQtKey(qtKey, keypad), code);
    QCOMPARE(QWKeyCodes::keyCodeForKeysym(keysym), code);
}

void TestQWKeyCodes::everyCodeRoundTrips()
{
    const QList<qint64> codes = QWKeyCodes::allKeyCodes();
    QVERIFY(codes.size() >= 90);
    QSet<qint64> seenCodes;
    QSet<quint32> seenKeysyms;
    for (qint64 code : codes) {
        QVERIFY2(!seenCodes.contains(code), qPrintable(QString::number(code)));
        seenCodes.insert(code);
        QVERIFY(QWKeyCodes::isKnownKeyCode(code));

        const Qt::Key key = QWKeyCodes::qtKeyForKeyCode(code);
        QVERIFY(key != Qt::Key_unknown);
        QCOMPARE(QWKeyCodes::keyCodeForQtKey(key, QWKeyCodes::isKeypadKeyCode(code)), code);

        const quint32 keysym = QWKeyCodes::keysymForKeyCode(code);
        QVERIFY(keysym != NoSymbol);
        QVERIFY2(!seenKeysyms.contains(keysym), qPrintable(QString::number(code)));
        seenKeysyms.insert(keysym);
        QCOMPARE(QWKeyCodes::keyCodeForKeysym(keysym), code);
    }
}

void TestQWKeyCodes::lettersMapFromBothCases()
{
    for (int letter = 0; letter < 26; ++letter) {
        const qint64 code = QWKeyCodes::keyCodeForQtKey(Qt::Key_A + letter);
        QVERIFY(code >= 0);
        QCOMPARE(QWKeyCodes::keyCodeForKeysym(XK_A + letter), code);
        QCOMPARE(QWKeyCodes::keyCodeForKeysym(XK_a + letter), code);
        QCOMPARE(QWKeyCodes::keysymForKeyCode(code), quint32(XK_a + letter));
    }
}

void TestQWKeyCodes::unknownKeysAndAliases()
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

void TestQWKeyCodes::modifierMasks()
{
    QCOMPARE(QWKeyCodes::qtModifiersForFlags(QWKeyCombo::ShiftKeyMask), Qt::ShiftModifier);
    QCOMPARE(QWKeyCodes::qtModifiersForFlags(QWKeyCombo::ControlKeyMask), Qt::ControlModifier);
    QCOMPARE(QWKeyCodes::qtModifiersForFlags(QWKeyCombo::OptionKeyMask), Qt::AltModifier);
    QCOMPARE(QWKeyCodes::qtModifiersForFlags(QWKeyCombo::CommandKeyMask), Qt::MetaModifier);
    QCOMPARE(QWKeyCodes::x11ModifiersForFlags(QWKeyCombo::ShiftKeyMask), quint16(ShiftMask));
    QCOMPARE(QWKeyCodes::x11ModifiersForFlags(QWKeyCombo::ControlKeyMask), quint16(ControlMask));
    QCOMPARE(QWKeyCodes::x11ModifiersForFlags(QWKeyCombo::OptionKeyMask), quint16(Mod1Mask));
    QCOMPARE(QWKeyCodes::x11ModifiersForFlags(QWKeyCombo::CommandKeyMask), quint16(Mod4Mask));

    const quint64 masks[] = { QWKeyCombo::ShiftKeyMask, QWKeyCombo::ControlKeyMask,
        QWKeyCombo::OptionKeyMask, QWKeyCombo::CommandKeyMask };
    for (int subset = 0; subset < 16; ++subset) {
        quint64 flags = 0;
        for (int bit = 0; bit < 4; ++bit) {
            if (subset & (1 << bit))
                flags |= masks[bit];
        }
        QCOMPARE(QWKeyCodes::flagsForQtModifiers(QWKeyCodes::qtModifiersForFlags(flags)), flags);
        QCOMPARE(QWKeyCodes::flagsForX11Modifiers(QWKeyCodes::x11ModifiersForFlags(flags)), flags);
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

void TestQWKeyCodes::keyComboDescriptionsAndRecording()
{
    QVERIFY(QWKeyCombo().isEmpty());
    QCOMPARE(QWKeyCombo().description(), QString());
    // No modifiers and code 0 is what a cleared hot key is stored as; Ctrl+A is a combination.
    QVERIFY((QWKeyCombo { 0, 0 }.isEmpty()));
    QCOMPARE((QWKeyCombo { 0, 0 }.description()), QString());
    QVERIFY(!(QWKeyCombo { QWKeyCombo::ControlKeyMask, 0 }.isEmpty()));

    QCOMPARE((QWKeyCombo { 0x60000, 45 }.description()), QStringLiteral("Ctrl+Shift+N"));
    QCOMPARE((QWKeyCombo { 0x1C0000, 45 }.description()), QStringLiteral("Ctrl+Alt+Super+N"));
    QCOMPARE(
        (QWKeyCombo { QWKeyCombo::ShiftKeyMask, 49 }.description()), QStringLiteral("Shift+Space"));
    QCOMPARE((QWKeyCombo { 0, 83 }.description()), QStringLiteral("Num+1"));
    QCOMPARE((QWKeyCombo { QWKeyCombo::ControlKeyMask, 200 }.description()),
        QStringLiteral("Ctrl+Key 200"));

    QCOMPARE(QWKeyCombo::fromQtKey(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier),
        (QWKeyCombo { 0x60000, 45 }));
    QCOMPARE(QWKeyCombo::fromQtKey(Qt::Key_1, Qt::KeypadModifier), (QWKeyCombo { 0, 83 }));
    QVERIFY(QWKeyCombo::fromQtKey(Qt::Key_F35, Qt::ControlModifier).isEmpty());
    QVERIFY(!(QWKeyCombo { 0x60000, 45 } == QWKeyCombo { 0x60000, 46 }));
    QVERIFY(!(QWKeyCombo { 0x60000, 45 } == QWKeyCombo { 0x20000, 45 }));
}

QTEST_GUILESS_MAIN(TestQWKeyCodes)
#include "TestQWKeyCodes.moc"
