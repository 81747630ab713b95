#pragma once

#include "kit/QWBackgroundWorkers.h"
#include "kit/QWNotificationCenter.h"
#include "notes/SNBackupShelf.h"
#include "notes/SNNoteList.h"
#include "notes/SNNoteVersion.h"
#include "notes/SNPendingChanges.h"
#include "notes/SNRecentlyDeleted.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QUuid>

#include <functional>
#include <memory>
#include <mutex>

class QFile;
class QSaveFile;
class QThread;
class QWDebouncer;
class SNHybridClock;
class SNJournal;
class SNStickyNote;

// The one store of all notes: it loads "stickies.db" and its journal once, keeps the notes in
// order, saves what changed, keeps deleted notes for 30 days and a daily backup, and copies the
// notes for export. It knows nothing of windows.
//
// The store decides when to save: whoever changes a note tells it (noteDidChange), and every
// change made in one turn of the event loop, the list's own included, becomes one save in the
// background. Only changes made on the thread that made the store are scheduled so; tools and
// other threads call save() themselves.
//
// A save appends the changed notes to the journal ("stickies.journal") and waits for the disk;
// compaction writes the whole archive and starts a new journal, when the journal has grown
// (past 1 MB and a quarter of the archive), after a minute without changes, and at quit.
// Nothing is lost on the way: the archive is written beside the old one and renamed over it,
// replaying the journal over any archive gives the same notes, and a file that cannot be read
// is kept aside before anything could replace it.
class SNStickyNoteManager final
{
public:
    static const QString databaseFileName; // "stickies.db"
    static const QString journalFileName; // "stickies.journal"
    static const QString recentlyDeletedFileName; // "Recently Deleted.db"
    static const QString backupsFolderName; // "Backups"
    static const QString
        defaultDatabaseResource; // the welcome notes, ":/Vellumo/stickies.default.db"
    static constexpr qint64 smallestJournalToCompact = 1024 * 1024;
    static constexpr int idleSecondsBeforeCompaction = 60;

    // Where the files that compaction and exports write come from; tests hand in devices that
    // fail.
    using SaveFileFactory = std::function<std::unique_ptr<QSaveFile>(const QString &path)>;
    // Where the journal's appends write.
    using JournalFileFactory = std::function<std::unique_ptr<QFile>(const QString &path)>;
    // Takes the records of this computer's own changes once they are saved, on the saving
    // thread: what other computers are to see.
    using OwnRecordsHandler = std::function<void(const QList<QByteArray> &records)>;

    // The store over the folder "Vellumo/" of the user's data folder; loads at once.
    SNStickyNoteManager();
    // The store over another folder, for tests and tools; loads at once. The device id stamps
    // this computer's changes; empty takes the one of the settings.
    explicit SNStickyNoteManager(
        const QString &baseDatabasePath, const QString &device = QString());
    // Writes a scheduled save at once and waits for saves still running in the background.
    ~SNStickyNoteManager();
    SNStickyNoteManager(const SNStickyNoteManager &) = delete;
    SNStickyNoteManager &operator=(const SNStickyNoteManager &) = delete;

    static SNStickyNoteManager &sharedManager();
    // The folder of the default store: "Vellumo/" in the user's data folder; empty without one.
    static QString standardBaseDatabasePath();

    QString baseDatabasePath() const; // ends with "/"
    QString databasePath() const;
    QString journalPath() const;

    // A copy of the list: later changes to the store do not show in it.
    QList<std::shared_ptr<SNStickyNote>> notesArray() const;
    // Adding a note already in the list does nothing more than noteDidChange; adding one that
    // is in Recently Deleted brings it back.
    void addNote(const std::shared_ptr<SNStickyNote> &note);
    // The note goes to Recently Deleted (when it has text).
    void removeNote(const std::shared_ptr<SNStickyNote> &note);
    // The note's fields changed: it is saved with the next save.
    void noteDidChange(const std::shared_ptr<SNStickyNote> &note);
    // Whether a save is scheduled and has not run yet.
    bool hasPendingSave() const;

    // Appends every change told so far to the journal, on the calling thread, taking the place
    // of a scheduled save; compacts when the journal has grown. False when nothing could be
    // written: the changes stay for the next save.
    bool save();
    // The same on a worker of its own; the interface thread does not wait.
    void saveInBackground();
    // Writes the whole archive and starts a new journal; also makes the backup of the day.
    bool compact();
    // Returns once every background save has finished; called at quit.
    void waitForBackgroundSaves();

    // Recently Deleted, newest first; nothing older than 30 days.
    QList<SNDeletedNote> recentlyDeletedNotes() const;
    // Puts the deleted note back at the end of the list, as it was; null when it is not in
    // Recently Deleted.
    std::shared_ptr<SNStickyNote> restoreDeletedNote(const QUuid &uuid);

