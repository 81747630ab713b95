#pragma once

#include "kit/QWNotificationCenter.h"

#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class QSaveFile;
class QThread;
class QWDebouncer;
class SNStickyNote;

// The one store of all notes: it loads "stickies.db" once, keeps the notes in order, writes
// the whole list back and copies the file for export. It knows nothing of windows.
//
// The store decides when to save: whoever changes a note tells it (noteDidChange), and every
// change made in one turn of the event loop, the list's own included, becomes one save in the
// background. Only changes made on the thread that made the store are scheduled so; tools and
// other threads call save() themselves.
//
// Saving never loses data: the archive is written beside the old one and renamed over it,
// an older snapshot never replaces a newer one, and a file that cannot be read is moved
// aside before anything could replace it.
class SNStickyNoteManager final
{
public:
    static const QString databaseFileName; // "stickies.db"
    static const QString
        defaultDatabaseResource; // the welcome notes, ":/Vellumo/stickies.default.db"

    // Where the files that saves and exports write come from; tests hand in devices that fail.
    using SaveFileFactory = std::function<std::unique_ptr<QSaveFile>(const QString &path)>;

    // The store over the folder "Vellumo/" of the user's data folder; loads at once.
    SNStickyNoteManager();
    // The store over another folder, for tests and tools; loads at once.
    explicit SNStickyNoteManager(const QString &baseDatabasePath);
    // Writes a scheduled save at once and waits for saves still running in the background.
    ~SNStickyNoteManager();
    SNStickyNoteManager(const SNStickyNoteManager &) = delete;
    SNStickyNoteManager &operator=(const SNStickyNoteManager &) = delete;

    static SNStickyNoteManager &sharedManager();

    QString baseDatabasePath() const; // ends with "/"
    QString databasePath() const;

    // A copy of the list: later changes to the store do not show in it.
    QList<std::shared_ptr<SNStickyNote>> notesArray() const;
    void addNote(const std::shared_ptr<SNStickyNote> &note);
    void removeNote(const std::shared_ptr<SNStickyNote> &note);
    // The note's fields changed: it is saved with the next save.
    void noteDidChange(const std::shared_ptr<SNStickyNote> &note);
    // Whether a save is scheduled and has not run yet.
    bool hasPendingSave() const;

    // Writes every note that has text to the file, on the calling thread, taking the place of
    // a scheduled save. False when the file could not be written (or a newer save had already
    // written it: nothing to do).
    bool save();
    // The same on a worker of its own; the interface thread does not wait.
    void saveInBackground();
    // Returns once every background save has finished; called at quit.
    void waitForBackgroundSaves();

    // Copies the file, replacing whatever is at the path. Logs and returns false on failure,
    // leaving the path as it was.
    bool exportDatabaseToPath(const QString &path);

    void loadDatabase();

    // Where an unreadable file went, if loading moved one aside.
    QString movedAsidePath() const;

    void setSaveFileFactory(SaveFileFactory factory);

private:
    void scheduleSave();
    // Takes away the temporary files of saves that a crash interrupted.
    void removeUnfinishedSaves() const;
    bool writeArchive(const QByteArray &archive, quint64 generation);
    // Writes beside the path and renames over it; called with m_writeMutex held.
    bool replaceFile(const QString &path, const QByteArray &data, QString *error = nullptr);
    void reapFinishedWorkers();

    const QString m_baseDatabasePath;

    mutable std::mutex m_listMutex;
    QList<std::shared_ptr<SNStickyNote>> m_actualNotesArray;

    // Snapshots are taken and encoded in order under this lock, so a snapshot's number says
    // how fresh its content is; the file only ever moves to a higher number.
    std::mutex m_snapshotMutex;
    quint64 m_lastGeneration = 0;
    std::mutex m_writeMutex;
    quint64 m_writtenGeneration = 0;
    bool m_writeRefused = false; // the file on disk could not be read nor moved aside
    QString m_movedAsidePath;
    SaveFileFactory m_saveFileFactory;

    QThread *const m_ownerThread;
    std::unique_ptr<QWDebouncer> m_saveDebouncer; // made on the first change of its thread
    QWNotificationCenter::Observation m_themeRenameObservation;

    struct Worker
    {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> finished;
    };
    std::mutex m_workersMutex;
    std::vector<Worker> m_workers;
};
