#include "support/QWDesktopShortcuts.h"
#include "support/QWProgramDriver.h"
#include "support/QWProgramSession.h"

#include <QDBusError>
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
        QString error;
        QCOMPARE(QWDesktopShortcuts::portalVersion(&error), 0u);
        QCOMPARE(error, QDBusError::errorString(QDBusError::ServiceUnknown));
        // The desktop's own shortcuts are there: an empty answer below means something.
        QVERIFY(!QWDesktopShortcuts::components().isEmpty());
    }

    void notesComeFromTheCommandLineAndNothingIsBoundOnTheDesktop()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        QVERIFY(session.start());
        const qint64 pid = session.program().processId();
        // Drawn through XWayland, which it chose itself.
        QTRY_VERIFY_WITH_TIMEOUT(visibleWindows(pid).size() > 1, 20000);

        const qsizetype before = visibleWindows(pid).size();
        QCOMPARE(session.runSecond({ u"--new-note"_s }), 0);
        QTRY_COMPARE(visibleWindows(pid).size(), before + 1);

        // By now the program has long had its answer that there is no portal.
        for (const QString &shortcut : { u"new-note"_s, u"toggle-tags"_s }) {
            const QString component = QWDesktopShortcuts::componentHolding({ shortcut });
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
