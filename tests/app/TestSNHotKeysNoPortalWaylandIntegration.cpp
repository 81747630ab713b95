#include "SNProgramTestSupport.h"
#include "support/QWKGlobalAccel.h"

#include <QTest>

using namespace QWProgramDriver;
using namespace Qt::StringLiterals;

// A Wayland desktop without the desktop portal: its global shortcuts cannot be reached, and
// the program still serves everything else.
class TestSNHotKeysNoPortalWaylandIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The desktop's own shortcuts are there: an empty answer below means something.
        QVERIFY(!QWKGlobalAccel::components().isEmpty());
    }

    void notesComeFromTheCommandLineAndNothingIsBoundOnTheDesktop()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        // The welcome notes, drawn through XWayland, which the program chose itself.
        const qint64 pid = startShowingNotes(session);
        QVERIFY(pid);
        const qsizetype welcomeNotes = visibleWindows(pid).size();

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

QTEST_GUILESS_MAIN(TestSNHotKeysNoPortalWaylandIntegration)
#include "TestSNHotKeysNoPortalWaylandIntegration.moc"
