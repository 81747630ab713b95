#include "support/QWProgramDriver.h"
#include "support/QWProgramSession.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

// Two Vellumos of one user that cannot find each other on a session bus (two logins, a start
// without a bus) still never write one folder of notes at once.
class TestSNStoreLockIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStartOffTheBusKeepsOffTheNotesUntilTheFirstVellumoIsGone()
    {
        QWProgramSession session;
        QVERIFY(session.start());
        const QString lock = session.notesFolder() + u"/stickies.lock"_s;
        QTRY_VERIFY(QFile::exists(lock));
        QProcessEnvironment alone = session.environment();
        alone.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
        const auto listDeleted = [&alone](QString &errors) {
            QProcess second;
            second.setProcessEnvironment(alone);
            second.start(QWProgramDriver::programPath(), { u"--list-deleted"_s });
            second.waitForFinished(20000);
            errors = QString::fromUtf8(second.readAllStandardError());
            return second.exitStatus() == QProcess::NormalExit ? second.exitCode() : -1;
        };
        QString errors;
        QCOMPARE(listDeleted(errors), 1);
        QVERIFY2(errors.contains(u"process %1 "_s.arg(session.program().processId())),
            qPrintable(errors));

        // A Vellumo that died leaves its lock behind; it keeps no one out.
        session.program().kill();
        session.program().waitForFinished();
        QVERIFY(QFile::exists(lock));
        QCOMPARE(listDeleted(errors), 0);
    }
};

QTEST_MAIN(TestSNStoreLockIntegration)
#include "TestSNStoreLockIntegration.moc"
