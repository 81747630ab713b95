// Kills a process that edits, adds, deletes and restores notes at random moments of its saves
// and compactions, hundreds of times, and checks after each kill that a fresh store loads every
// note it had reported saved, at the edit it reported or the one it was saving, and nothing twice.
// In half of the rounds the append under way is also cut short, as a power cut would leave it.
//
// The kill times and the writer's choices come from one seed, printed at the start; set
// VELLUMO_CRASH_SEED to run the same rounds again.
#include "kit/QWKeyedArchiver.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWTestEnvironment.h"

#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>

#include <optional>

namespace {

// A note as the writer's first line names it: "NAME EDIT".
struct NoteHead
{
    QString name;
    qint64 edit = 0;

    static NoteHead parse(const QString &line)
    {
        return { line.section(QLatin1Char(' '), 0, 0),
            line.section(QLatin1Char(' '), 1, 1).toLongLong() };
    }
    QString toString() const { return QStringLiteral("%1 %2").arg(name).arg(edit); }
    friend bool operator==(const NoteHead &, const NoteHead &) = default;
};

// What the test knows of one folder: the notes saved for sure, and the deleted ones.
struct Folder
{
    QString path;
    int notes = 0; // how many the writer keeps, about
    int noteBytes = 0;
    int compactEvery = 0;
    int longestKillMs = 0;
    QHash<QUuid, NoteHead> saved;
    QHash<QUuid, NoteHead> deleted;
};

// What one writer said before it was killed.
struct Report
{
    QHash<QUuid, std::optional<NoteHead>> announced; // since the last "saved": null when deleted
    int saves = 0;
    bool killedInCompaction = false;
    qint64 journalBytes = 0; // after the last save or compaction: its records are whole
    QString failure;
};

} // namespace

class TestSNStickyNoteManagerCrash final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void killedWriterLosesNothingSaved();

private:
    void seed(Folder &folder, int count) const;
    Report runWriter(Folder &folder, int round);
    bool tearJournal(const Folder &folder, const Report &report);
    void checkLoad(Folder &folder, const Report &report, int round);

    QWTestEnvironment m_environment;
    quint32 m_seed = 0;
    std::optional<QRandomGenerator> m_random;
};

void TestSNStickyNoteManagerCrash::initTestCase()
{
    bool given = false;
    m_seed = qEnvironmentVariable("VELLUMO_CRASH_SEED").toUInt(&given);
    if (!given)
        m_seed = QRandomGenerator::global()->generate();
    m_random.emplace(m_seed);
    qInfo("VELLUMO_CRASH_SEED=%u", m_seed);
}

// Fills the folder with notes saved for sure, so that the writer starts from a whole archive.
void TestSNStickyNoteManagerCrash::seed(Folder &folder, int count) const
{
    // An empty archive, so that the welcome notes are not copied in: they are not the writer's.
    QDir().mkpath(folder.path);
    QFile archive(QDir(folder.path).filePath(SNStickyNoteManager::databaseFileName));
    QVERIFY(archive.open(QIODevice::WriteOnly));
    archive.write(
        QWKeyedArchiver::archivedDataWithRootObject(QList<std::shared_ptr<SNStickyNote>>()));
    archive.close();
    SNStickyNoteManager store(folder.path, QStringLiteral("crash-test"));
    QVERIFY(store.notesArray().isEmpty());
    const QString padding(folder.noteBytes, QLatin1Char('.'));
    for (int i = 0; i < count; ++i) {
        auto note = SNStickyNote::note();
        const NoteHead head { QStringLiteral("seed-%1").arg(i), 1 };
        note->setAttributedString(
            QWAttributedString(head.toString() + QLatin1Char('\n') + padding));
        store.addNote(note);
        folder.saved.insert(note->uuid(), head);
    }
    QVERIFY(store.save());
    QVERIFY(store.compact());
}

