#include "SNAppTestSupport.h"
#include "kit/QWKeyCombo.h"
#include "support/QWProgramDriver.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

// KWin without a portal, as on desktops whose portal offers no global shortcuts: the hot keys
// stay X11 grabs, which see the keys typed into X11 windows.
class TestQWGlobalShortcutsPortalNoPortalWaylandIntegration final : public QObject
{
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "xcb"); }

private Q_SLOTS:
    void theKeysStayWithTheProgramsWindows()
    {
        PortalHotKeys keys;
        QWPortalHotKeyGrabber &grabber = keys.grabber();
        QSignalSpy reachChanges(&grabber, &QWHotKeyGrabber::reachDidChange);

        const qint64 tags = keys.helper.registerHotKey(
            { QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask, 45 }, u"toggle-tags"_s);
        QVERIFY(tags > 0);
        QTRY_COMPARE_WITH_TIMEOUT(
            grabber.portal().state(), QWGlobalShortcutsPortal::State::Missing, 20000);
        QCOMPARE(grabber.reach(), QWHotKeyGrabber::Reach::ProgramWindowsOnly);
        QVERIFY(!reachChanges.isEmpty());
        QVERIFY(grabber.desktopTrigger(u"toggle-tags"_s).isEmpty());

        QWProgramDriver::xdotool({ u"key"_s, u"ctrl+shift+n"_s });
        QTRY_COMPARE(keys.pressed, QList<qint64> { tags });
    }
};

QTEST_MAIN(TestQWGlobalShortcutsPortalNoPortalWaylandIntegration)
#include "TestQWGlobalShortcutsPortalNoPortalWaylandIntegration.moc"
