#include "notes/SNSyncSession.h"

#include "kit/QWDebouncer.h"
#include "kit/QWTimer.h"
#include "notes/SNJournalRecord.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QSet>
#include <QSettings>
#include <QTimer>

const QString SNSyncSession::statusFileName = QStringLiteral("Sync Status.ini");

namespace {

// Files change in bursts as a sync tool brings them: one merge after the burst.
constexpr double mergeDelayAfterChange = 0.5;

const QString dateKey = QStringLiteral("lastMerge");
const QString addedKey = QStringLiteral("added");
const QString changedKey = QStringLiteral("changed");
const QString removedKey = QStringLiteral("removed");
const QString conflictsKey = QStringLiteral("conflicts");
const QString waitingKey = QStringLiteral("waiting");

QList<SNJournalRecord> recordsOf(const QList<QByteArray> &data)
{
    QList<SNJournalRecord> records;
    records.reserve(data.size());
    for (const QByteArray &bytes : data) {
        if (std::optional<SNJournalRecord> record = SNJournalRecord::fromArchivedData(bytes))
            records.append(std::move(*record));
    }
    return records;
}

} // namespace

SNSyncSession::SNSyncSession(SNStickyNoteManager &store, const QString &folder, QObject *parent)
    : QObject(parent),
      m_store(store),
      m_folder(folder, store.device()),
      m_merger(store),
      m_ownJournalIsBehind(std::make_shared<std::atomic<bool>>(false))
{ }

SNSyncSession::~SNSyncSession()
{
    // Returns once no save is handing records over any more.
    m_store.setOwnRecordsHandler({});
    if (m_rescanTimer)
        m_rescanTimer->invalidate();
}

SNSyncSession::Start SNSyncSession::start(
    const QString &name, const QString &machine, QString *error)
{
    if (!m_folder.isReachable()) {
        if (error)
            *error = QStringLiteral("the folder %1 is not there").arg(m_folder.folder());
        return Start::FolderMissing;
    }
    const QString described = m_folder.describedMachine();
    if (!described.isEmpty() && !machine.isEmpty() && described != machine) {
        if (error)
            *error = QStringLiteral("another computer writes as %1").arg(m_store.device());
        return Start::DeviceIdTaken;
    }
    m_name = name;
    m_machine = machine;
    if (!m_folder.writeDescription(name, machine, error))
        return Start::Failed;

    SNSyncFolder *const sharedFolder = &m_folder;
    const std::shared_ptr<std::atomic<bool>> behind = m_ownJournalIsBehind;
    m_store.setOwnRecordsHandler([sharedFolder, behind](const QList<QByteArray> &records) {
        QString failure;
        if (!sharedFolder->appendOwn(records, &failure)) {
            qWarning("[DEBUG] Could not share the changes: %s", qUtf8Printable(failure));
            behind->store(true);
        }
    });
    // Whatever was saved before the handler was set is in the store: it is all written now.
    m_store.save();
    if (!m_folder.hasOwnJournal() && !writeEveryNote(error))
        return Start::Failed;
    m_isStarted = true;

    m_changeDebouncer
        = std::make_unique<QWDebouncer>(mergeDelayAfterChange, [this] { mergeNow(); });
    m_watcher = std::make_unique<QFileSystemWatcher>();
    connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this,
        [this] { m_changeDebouncer->restart(); });
    connect(m_watcher.get(), &QFileSystemWatcher::fileChanged, this,
        [this] { m_changeDebouncer->restart(); });
    m_rescanTimer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
        rescanSeconds, true, [this](QWTimer &) { mergeNow(); });
    mergeNow();
    return Start::Started;
}

bool SNSyncSession::setName(const QString &name)
{
    m_name = name;
    return !m_isStarted || m_folder.writeDescription(name, m_machine);
}

void SNSyncSession::setDeletionQuestion(SNRecordMerger::DeletionQuestion question)
{
    m_deletionQuestion = std::move(question);
}

void SNSyncSession::setBeforeMerge(std::function<void()> beforeMerge)
{
    m_beforeMerge = std::move(beforeMerge);
}

bool SNSyncSession::writeEveryNote(QString *error)
{
    // What the old journal said (old deletions among it), then every note as this computer has
    // it and the deletions it keeps: what a save could not share is in there.
    const QList<QByteArray> notes = m_store.recordsOfEveryNote();
    const bool written = m_folder.rewriteOwnJournal(
        [&notes](const QList<QByteArray> &old) { return old + notes; }, error);
    if (written)
        m_ownJournalIsBehind->store(false);
    return written;
}

