#include "SNNotesTestSupport.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNJournal.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"

#include <QRandomGenerator>
#include <QSaveFile>

using namespace Qt::Literals::StringLiterals;
using namespace SNNotesTest;

namespace {

// The texts of the notes in an archive; "(incomplete)" last when it is not whole.
QStringList textsInFile(const QString &path)
{
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(fileBytes(path));
    QStringList texts;
    for (const QWArchiveValue &note : result.root.toArray()) {
        texts.append(QWKeyedUnarchiver::parse(note.valueForKey(u"data")->toData())
                         .root.valueForKey(u"string")
                         ->toString());
    }
    if (!result.isComplete())
        texts.append(u"(incomplete)"_s);
    return texts;
}

} // namespace

class TestSNStickyNoteManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_scheduler = std::make_unique<QWManualScheduler>();
    }

    void cleanup()
    {
        forgetAllTags();
        m_scheduler.reset();
        m_environment.reset();
    }

    // The welcome notes show hashtags at work and the copy is the user's own file. (That they
    // have the same ids on every computer, so that two that meet keep one of each, is checked by
    // the merger test and TestSNSyncIntegration.)
    void firstStartSeedsTheWelcomeNotes()
    {
        QVERIFY(!QDir(folder()).exists());
        SNStickyNoteManager store(folder());
        QVERIFY(store.notesArray().size() > 1);
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
            QVERIFY(note->hasContent() && !note->windowFrame().isEmpty());
        QVERIFY(SNTagManager::sharedManager().count() > 0);
        QVERIFY(QFileInfo(store.databasePath()).isWritable());

        // An existing file is never seeded again, even when it holds no notes.
        removeAll(store);
        settle(store);
        QVERIFY(SNStickyNoteManager(folder()).notesArray().isEmpty());
        QVERIFY(store.compact());
        QVERIFY(SNStickyNoteManager(folder()).notesArray().isEmpty());
    }

    // A save appends the changed notes to the journal and leaves the archive as it is; blank
    // notes stay in memory but are not kept.
    void savesAppendOnlyWhatChanged()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        QVERIFY(store.compact());
        const QByteArray archive = fileBytes(store.databasePath());
        const std::shared_ptr<SNStickyNote> added = noteWithText(u"added"_s);
        const QList<std::shared_ptr<SNStickyNote>> before = store.notesArray();
        store.addNote(added);
        store.addNote(added); // once only
        store.addNote(nullptr);
        store.addNote(noteWithText(u"  \n\t \n"_s));
        store.addNote(SNStickyNote::note()); // never typed into
        QVERIFY(before.isEmpty()); // a snapshot does not change
        QCOMPARE(store.notesArray().size(), 3);
        settle(store);
        QCOMPARE(fileBytes(store.databasePath()), archive);
        QCOMPARE(textsOf(SNStickyNoteManager(folder()).notesArray()), QStringList { u"added"_s });

        // Typing into one note appends that note alone, whatever else the store holds.
        for (int i = 0; i < 20; ++i)
            store.addNote(noteWithText(u"other %1"_s.arg(i)));
        settle(store);
        const qint64 journalBefore = QFileInfo(store.journalPath()).size();
        added->setAttributedString(QWAttributedString(u"added, then edited"_s));
        store.noteDidChange(added);
        settle(store);
        const SNJournal::Contents journal = SNJournal::read(store.journalPath());
        QVERIFY(journal.isComplete());
        QVERIFY(journal.records.last().size() < 2000);
        QCOMPARE(QFileInfo(store.journalPath()).size(),
            journalBefore + SNJournal::frame(journal.records.last()).size());
        QCOMPARE(fileBytes(store.databasePath()), archive);

        // Removing a note that is not in the list still tells it: its tags forget it.
        const std::shared_ptr<SNTag> tag
            = SNTag::tagWithNameColor(u"#outsider"_s, QWColor::black());
        SNTagManager::sharedManager().addTag(tag);
        const std::shared_ptr<SNStickyNote> outsider = noteWithText(u"outsider"_s);
        outsider->setTags({ tag });
        store.removeNote(outsider);
        QCOMPARE(SNTagManager::sharedManager().count(), 0);

        store.removeNote(added);
        settle(store);
        QVERIFY(
            !textsOf(SNStickyNoteManager(folder()).notesArray()).contains(u"added, then edited"_s));
    }

    // Changes told to the store become one save in the background on the next turn of the
    // event loop; a save on request takes its place, and the store's end writes one still due.
    void changesOfOneTurnMakeOneSave()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        QVERIFY(store.save());
        const qsizetype records = SNJournal::read(store.journalPath()).records.size();
        const std::shared_ptr<SNStickyNote> note = noteWithText(u"edited"_s);
        store.addNote(note);
        note->setThemeName(u"SNUserTheme-Work"_s);
        store.noteDidChange(note);
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            SNStickyNote::themeNameDidChangeNotification, nullptr,
            { { u"oldName"_s, u"SNUserTheme-Work"_s }, { u"newName"_s, u"SNUserTheme-Play"_s } });
        QVERIFY(store.hasPendingSave());
        QCOMPARE(SNJournal::read(store.journalPath()).records.size(), records);
        settle(store);
        QVERIFY(!store.hasPendingSave());
        QCOMPARE(SNJournal::read(store.journalPath()).records.size(), records + 1);
        QCOMPARE(SNStickyNoteManager(folder()).notesArray().value(0)->themeName(),
            u"SNUserTheme-Play"_s);

        store.noteDidChange(note);
        QVERIFY(store.save());
        QVERIFY(!store.hasPendingSave());
        {
            SNStickyNoteManager leaving(folder());
            leaving.addNote(noteWithText(u"last words"_s));
        }
        QCOMPARE(textsOf(SNStickyNoteManager(folder()).notesArray()),
            (QStringList { u"edited"_s, u"last words"_s }));
    }

    // Compaction writes the whole archive and starts a new journal: after a minute without
    // changes, when the journal has grown past a quarter of the archive and 1 MB, and when
    // asked. Each version of a note counts its text edits and is stamped later than the last.
    void compactionWritesTheArchiveAndEmptiesTheJournal()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        const std::shared_ptr<SNStickyNote> note = noteWithText(u"one"_s);
        store.addNote(note);
        settle(store);
        const SNNoteVersion first = note->version();
        QCOMPARE(first.textEdits.value(first.stamp.device), 1);
        note->setWindowFrame(u"{{1, 2}, {300, 200}}"_s); // not a text edit
        store.noteDidChange(note);
        settle(store);
        QVERIFY(first.stamp < note->version().stamp);
        QCOMPARE(note->version().textEdits, first.textEdits);
        QVERIFY(textsInFile(store.databasePath()).size() > 1); // the welcome notes still

        m_scheduler->advanceBy(SNStickyNoteManager::idleSecondsBeforeCompaction);
        store.waitForBackgroundSaves();
        QCOMPARE(textsInFile(store.databasePath()), QStringList { u"one"_s });
        QCOMPARE(fileBytes(store.journalPath()), SNJournal::header);
        QVERIFY(QFile::exists(folder() + SNStickyNoteManager::recentlyDeletedFileName));
        const SNStickyNoteManager reloaded(folder());
        QCOMPARE(reloaded.notesArray().value(0)->version(), note->version());
        QCOMPARE(reloaded.notesArray().value(0)->uuid(), note->uuid());

        // A large edit makes the journal outgrow the archive: it is compacted at once.
        note->setAttributedString(QWAttributedString(QString(1'200'000, u'x')));
        store.noteDidChange(note);
        settle(store);
        QCOMPARE(note->version().textEdits.value(first.stamp.device), 2);
        QCOMPARE(fileBytes(store.journalPath()), SNJournal::header);
        QCOMPARE(textsInFile(store.databasePath()), QStringList { QString(1'200'000, u'x') });
    }

    // A write that fails half-way leaves the file it replaces whole, with no temporary file
    // beside it, and a journal append that fails leaves no torn record: the change goes into
    // the archive instead, or waits for the next save when that fails too.
    void failedWritesLoseNothing()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        store.addNote(noteWithText(u"older"_s));
        settle(store);
        const QString exported = m_environment->dataHome() + u"/export.db"_s;
        QVERIFY(store.exportDatabaseToPath(exported));
        store.addNote(noteWithText(u"newer"_s));
        settle(store);
        QVERIFY(store.exportDatabaseToPath(exported)); // the user agreed to replace it
        QCOMPARE(textsInFile(exported), (QStringList { u"older"_s, u"newer"_s }));
        QVERIFY(store.compact());

        store.setJournalFileFactory(
            [](const QString &path) { return std::make_unique<FailingFile<QFile>>(path); });
        store.addNote(noteWithText(u"into the archive"_s));
        QVERIFY(store.save());
        QCOMPARE(textsInFile(store.databasePath()),
            (QStringList { u"older"_s, u"newer"_s, u"into the archive"_s }));
        QCOMPARE(fileBytes(store.journalPath()), SNJournal::header);

        store.setSaveFileFactory(
            [](const QString &path) { return std::make_unique<FailingFile<QSaveFile>>(path); });
        store.addNote(noteWithText(QString(5000, u'y')));
        m_environment->clearMessages();
        QVERIFY(!store.exportDatabaseToPath(exported));
        QVERIFY(!store.save());
        QCOMPARE(textsInFile(exported), (QStringList { u"older"_s, u"newer"_s }));
        QCOMPARE(textsInFile(store.databasePath()).size(), 3);
        QCOMPARE(fileBytes(store.journalPath()), SNJournal::header);
        QCOMPARE(
            QDir(m_environment->dataHome()).entryList(QDir::Files), QStringList { u"export.db"_s });
        QCOMPARE(QDir(folder()).entryList(QDir::Files),
            (QStringList { u"Recently Deleted.db"_s, u"stickies.db"_s, u"stickies.journal"_s }));
        QVERIFY2(m_environment->messages().value(0).startsWith(
                     u"[DEBUG] Could not save because of error: "_s),
            qPrintable(m_environment->messages().join(u'\n')));

        store.setJournalFileFactory({});
        QVERIFY(store.save());
        QCOMPARE(SNStickyNoteManager(folder()).notesArray().size(), 4);
    }

    // A damaged archive is moved aside; a damaged journal is copied aside and read up to the
    // damage; records that name no known note, or come twice, change nothing twice.
    void damagedFilesAreKeptAsideAndReadAsFarAsTheyGo()
    {
        const QString path = folder() + u"stickies.db"_s;
        {
            SNStickyNoteManager store(folder());
            removeAll(store);
            store.addNote(noteWithText(u"first"_s));
            store.addNote(noteWithText(u"second"_s));
            QVERIFY(store.compact());
        }
        const QByteArray damaged = fileBytes(path).chopped(40); // cut inside the second note
        QVERIFY(writeFile(path, damaged));
        {
            SNStickyNoteManager store(folder());
            // The damaged file is kept aside, byte for byte; what it still held is read, and
            // written whole.
            const QString aside = store.movedAsidePath();
            QVERIFY(aside.startsWith(path + u".damaged-"_s));
            QCOMPARE(fileBytes(aside), damaged);
            QVERIFY(!QFile::exists(path));
            QVERIFY(store.compact());
            QCOMPARE(textsInFile(path), (QStringList { u"first"_s, u"second"_s }));

            // Not an archive at all: moved aside too, within the same second, beside the first.
            QVERIFY(writeFile(path, "{\\rtf1 not notes}"));
            SNStickyNoteManager other(folder());
            QVERIFY(other.notesArray().isEmpty());
            QCOMPARE(other.movedAsidePath(), aside + u"-2"_s);
            QFile::remove(path);
        }
        {
            SNStickyNoteManager store(folder());
            removeAll(store);
            store.addNote(noteWithText(u"kept"_s));
            store.addNote(noteWithText(u"torn"_s));
            QVERIFY(store.save());
        }
        const QByteArray journal = fileBytes(folder() + SNStickyNoteManager::journalFileName);
        const SNJournal::Contents whole
            = SNJournal::read(folder() + SNStickyNoteManager::journalFileName);
        // Every record once more, and a torn one: the same notes, the tail kept aside.
        QByteArray doubled = journal;
        for (const QByteArray &record : whole.records)
            doubled += SNJournal::frame(record);
        QVERIFY(writeFile(
            folder() + SNStickyNoteManager::journalFileName, doubled + "\x10\0\0\0garbage"_ba));
        SNStickyNoteManager store(folder());
        QCOMPARE(textsOf(store.notesArray()), (QStringList { u"kept"_s, u"torn"_s }));
        QCOMPARE(store.keptAsidePaths().size(), 1);
        QCOMPARE(fileBytes(store.keptAsidePaths().value(0)), doubled + "\x10\0\0\0garbage"_ba);
        QCOMPARE(fileBytes(store.journalPath()), doubled);
        // Appends go on after the last whole record.
        store.addNote(noteWithText(u"after"_s));
        QVERIFY(store.save());
        QCOMPARE(textsOf(SNStickyNoteManager(folder()).notesArray()),
            (QStringList { u"kept"_s, u"torn"_s, u"after"_s }));

        // A journal that is not one at all is read as none and kept aside.
        QVERIFY(writeFile(store.journalPath(), "not a journal"_ba));
        SNStickyNoteManager fresh(folder());
        QCOMPARE(fresh.keptAsidePaths().size(), 1);
        QVERIFY(!QFile::exists(store.journalPath()));
    }

    void unfinishedSavesAreRemovedAtLoad()
    {
        QDir().mkpath(folder());
        const QStringList leftovers = { u"stickies.db.AbC123"_s, u"stickies.db.x9Y8z7"_s,
            u"stickies.journal.Qw3rTy"_s, u"Recently Deleted.db.a1B2c3"_s };
        const QStringList kept = { u"stickies.db.damaged-20261121-101500"_s, u"stickies.db.bak"_s,
            u"stickies.db.AbC1234"_s, u"Themes.db.AbC123"_s };
        for (const QString &name : leftovers + kept)
            QVERIFY(writeFile(folder() + name, "partial"));
        SNStickyNoteManager store(folder());
        for (const QString &name : leftovers)
            QVERIFY2(!QFile::exists(folder() + name), qPrintable(name));
        for (const QString &name : kept)
            QVERIFY2(QFile::exists(folder() + name), qPrintable(name));
    }

    // After any sequence of edits, deletions and restores, with saves between them, loading
    // gives the notes the store held, in its order and versions, whether the journal was
    // compacted or not, and whether or not a compaction was cut off before the new journal.
    void replayEqualsTheArchive()
    {
        QRandomGenerator random(1824);
        for (int run = 0; run < 12; ++run) {
            const QString runFolder = m_environment->dataHome() + u"/run%1/"_s.arg(run);
            SNStickyNoteManager store(runFolder);
            removeAll(store);
            for (int step = 0; step < 60; ++step) {
                const QList<std::shared_ptr<SNStickyNote>> notes = store.notesArray();
                const QList<SNDeletedNote> deleted = store.recentlyDeletedNotes();
                const auto some
                    = notes.isEmpty() ? nullptr : notes.at(random.bounded(notes.size()));
                const quint32 dice = random.bounded(5);
                if (dice < 2 || !some) {
                    store.addNote(noteWithText(u"note %1.%2"_s.arg(run).arg(step)));
                } else if (dice == 2) {
                    some->setAttributedString(QWAttributedString(u"edit %1"_s.arg(step)));
                    some->setWindowFrame(u"{{%1, 0}, {200, 100}}"_s.arg(step));
                    store.noteDidChange(some);
                } else if (dice == 3) {
                    store.removeNote(some);
                } else if (!deleted.isEmpty()) {
                    store.restoreDeletedNote(deleted.at(random.bounded(deleted.size())).uuid);
                }
                if (random.bounded(3) == 0)
                    QVERIFY(store.save());
            }
            QVERIFY(store.save());
            const QStringList expected = dumpOf(store);
            const QByteArray journal = fileBytes(store.journalPath());
            QCOMPARE(dumpOf(SNStickyNoteManager(runFolder)), expected);
            QVERIFY(store.compact());
            QCOMPARE(dumpOf(SNStickyNoteManager(runFolder)), expected);
            // The old journal again over the new archive, as when a crash came between them:
            // the same notes, though a note deleted and brought back may change its place.
            QVERIFY(writeFile(store.journalPath(), journal));
            QStringList replayed = dumpOf(SNStickyNoteManager(runFolder));
            QStringList sorted = expected;
            replayed.sort();
            sorted.sort();
            QCOMPARE(replayed, sorted);
        }
    }

private:
    // Lets the save the store scheduled run, and waits for it.
    void settle(SNStickyNoteManager &store)
    {
        m_scheduler->advanceBy(0);
        store.waitForBackgroundSaves();
    }
    QString folder() const { return m_environment->dataHome() + u"/Vellumo/"_s; }
    // Everything a note is, in list order, and what Recently Deleted holds.
    static QStringList dumpOf(const SNStickyNoteManager &store)
    {
        QStringList dump;
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray()) {
            const SNNoteVersion version = note->version();
            dump.append(u"%1 %2 %3 %4.%5"_s
                            .arg(note->uuid().toString(), note->attributedString()->string(),
                                note->windowFrame())
                            .arg(version.stamp.millis)
                            .arg(version.stamp.counter));
        }
        for (const SNDeletedNote &deleted : store.recentlyDeletedNotes())
            dump.append(u"deleted %1 %2"_s.arg(deleted.uuid.toString(), deleted.title));
        return dump;
    }
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

// An event loop of its own: the store schedules its saves on it.
QTEST_GUILESS_MAIN(TestSNStickyNoteManager)
#include "TestSNStickyNoteManager.moc"