Report TestSNStickyNoteManagerCrash::runWriter(Folder &folder, int round)
{
    Report report;
    QProcess writer;
    writer.start(QStringLiteral(VELLUMO_SAVE_LOOP),
        { folder.path, QString::number(m_random->generate()), QStringLiteral("r%1").arg(round),
            QString::number(folder.notes), QString::number(folder.noteBytes),
            QString::number(folder.compactEvery) });
    if (!writer.waitForStarted()) {
        report.failure = QStringLiteral("the writer did not start");
        return report;
    }
    QByteArray output;
    while (!output.contains('\n') && writer.waitForReadyRead(30000))
        output += writer.readAllStandardOutput();
    QTest::qWait(int(m_random->bounded(folder.longestKillMs + 1)));
    writer.kill(); // SIGKILL: nothing is finished, flushed or closed
    writer.waitForFinished(30000);
    output += writer.readAllStandardOutput();
    if (writer.exitStatus() != QProcess::CrashExit) {
        report.failure
            = QStringLiteral("the writer stopped by itself: %1")
                  .arg(QString::fromUtf8(output.split('\n').value(output.count('\n') - 1))
                      + QString::fromUtf8(writer.readAllStandardError()));
        return report;
    }

    // A line cut by the kill was never finished, so it counts for nothing.
    for (const QByteArray &bytes : output.left(output.lastIndexOf('\n') + 1).split('\n')) {
        const QString line = QString::fromUtf8(bytes);
        const QString word = line.section(QLatin1Char(' '), 0, 0);
        const QUuid uuid = QUuid::fromString(line.section(QLatin1Char(' '), 1, 1));
        if (word == QLatin1String("note")) {
            report.announced.insert(uuid, NoteHead::parse(line.section(QLatin1Char(' '), 2)));
        } else if (word == QLatin1String("gone")) {
            report.announced.insert(uuid, std::nullopt);
        } else if (word == QLatin1String("saved")) {
            report.journalBytes = line.section(QLatin1Char(' '), 1, 1).toLongLong();
            for (auto change = report.announced.cbegin(); change != report.announced.cend();
                 ++change) {
                if (change.value()) {
                    folder.saved.insert(change.key(), *change.value());
                    folder.deleted.remove(change.key());
                } else {
                    folder.deleted.insert(change.key(), folder.saved.take(change.key()));
                }
            }
            report.announced.clear();
            ++report.saves;
        } else if (word == QLatin1String("compacting")) {
            report.killedInCompaction = true;
        } else if (word == QLatin1String("compacted") || word == QLatin1String("ready")) {
            report.killedInCompaction = false;
            report.journalBytes = line.section(QLatin1Char(' '), 1, 1).toLongLong();
        }
    }
    return report;
}

// A kill never cuts a write short, but a power cut can: the append under way reaches the disk
// only up to a random byte. What the writer reported saved lies before it.
bool TestSNStickyNoteManagerCrash::tearJournal(const Folder &folder, const Report &report)
{
    QFile journal(QDir(folder.path).filePath(SNStickyNoteManager::journalFileName));
    const qint64 unreported = journal.size() - report.journalBytes;
    if (unreported <= 0)
        return false;
    return journal.resize(report.journalBytes + m_random->bounded(unreported));
}

