#pragma once

#include "notes/SNRecordMerger.h"
#include "notes/SNSyncFolder.h"

#include <QDateTime>
#include <QObject>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>

class QFileSystemWatcher;
class QWDebouncer;
class QWTimer;
class SNStickyNoteManager;

// Shares the store's notes through a sync folder while the program runs: this computer's own
// changes go into its journal there as they are saved, and what other computers wrote is
// merged into the store when the folder changes (a file-system watcher) and every 30 seconds
// (for tools and file systems that the watcher misses). Merging writes nothing of its own into
// the folder but the notes a conflict makes.
//
// It opens no window and asks nobody itself: whoever starts it hands in the question before a
// large deletion and what to do before a merge (windows hand over their typing), and hears of
// the notes that changed.
class SNSyncSession final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNSyncSession)

public:
    static constexpr int rescanSeconds = 30;
    // The own journal is written anew, one record per note, once it grows past this.
    static constexpr qint64 largestOwnJournal = qint64(4) * 1024 * 1024;
    static const QString statusFileName; // "Sync Status.ini", beside the notes

    enum class Start { Started, FolderMissing, DeviceIdTaken, Failed };

    // What the last merge did.
    struct Status
    {
        QDateTime date; // null when nothing was merged yet
        qsizetype added = 0;
        qsizetype changed = 0;
        qsizetype removed = 0;
        qsizetype conflicts = 0;
        QStringList waiting; // files with a damaged record, read again once they change
    };

    // The store's device id names this computer's folder.
    SNSyncSession(SNStickyNoteManager &store, const QString &folder, QObject *parent = nullptr);
    ~SNSyncSession() override;

    // Describes this computer, writes every note into its journal when it has none yet,
    // merges what is there and watches for more. A folder whose description names another
    // machine belongs to a copy of this computer's settings: this one must take a new id.
    Start start(const QString &name, const QString &machine, QString *error = nullptr);
    bool isStarted() const { return m_isStarted; }
    // This computer's name, as the other computers list it.
    bool setName(const QString &name);

    void setDeletionQuestion(SNRecordMerger::DeletionQuestion question);
    void setBeforeMerge(std::function<void()> beforeMerge);

    QString folder() const { return m_folder.folder(); }
    QList<SNSyncFolder::Device> devices() const { return m_folder.devices(); }
    Status lastMerge() const { return m_status; }
    // What the store at this path merged last, read from its status file.
    static Status lastMergeOfStore(const QString &baseDatabasePath);

public Q_SLOTS:
    // Reads what arrived and merges it; nothing happens while the folder is missing.
    void mergeNow();

Q_SIGNALS:
    void notesMerged(const SNRecordMerger::Result &result);
    void statusChanged();

private:
    bool writeEveryNote(QString *error = nullptr);
    void compactOwnJournal();
    void watchFolders();
    void saveStatus() const;

    SNStickyNoteManager &m_store;
    SNSyncFolder m_folder;
    SNRecordMerger m_merger;
    QString m_name;
    QString m_machine;
    bool m_isStarted = false;
    bool m_isMerging = false;
    bool m_mergeAgain = false;
    // Set by a save that could not reach the folder: every note is written again once it can.
    std::shared_ptr<std::atomic<bool>> m_ownJournalIsBehind;
    SNRecordMerger::DeletionQuestion m_deletionQuestion;
    std::function<void()> m_beforeMerge;
    Status m_status;
    std::unique_ptr<QFileSystemWatcher> m_watcher;
    std::unique_ptr<QWDebouncer> m_changeDebouncer;
    std::shared_ptr<QWTimer> m_rescanTimer;
};
