#include "SNAppTestSupport.h"
#include "support/QWProgramSession.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

bool hasLine(const QString &text, const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::MultilineOption).match(text).hasMatch();
}

} // namespace

// The sync commands of the command line, carried out by the running program over the session
// bus, and by the start that asks when none runs.
class TestSNSyncCommandIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFolderIsSetAndShownThroughTheRunningProgram()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        QTemporaryDir sync;
        writeLaptop(sync.path(), u"Written on the laptop"_s);
        QVERIFY(session.start());

        QString output;
        QCOMPARE(session.runSecond({ u"--sync-folder"_s, sync.filePath(u"missing"_s) }), 1);
        QCOMPARE(session.runSecond({ u"--sync-folder"_s, sync.path() }, {}, &output), 0);
        QCOMPARE(output, u"The notes are shared through %1.\n"_s.arg(sync.path()));
        // Sharing began at once: this computer's notes are in the folder.
        const QStringList computers = QDir(sync.filePath(u"Vellumo/devices"_s))
                                          .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        QCOMPARE(computers.size(), 2);

        QCOMPARE(session.runSecond({ u"--sync-status"_s }, {}, &output), 0);
        QVERIFY2(
            hasLine(output, u"^Sync folder: %1$"_s.arg(QRegularExpression::escape(sync.path())))
                && hasLine(output, u"^Sharing: yes$"_s)
                && hasLine(output, u"^  Laptop\\tlaptop-id\\t\\d{4}-\\S+$"_s)
                && hasLine(output, u"^  .+\\t[0-9a-f-]{36}\\t\\d{4}-\\S+\\t\\(this computer\\)$"_s)
                && hasLine(output, u"^Last merge: \\d{4}-\\S+: 1 note added"_s),
            qPrintable(output));

        QCOMPARE(session.runSecond({ u"--sync-folder"_s, QString() }, {}, &output), 0);
        QCOMPARE(session.runSecond({ u"--sync-status"_s }, {}, &output), 0);
        QVERIFY2(hasLine(output, u"^Sync folder: none"_s), qPrintable(output));
        QCOMPARE(session.runSecond({ u"--quit"_s }), 0);
        QVERIFY(session.program().waitForFinished());

        // Without a running program the setting waits for its next start, and the status comes
        // from the folder and from what the program merged last.
        QCOMPARE(session.runSecond({ u"--sync-folder"_s, sync.path() }, {}, &output), 0);
        QVERIFY2(output.contains(u"next start"_s), qPrintable(output));
        QCOMPARE(session.runSecond({ u"--sync-status"_s }, {}, &output), 0);
        QVERIFY2(hasLine(output, u"^Sharing: while Vellumo runs"_s)
                && hasLine(output, u"^  Laptop\\tlaptop-id\\t"_s)
                && hasLine(output, u"^Last merge: \\d{4}-\\S+: 1 note added"_s),
            qPrintable(output));
    }
};

QTEST_MAIN(TestSNSyncCommandIntegration)
#include "TestSNSyncCommandIntegration.moc"
