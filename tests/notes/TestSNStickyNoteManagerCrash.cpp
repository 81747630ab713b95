// Kills a writer that edits, adds, deletes and restores notes at random moments of its saves
// and compactions, hundreds of times, and checks after each kill that a fresh store loads every
// note it had reported saved, at the edit it reported or the one it was saving, and nothing
// twice, and that each deleted note is in Recently Deleted as it went. In half of the rounds
// the append under way is also cut short, as a power cut would leave it.
//
// The writer is this program, started with "--write". The kill times and the writer's choices
// come from one seed, printed at the start; set VELLUMO_CRASH_SEED to run the same rounds again.
#include "SNNotesTestSupport.h"
#include "kit/QWKeyedArchiver.h"
#include "support/QWTestEnvironment.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QRandomGenerator>

#include <cstdio>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace SNNotesTest;

namespace {

// A note's first line is "NAME EDIT": its name stays, the number of its edit counts up.
QString headOf(const SNStickyNote &note)
{
    return textOf(note).section(u'\n', 0, 0);
}

QString idOf(const QUuid &uuid)
{
    return uuid.toString(QUuid::WithoutBraces);
}

// Changes notes through the store until it is killed, saving after every change and compacting
// every few saves. It writes one line to stdout for each step, flushed at once:
//   "note UUID NAME EDIT"  the next save holds this note at that edit (added, changed, restored)
//   "gone UUID"            the next save deletes the note
//   "saved BYTES"          save() returned true: everything announced since the last "saved"
//                          is on the disk, and the journal is BYTES long
//   "compacting", "compacted BYTES"  around compact(), which returned true
// and "ready BYTES" once the folder is loaded.
class Writer
{
public:
    // FOLDER SEED LABEL NOTES NOTE_BYTES COMPACT_EVERY
    explicit Writer(const QStringList &arguments)
        : m_store(arguments.value(0), u"save-loop"_s),
          m_random(arguments.value(1).toUInt()),
          m_label(arguments.value(2)),
          m_target(arguments.value(3).toInt()),
          m_padding(arguments.value(4).toInt(), u'.'),
          m_compactEvery(std::max(1, arguments.value(5).toInt()))
    { }

    // Returns only when the store failed it.
    int run()
    {
        say(u"ready %1"_s.arg(journalBytes()));
        for (;;) {
            if (!change())
                return fail(u"failed to restore a deleted note"_s);
            if (!m_store.save())
                return fail(u"failed to save"_s);
            say(u"saved %1"_s.arg(journalBytes()));
            if (m_random.bounded(m_compactEvery) == 0) {
                say(u"compacting"_s);
                if (!m_store.compact())
                    return fail(u"failed to compact"_s);
                say(u"compacted %1"_s.arg(journalBytes()));
            }
        }
    }

private:
    static void say(const QString &line)
    {
        std::fputs(qPrintable(line + u'\n'), stdout);
        std::fflush(stdout);
    }
    static int fail(const QString &line)
    {
        say(line);
        return 1;
    }
    qint64 journalBytes() const { return QFileInfo(m_store.journalPath()).size(); }

    void write(const std::shared_ptr<SNStickyNote> &note, const QString &name, qint64 edit)
    {
        say(u"note %1 %2 %3"_s.arg(idOf(note->uuid()), name).arg(edit));
        note->setAttributedString(QWAttributedString(u"%1 %2\n"_s.arg(name).arg(edit) + m_padding));
    }

    // One to three changes to different notes, keeping about the target number of notes.
    // False when the store would not give back a note it lists as deleted.
    bool change()
    {
        QList<std::shared_ptr<SNStickyNote>> notes = m_store.notesArray();
        QList<QUuid> removed; // in this save: not brought back in the same one
        const int changes = 1 + int(m_random.bounded(3));
        for (int i = 0; i < changes; ++i) {
            const int count = int(notes.size());
            const quint32 dice = m_random.bounded(100);
            QList<SNDeletedNote> deleted = m_store.recentlyDeletedNotes();
            deleted.removeIf(
                [&removed](const SNDeletedNote &note) { return removed.contains(note.uuid); });
            // Notes come back about as often as they go, so that Recently Deleted stays
            // small and the rounds quick.
            if (count == 0 || count < m_target * 3 / 4 || (dice < 5 && count < m_target)) {
                auto note = SNStickyNote::note();
                // The id is given by the store, so the text is set once the note is in the list.
                m_store.addNote(note);
                write(note, u"%1-%2"_s.arg(m_label).arg(++m_added), 1);
            } else if (count > m_target * 3 / 2 || (dice < 25 && count > 1)) {
                const std::shared_ptr<SNStickyNote> note = notes.takeAt(m_random.bounded(count));
                removed.append(note->uuid());
                say(u"gone %1"_s.arg(idOf(note->uuid())));
                m_store.removeNote(note);
            } else if (dice < 45 && !deleted.isEmpty()) {
                // Announced before the store is asked, so that a kill in between is covered;
                // the note restored is not in `notes`, so it is changed only once.
                const SNDeletedNote chosen = deleted.at(int(m_random.bounded(int(deleted.size()))));
                say(u"note %1 %2"_s.arg(idOf(chosen.uuid), chosen.title));
                if (!m_store.restoreDeletedNote(chosen.uuid))
                    return false;
            } else {
                const std::shared_ptr<SNStickyNote> note = notes.takeAt(m_random.bounded(count));
                const QString head = headOf(*note);
                write(note, head.section(u' ', 0, 0), head.section(u' ', 1, 1).toLongLong() + 1);
                m_store.noteDidChange(note);
            }
        }
        return true;
    }