void TestSNStickyNoteManagerCrash::checkLoad(Folder &folder, const Report &report, int round)
{
    const QString where = QStringLiteral("seed %1, round %2: ").arg(m_seed).arg(round);
    const auto fail = [&where](const QString &what) { QFAIL(qPrintable(where + what)); };

    const SNStickyNoteManager store(folder.path, QStringLiteral("crash-test"));
    QHash<QUuid, NoteHead> loaded;
    QSet<QString> names;
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray()) {
        const NoteHead head = NoteHead::parse(note->attributedString()
                                                  .value_or(QWAttributedString())
                                                  .string()
                                                  .section(QLatin1Char('\n'), 0, 0));
        if (loaded.contains(note->uuid()) || names.contains(head.name))
            return fail(QStringLiteral("%1 is there twice").arg(head.toString()));
        loaded.insert(note->uuid(), head);
        names.insert(head.name);
    }

    for (auto note = loaded.cbegin(); note != loaded.cend(); ++note) {
        const std::optional<NoteHead> saved = folder.saved.contains(note.key())
            ? std::optional(folder.saved.value(note.key()))
            : std::nullopt;
        const std::optional<NoteHead> saving = report.announced.value(note.key());
        // Each note is as last saved, or as the save under way left it.
        if (note.value() != saved && note.value() != saving)
            return fail(QStringLiteral("loaded %1, but it was saved as %2")
                            .arg(note.value().toString(),
                                saved ? saved->toString() : QStringLiteral("nothing")));
    }
    for (auto note = folder.saved.cbegin(); note != folder.saved.cend(); ++note) {
        const bool beingDeleted = report.announced.contains(note.key())
            && !report.announced.value(note.key()).has_value();
        if (!loaded.contains(note.key()) && !beingDeleted)
            return fail(QStringLiteral("%1 was saved but did not load").arg(note->toString()));
    }

    // What the kill left is what the next writer starts from.
    for (auto note = folder.saved.cbegin(); note != folder.saved.cend(); ++note) {
        if (!loaded.contains(note.key()))
            folder.deleted.insert(note.key(), note.value());
    }
    folder.saved = loaded;
    for (auto note = loaded.cbegin(); note != loaded.cend(); ++note)
        folder.deleted.remove(note.key());

    // Every deleted note can still be brought back, as it was when it went.
    QHash<QUuid, QString> deletedTitles;
    for (const SNDeletedNote &note : store.recentlyDeletedNotes()) {
        if (loaded.contains(note.uuid))
            return fail(QStringLiteral("%1 is both in the list and deleted").arg(note.title));
        deletedTitles.insert(note.uuid, note.title);
    }
    for (auto note = folder.deleted.cbegin(); note != folder.deleted.cend(); ++note) {
        if (deletedTitles.value(note.key()) != note->toString())
            return fail(QStringLiteral("%1 was deleted but Recently Deleted holds \"%2\"")
                            .arg(note->toString(), deletedTitles.value(note.key())));
    }
}

void TestSNStickyNoteManagerCrash::killedWriterLosesNothingSaved()
{
    constexpr int maximumRounds = 400;
    constexpr qint64 timeLimitMs = 60 * 1000;
    // Small notes in a small archive, so that rounds are quick and most kills land in appends;
    // every eighth round works on a larger archive, whose compactions take long enough to be
    // hit too.
    Folder small { m_environment.dataHome() + QStringLiteral("/small"), 6, 64, 6, 40, {}, {} };
    Folder large { m_environment.dataHome() + QStringLiteral("/large"), 300, 2000, 3, 250, {}, {} };
    seed(small, 4);
    seed(large, 300);
    if (QTest::currentTestFailed())
        return;

    QElapsedTimer clock;
    clock.start();
    int rounds = 0, saves = 0, roundsWithASave = 0, killsInCompaction = 0, tears = 0;
    for (; rounds < maximumRounds && clock.elapsed() < timeLimitMs; ++rounds) {
        Folder &folder = rounds % 8 == 7 ? large : small;
        const Report report = runWriter(folder, rounds);
        QVERIFY2(report.failure.isEmpty(),
            qPrintable(QStringLiteral("seed %1, round %2: %3")
                           .arg(m_seed)
                           .arg(rounds)
                           .arg(report.failure)));
        if (m_random->bounded(2) == 0 && tearJournal(folder, report))
            ++tears;
        checkLoad(folder, report, rounds);
        if (QTest::currentTestFailed())
            return;
        saves += report.saves;
        roundsWithASave += report.saves > 0 ? 1 : 0;
        killsInCompaction += report.killedInCompaction ? 1 : 0;
    }
    qInfo("%d rounds in %lld ms: %d saves, %d rounds with one, %d kills during a compaction, %d "
          "appends torn",
        rounds, clock.elapsed(), saves, roundsWithASave, killsInCompaction, tears);
    // Kills that all came before the first save would have tested nothing.
    QVERIFY2(roundsWithASave > 0, "no writer saved anything before it was killed");
}

QTEST_GUILESS_MAIN(TestSNStickyNoteManagerCrash)
#include "TestSNStickyNoteManagerCrash.moc"
