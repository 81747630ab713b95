#include "SNAppTestSupport.h"
#include "SNProgramTestSupport.h"
#include "kit/QWKeyCombo.h"
#include "support/QWKGlobalAccel.h"

#include <QSignalSpy>
#include <QTest>

using namespace QWProgramDriver;
using namespace Qt::StringLiterals;

// KWin without a portal, as on desktops whose portal offers no global shortcuts: the hot keys
// stay X11 grabs, which see the keys typed into X11 windows, nothing is bound on the desktop,
// and the program still serves everything else.
class TestQWGlobalShortcutsPortalNoPortalWaylandIntegration final : public QObject
{
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "xcb"); }

private Q_SLOTS:
    void initTestCase()
    {
        // The desktop's own shortcuts are there: an empty answer below means something.
        QVERIFY(!QWKGlobalAccel::components().isEmpty());
    }

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

        xdotool({ u"key"_s, u"ctrl+shift+n"_s });
        QTRY_COMPARE(keys.pressed, QList<qint64> { tags });
    }

    void notesComeFromTheCommandLineAndNothingIsBoundOnTheDesktop()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        // The welcome notes, drawn through XWayland, which the program chose itself.
        const qint64 pid = startShowingNotes(session);
        QVERIFY(pid);
        const QTemporaryDir empty;
        const qsizetype welcomeNotes = SNStickyNoteManager(empty.path()).notesArray().size();
        QCOMPARE(visibleWindows(pid).size(), welcomeNotes);

        QCOMPARE(session.runSecond({ u"--new-note"_s }), 0);
        QTRY_COMPARE(visibleWindows(pid).size(), welcomeNotes + 1);

        // By now the program has long had its answer that there is no portal.
        for (const QString &shortcut : { u"new-note"_s, u"toggle-tags"_s }) {
            const QString component = QWKGlobalAccel::componentWith({ shortcut });
            QVERIFY2(component.isEmpty(), qPrintable(component));
        }

        QCOMPARE(session.runSecond({ u"--quit"_s }), 0);
        QVERIFY(session.program().waitForFinished());
        QCOMPARE(session.program().exitStatus(), QProcess::NormalExit);
        QCOMPARE(session.program().exitCode(), 0);
    }
};

QTEST_MAIN(TestQWGlobalShortcutsPortalNoPortalWaylandIntegration)
#include "TestQWGlobalShortcutsPortalNoPortalWaylandIntegration.moc"
