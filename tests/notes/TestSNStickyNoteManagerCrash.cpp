// Kills a process in the middle of its saves, again and again: the archive left behind must
// always be one complete version of the notes, old or new, never a mix or a torn file.
#include "kit/QWKeyedUnarchiver.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class TestSNStickyNoteManagerCrash final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedMidSaveLeavesAWholeArchive();
};

void TestSNStickyNoteManagerCrash::killedMidSaveLeavesAWholeArchive()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("stickies.db"));
    constexpr int noteCount = 8;
    const QRegularExpression versionPattern(QStringLiteral("^version (\\d+) note (\\d+) "));
    QRandomGenerator random(11);
    qint64 lastVersion = 0;
    int killsAfterAVersion = 0;

    for (int round = 0; round < 12; ++round) {
        QProcess saver;
        saver.start(
            QStringLiteral(VELLUMO_SAVE_LOOP), { folder.path(), QString::number(noteCount) });
        QVERIFY(saver.waitForStarted());
        QVERIFY(saver.waitForReadyRead(30000));
        QTest::qWait(20 + int(random.bounded(200)));
        saver.kill(); // SIGKILL: no chance to finish anything
        QVERIFY(saver.waitForFinished(30000));

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(file.readAll());
        QVERIFY2(result.isComplete(), qPrintable(result.error));
        const auto &notes = result.root.toArray();
        QVERIFY(notes.size() <= size_t(noteCount));
        qint64 version = -1;
        for (const QWArchiveValue &note : notes) {
            const QWKeyedUnarchiver::ParseResult text
                = QWKeyedUnarchiver::parse(note.valueForKey(u"data")->toData());
            QVERIFY(text.isComplete());
            const QRegularExpressionMatch match
                = versionPattern.match(text.root.valueForKey(u"string")->toString());
            QVERIFY(match.hasMatch());
            // Every note of one file comes from the same version.
            if (version < 0)
                version = match.captured(1).toLongLong();
            QCOMPARE(match.captured(1).toLongLong(), version);
        }
        if (!notes.empty()) {
            QCOMPARE(notes.size(), size_t(noteCount));
            ++killsAfterAVersion;
            lastVersion = version;
        }
        // No temporary files pile up beside the archive.
        QVERIFY(QDir(folder.path()).entryList(QDir::Files).size() <= 2);
    }
    QVERIFY2(killsAfterAVersion > 0, "the saver never got to write a version");
    QVERIFY(lastVersion > 0);
}

QTEST_GUILESS_MAIN(TestSNStickyNoteManagerCrash)
#include "TestSNStickyNoteManagerCrash.moc"