    // The daily copies, newest first.
    QList<SNBackup> backups() const;
    // Compacts and copies the archive as today's backup.
    bool backUpNow(QString *error = nullptr);
    // Adds the notes of a backup (or of any archive) that the store does not hold (by id) at
    // the end of the list, and returns them; deletes nothing. The error says what could not be
    // read.
    QList<std::shared_ptr<SNStickyNote>> restoreBackup(
        const QString &path, QString *error = nullptr);

    // Writes the notes as one archive, replacing whatever is at the path. Logs and returns
    // false on failure, leaving the path as it was.
    bool exportDatabaseToPath(const QString &path);

    void loadDatabase();

    // Where unreadable files went, if loading moved or copied some aside.
    QString movedAsidePath() const;
    QStringList keptAsidePaths() const;

    void setSaveFileFactory(SaveFileFactory factory);
    void setJournalFileFactory(JournalFileFactory factory);

    // MARK: Merging what other computers saved
    // Changes told through these are saved here like any other, but keep the versions they
    // came with and do not go to the own-records handler: a merge makes no change of this
    // computer's own.
    void setOwnRecordsHandler(OwnRecordsHandler handler);
    // The own records of every note and every deletion kept, as a computer that starts to
    // share its notes writes them.
    QList<QByteArray> recordsOfEveryNote() const;
    // Later stamps of this computer come after the stamp.
    void observeStamp(const SNNoteStamp &stamp);
    QString device() const;
    // This computer's changes are stamped with another id from now on, as when a copied home
    // folder turns out to share its id with the computer it came from.
    void setDevice(const QString &device);
    void addMergedNote(const std::shared_ptr<SNStickyNote> &note);
    // A note a merge made (a conflict's text): kept with the version it was given, and handed
    // to the own-records handler, so that other computers get it even before they merge.
    void addNoteMadeByMerge(const std::shared_ptr<SNStickyNote> &note);
    void mergedNoteDidChange(const std::shared_ptr<SNStickyNote> &note);
    // The note goes to Recently Deleted, deleted elsewhere.
    void removeMergedNote(const std::shared_ptr<SNStickyNote> &note);
    // The copy Recently Deleted keeps of a note, whatever its age; null when there is none.
    std::shared_ptr<SNStickyNote> deletedNote(const QUuid &uuid) const;
    // Keeps the note in Recently Deleted as deleted elsewhere, replacing an older copy.
    void keepMergedDeletedNote(const std::shared_ptr<SNStickyNote> &note);
    // Takes the note out of Recently Deleted and puts it back in the list as it is.
    void reviveMergedNote(const std::shared_ptr<SNStickyNote> &note);

private:
    using Change = SNPendingChange;

    void scheduleSave();
    void queueChange(const Change &change);
    QList<Change> takeChanges();
    void putBackChanges(const QList<Change> &changes);
    // Called with m_writeMutex held.
    bool appendLocked(const QList<Change> &changes);
    // Stamps this computer's changes and returns their records, the own ones apart.
    QList<QByteArray> recordsOfChanges(const QList<Change> &changes, QList<QByteArray> *ownRecords);
    bool compactLocked(bool evenWhenCurrent);
    // Writes beside the path and renames over it; called with m_writeMutex held.
    bool replaceFile(const QString &path, const QByteArray &data, QString *error = nullptr);
    QByteArray archiveOfNotes() const;
    bool journalWantsCompaction() const;
    void addAbsentNote(const Change &change);

    const QString m_baseDatabasePath;

    mutable std::mutex m_listMutex;
    SNNoteList m_notes;
    SNPendingChanges m_changes;
    SNRecentlyDeleted m_recentlyDeleted;

    // Every write of the journal and the archive happens under this lock, in the order the
    // changes were taken.
    std::mutex m_writeMutex;
    std::unique_ptr<SNJournal> m_journal;
    std::unique_ptr<SNHybridClock> m_clock;
    SNBackupShelf m_backups;
    qint64 m_archiveSize = 0;
    bool m_archiveIsBehind = false; // the journal or ids given at load hold what it lacks
    bool m_writeRefused = false; // the archive on disk could not be read nor moved aside
    QStringList m_keptAside;
    QString m_movedAsidePath;
    SaveFileFactory m_saveFileFactory;
    OwnRecordsHandler m_ownRecordsHandler;

    QThread *const m_ownerThread;
    std::unique_ptr<QWDebouncer> m_saveDebouncer; // made on the first change of its thread
    std::unique_ptr<QWDebouncer> m_compactionDebouncer;
    QWNotificationCenter::Observation m_themeRenameObservation;

    // Last: the saves still running finish before anything they use goes.
    QWBackgroundWorkers m_workers;
};