    SNStickyNoteManager m_store;
    QRandomGenerator m_random;
    const QString m_label;
    const int m_target;
    const QString m_padding;
    const int m_compactEvery;
    int m_added = 0;
};

// What the test knows of one folder: the writer's settings, the first lines of the notes saved
// for sure, and of the deleted ones as they went.
struct Folder
{
    QString path;
    int notes = 0; // how many the writer keeps, about
    int noteBytes = 0;
    int compactEvery = 0;
    int longestKillMs = 0;
    QHash<QUuid, QString> saved;
    QHash<QUuid, QString> deleted;
};

// What one writer said before it was killed.
struct Report
{
    QHash<QUuid, std::optional<QString>> announced; // since the last "saved": null when deleted
    int saves = 0;
    bool killedInCompaction = false;
    qint64 journalBytes = 0; // after the last save or compaction: its records are whole
    QString failure;
};

std::optional<QString> headIn(const QHash<QUuid, QString> &notes, const QUuid &uuid)
{
    return notes.contains(uuid) ? std::optional(notes.value(uuid)) : std::nullopt;
}

} // namespace

class TestSNStickyNoteManagerCrash final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        bool given = false;
        m_seed = qEnvironmentVariable("VELLUMO_CRASH_SEED").toUInt(&given);
        if (!given)
            m_seed = QRandomGenerator::global()->generate();
        m_random.emplace(m_seed);
        qInfo("VELLUMO_CRASH_SEED=%u", m_seed);
    }

    void killedWriterLosesNothingSaved()
    {
        constexpr int maximumRounds = 400;
        constexpr qint64 timeLimitMs = 60 * 1000;
        // Small notes in a small archive, so that rounds are quick and most kills land in appends;
        // every eighth round works on a larger archive, whose compactions take long enough to be
        // hit too.
        Folder small { m_environment.dataHome() + u"/small"_s, 6, 64, 6, 40, {}, {} };
        Folder large { m_environment.dataHome() + u"/large"_s, 300, 2000, 3, 250, {}, {} };
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
            if (report.failure.isEmpty() && m_random->bounded(2) == 0
                && tearJournal(folder, report))
                ++tears;
            const QString failure
                = report.failure.isEmpty() ? checkLoad(folder, report) : report.failure;
            QVERIFY2(failure.isEmpty(),
                qPrintable(u"seed %1, round %2: %3"_s.arg(m_seed).arg(rounds).arg(failure)));
            saves += report.saves;
            roundsWithASave += report.saves > 0 ? 1 : 0;
            killsInCompaction += report.killedInCompaction ? 1 : 0;
        }
        qInfo(
            "%d rounds in %lld ms: %d saves, %d rounds with one, %d kills during a compaction, %d "
            "appends torn",
            rounds, clock.elapsed(), saves, roundsWithASave, killsInCompaction, tears);
        // Kills that all came before the first save would have tested nothing.
        QVERIFY2(roundsWithASave > 0, "no writer saved anything before it was killed");
    }

