#include "app/QWPortalHotKeyGrabber.h"
#include "kit/QWKeyCombo.h"

#include <QTest>

using namespace Qt::StringLiterals;

// What the desktop is asked for: its portal reads the freedesktop shortcuts format, whose key
// names are X keysym names. The keys the desktop really makes of them are checked on KWin.
class TestQWPortalHotKeyGrabber final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void preferredTriggersAreWrittenInTheShortcutsFormat_data()
    {
        QTest::addColumn<quint64>("flags");
        QTest::addColumn<qint64>("code");
        QTest::addColumn<QString>("trigger");
        constexpr quint64 control = QWKeyCombo::ControlKeyMask;
        constexpr quint64 all = control | QWKeyCombo::OptionKeyMask | QWKeyCombo::ShiftKeyMask
            | QWKeyCombo::CommandKeyMask;
        QTest::newRow("letter") << (control | QWKeyCombo::ShiftKeyMask) << qint64(45)
                                << u"CTRL+SHIFT+n"_s;
        QTest::newRow("every modifier, in the format's order")
            << all << qint64(33) << u"CTRL+ALT+SHIFT+LOGO+bracketleft"_s;
        QTest::newRow("function key alone") << quint64(0) << qint64(96) << u"F5"_s;
        QTest::newRow("keypad") << control << qint64(69) << u"CTRL+KP_Add"_s;
        QTest::newRow("empty") << quint64(0) << qint64(0) << QString();
        QTest::newRow("no such key") << control << qint64(200) << QString();
    }
    void preferredTriggersAreWrittenInTheShortcutsFormat()
    {
        QFETCH(quint64, flags);
        QFETCH(qint64, code);
        QFETCH(QString, trigger);
        QCOMPARE(QWPortalHotKeyGrabber::preferredTrigger(QWKeyCombo { flags, code }), trigger);
    }
};

QTEST_APPLESS_MAIN(TestQWPortalHotKeyGrabber)
#include "TestQWPortalHotKeyGrabber.moc"