void SNSyncSession::mergeNow()
{
    if (!m_isStarted)
        return;
    // A question asked during a merge runs the event loop: a merge due then waits its turn.
    if (m_isMerging) {
        m_mergeAgain = true;
        return;
    }
    // An unmounted or vanished folder is nothing new, and deletes nothing.
    if (!m_folder.isReachable())
        return;
    m_isMerging = true;
    if (m_beforeMerge)
        m_beforeMerge();
    // This computer's last typing gets its stamp first, so that it meets what arrived as the
    // newest change it is.
    m_store.save();
    if (!m_folder.hasOwnJournal() || m_ownJournalIsBehind->load()) {
        QString error;
        if (!m_folder.writeDescription(m_name, m_machine, &error) || !writeEveryNote(&error))
            qWarning("[DEBUG] Could not write the notes to %s: %s",
                qUtf8Printable(m_folder.ownPath()), qUtf8Printable(error));
    }

    const SNSyncFolder::Reading reading = m_folder.readNewRecords();
    const SNRecordMerger::Result result
        = m_merger.merge(recordsOf(reading.records), m_deletionQuestion);
    if (!reading.records.isEmpty() || reading.waiting != m_status.waiting) {
        if (!result.isEmpty() || m_status.date.isNull()) {
            m_status = { QDateTime::currentDateTimeUtc(), result.added.size(),
                result.changed.size(), result.removed.size(), result.conflicts, reading.waiting };
        }
        m_status.waiting = reading.waiting;
        saveStatus();
        Q_EMIT statusChanged();
    }
    if (m_folder.ownJournalSize() > largestOwnJournal)
        compactOwnJournal();
    watchFolders();
    m_isMerging = false;
    if (!result.isEmpty())
        Q_EMIT notesMerged(result);
    if (std::exchange(m_mergeAgain, false))
        QTimer::singleShot(0, this, &SNSyncSession::mergeNow);
}

void SNSyncSession::compactOwnJournal()
{
    // One record per note, its last, in the order of those last records.
    QString error;
    const bool written = m_folder.rewriteOwnJournal(
        [](const QList<QByteArray> &records) {
            QSet<QUuid> seen;
            QList<QByteArray> kept;
            for (auto data = records.crbegin(); data != records.crend(); ++data) {
                const std::optional<SNJournalRecord> record
                    = SNJournalRecord::fromArchivedData(*data);
                if (!record || seen.contains(record->uuid))
                    continue;
                if (record->note)
                    record->note->didDelete(); // a copy only: no tag keeps it
                seen.insert(record->uuid);
                kept.prepend(*data);
            }
            return kept;
        },
        &error);
    if (!written)
        qWarning(
            "[DEBUG] Could not write the journal of this computer anew: %s", qUtf8Printable(error));
}

void SNSyncSession::watchFolders()
{
    QStringList paths { m_folder.devicesPath() };
    const QFileInfoList folders
        = QDir(m_folder.devicesPath()).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo &folder : folders) {
        paths.append(folder.filePath());
        // This computer's own appends are no news to it.
        if (folder.fileName() == m_folder.device())
            continue;
        for (const QFileInfo &file : QDir(folder.filePath()).entryInfoList(QDir::Files))
            paths.append(file.filePath());
    }
    const QStringList watched = m_watcher->directories() + m_watcher->files();
    QStringList added;
    for (const QString &path : std::as_const(paths)) {
        if (!watched.contains(path) && QFileInfo::exists(path))
            added.append(path);
    }
    if (!added.isEmpty())
        m_watcher->addPaths(added);
}

void SNSyncSession::saveStatus() const
{
    QSettings status(m_store.baseDatabasePath() + statusFileName, QSettings::IniFormat);
    status.setValue(dateKey, m_status.date);
    status.setValue(addedKey, m_status.added);
    status.setValue(changedKey, m_status.changed);
    status.setValue(removedKey, m_status.removed);
    status.setValue(conflictsKey, m_status.conflicts);
    status.setValue(waitingKey, m_status.waiting);
}

SNSyncSession::Status SNSyncSession::lastMergeOfStore(const QString &baseDatabasePath)
{
    const QString path = baseDatabasePath + statusFileName;
    Status result;
    if (!QFileInfo::exists(path))
        return result;
    const QSettings status(path, QSettings::IniFormat);
    result.date = status.value(dateKey).toDateTime();
    result.added = status.value(addedKey).toLongLong();
    result.changed = status.value(changedKey).toLongLong();
    result.removed = status.value(removedKey).toLongLong();
    result.conflicts = status.value(conflictsKey).toLongLong();
    result.waiting = status.value(waitingKey).toStringList();
    return result;
}