private:
    // Fills the folder with notes saved for sure, so that the writer starts from a whole archive.
    void seed(Folder &folder, int count) const
    {
        // An empty archive, so that the welcome notes are not copied in: they are not the writer's.
        QVERIFY(writeFile(QDir(folder.path).filePath(SNStickyNoteManager::databaseFileName),
            QWKeyedArchiver::archivedDataWithRootObject(QList<std::shared_ptr<SNStickyNote>>())));
        SNStickyNoteManager store(folder.path, u"crash-test"_s);
        QVERIFY(store.notesArray().isEmpty());
        for (int i = 0; i < count; ++i) {
            const QString head = u"seed-%1 1"_s.arg(i);
            const std::shared_ptr<SNStickyNote> note
                = noteWithText(head + u'\n' + QString(folder.noteBytes, u'.'));
            store.addNote(note);
            folder.saved.insert(note->uuid(), head);
        }
        QVERIFY(store.save());
        QVERIFY(store.compact());
    }

    Report runWriter(Folder &folder, int round)
    {
        Report report;
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(),
            { u"--write"_s, folder.path, QString::number(m_random->generate()), u"r%1"_s.arg(round),
                QString::number(folder.notes), QString::number(folder.noteBytes),
                QString::number(folder.compactEvery) });
        if (!writer.waitForStarted()) {
            report.failure = u"the writer did not start"_s;
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
            report.failure = u"the writer stopped by itself: %1"_s.arg(
                QString::fromUtf8(output.split('\n').value(output.count('\n') - 1))
                + QString::fromUtf8(writer.readAllStandardError()));
            return report;
        }

        // A line cut by the kill was never finished, so it counts for nothing.
        for (const QByteArray &bytes : output.left(output.lastIndexOf('\n') + 1).split('\n')) {
            const QString line = QString::fromUtf8(bytes);
            const QString word = line.section(u' ', 0, 0);
            const QUuid uuid = QUuid::fromString(line.section(u' ', 1, 1));
            if (word == u"note"_s) {
                report.announced.insert(uuid, line.section(u' ', 2));
            } else if (word == u"gone"_s) {
                report.announced.insert(uuid, std::nullopt);
            } else if (word == u"saved"_s) {
                report.journalBytes = line.section(u' ', 1, 1).toLongLong();
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
            } else if (word == u"compacting"_s) {
                report.killedInCompaction = true;
            } else if (word == u"compacted"_s || word == u"ready"_s) {
                report.killedInCompaction = false;
                report.journalBytes = line.section(u' ', 1, 1).toLongLong();
            }
        }
        return report;
    }

    // A kill never cuts a write short, but a power cut can: the append under way reaches the disk
    // only up to a random byte. What the writer reported saved lies before it.
    bool tearJournal(const Folder &folder, const Report &report)
    {
        QFile journal(QDir(folder.path).filePath(SNStickyNoteManager::journalFileName));
        const qint64 unreported = journal.size() - report.journalBytes;
        if (unreported <= 0)
            return false;
        return journal.resize(report.journalBytes + m_random->bounded(unreported));
    }

    // What is wrong with the notes a fresh store loads, or nothing.
    static QString checkLoad(Folder &folder, const Report &report)
    {
        const SNStickyNoteManager store(folder.path, u"crash-test"_s);
        QHash<QUuid, QString> loaded;
        QSet<QString> names;
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray()) {
            const QString head = headOf(*note);
            if (loaded.contains(note->uuid()) || names.contains(head.section(u' ', 0, 0)))
                return u"%1 is there twice"_s.arg(head);
            loaded.insert(note->uuid(), head);
            names.insert(head.section(u' ', 0, 0));
        }

        // Each note is as last saved, or as the save under way left it, deleted or not.
        QSet<QUuid> notes(loaded.keyBegin(), loaded.keyEnd());
        notes.unite(QSet<QUuid>(folder.saved.keyBegin(), folder.saved.keyEnd()));
        for (const QUuid &uuid : std::as_const(notes)) {
            const std::optional<QString> head = headIn(loaded, uuid);
            const std::optional<QString> saved = headIn(folder.saved, uuid);
            if (head != saved
                && !(report.announced.contains(uuid) && head == report.announced.value(uuid)))
                return u"%1 loaded as %2, but it was saved as %3"_s.arg(
                    idOf(uuid), head.value_or(u"nothing"_s), saved.value_or(u"nothing"_s));
        }

        // What the kill left is what the next writer starts from.
        for (auto note = folder.saved.cbegin(); note != folder.saved.cend(); ++note) {
            if (!loaded.contains(note.key()))
                folder.deleted.insert(note.key(), note.value());
        }
        folder.saved = loaded;
        for (const QUuid &uuid : loaded.keys())
            folder.deleted.remove(uuid);

        // Every deleted note can still be brought back, as it was when it went.
        QHash<QUuid, QString> titles;
        for (const SNDeletedNote &note : store.recentlyDeletedNotes()) {
            if (loaded.contains(note.uuid))
                return u"%1 is both in the list and deleted"_s.arg(note.title);
            titles.insert(note.uuid, note.title);
        }
        for (auto note = folder.deleted.cbegin(); note != folder.deleted.cend(); ++note) {
            if (titles.value(note.key()) != note.value())
                return u"%1 was deleted but Recently Deleted holds \"%2\""_s.arg(
                    note.value(), titles.value(note.key()));
        }
        return {};
    }

    QWTestEnvironment m_environment;
    quint32 m_seed = 0;
    std::optional<QRandomGenerator> m_random;
};

// Started with "--write FOLDER SEED LABEL NOTES NOTE_BYTES COMPACT_EVERY", the program is the
// writer that the test kills. The writer runs as the program does, under a GUI application
// (offscreen): under a core application its first changes take longer, and fewer kills land in
// its saves. The test itself needs none.
int main(int argc, char *argv[])
{
    if (argc > 1 && qstrcmp(argv[1], "--write") == 0) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication application(argc, argv);
        return Writer(QCoreApplication::arguments().mid(2)).run();
    }
    QCoreApplication application(argc, argv);
    TestSNStickyNoteManagerCrash test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "TestSNStickyNoteManagerCrash.moc"
