#include "notes/SNStickyNoteManager.h"

#include "kit/QWBackgroundWorkers.h"
#include "kit/QWClock.h"
#include "kit/QWDebouncer.h"
#include "kit/QWFileReplacer.h"
#include "kit/QWFileSync.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNHybridClock.h"
#include "notes/SNJournal.h"
#include "notes/SNNoteIdentity.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStoreLoader.h"
#include "settings/SNUserDefaults.h"

#include <QAbstractEventDispatcher>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>

const QString SNStickyNoteManager::databaseFileName = QStringLiteral("stickies.db");
const QString SNStickyNoteManager::journalFileName = QStringLiteral("stickies.journal");
const QString SNStickyNoteManager::recentlyDeletedFileName = QStringLiteral("Recently Deleted.db");
const QString SNStickyNoteManager::backupsFolderName = QStringLiteral("Backups");
const QString SNStickyNoteManager::defaultDatabaseResource
    = QStringLiteral(":/Vellumo/stickies.default.db");

namespace {

QString withTrailingSlash(const QString &path)
{
    return path.isEmpty() || path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

} // namespace

QString SNStickyNoteManager::standardBaseDatabasePath()
{
    const QString dataHome = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return dataHome.isEmpty() ? QString() : dataHome + QStringLiteral("/Vellumo/");
}

SNStickyNoteManager::SNStickyNoteManager() : SNStickyNoteManager(standardBaseDatabasePath()) { }

SNStickyNoteManager::SNStickyNoteManager(const QString &baseDatabasePath, const QString &device)
    : m_baseDatabasePath(withTrailingSlash(baseDatabasePath)),
      m_journal(std::make_unique<SNJournal>(journalPath())),
      m_clock(std::make_unique<SNHybridClock>(
          device.isEmpty() ? SNUserDefaults::standardUserDefaults().deviceIdentifier() : device)),
      m_backups(m_baseDatabasePath + backupsFolderName),
      m_ownerThread(QThread::currentThread())
{
    loadDatabase();
    // A renamed theme is renamed in the notes that wear it (each note sees to its own name);
    // renames are rare, so every note is saved again.
    m_themeRenameObservation = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
        SNStickyNote::themeNameDidChangeNotification, nullptr, [this](const QWNotification &) {
            for (const std::shared_ptr<SNStickyNote> &note : notesArray())
                queueChange({ note, false, QDateTime() });
            scheduleSave();
        });
}

SNStickyNoteManager::~SNStickyNoteManager()
{
    m_themeRenameObservation.cancel();
    // A change told but not yet written is written now.
    if (hasPendingSave())
        save();
    m_saveDebouncer.reset();
    m_compactionDebouncer.reset();
    waitForBackgroundSaves();
}

SNStickyNoteManager &SNStickyNoteManager::sharedManager()
{
    static SNStickyNoteManager manager;
    return manager;
}

QString SNStickyNoteManager::baseDatabasePath() const
{
    return m_baseDatabasePath;
}

QString SNStickyNoteManager::databasePath() const
{
    return m_baseDatabasePath.isEmpty() ? QString() : m_baseDatabasePath + databaseFileName;
}

QString SNStickyNoteManager::journalPath() const
{
    return m_baseDatabasePath.isEmpty() ? QString() : m_baseDatabasePath + journalFileName;
}

QString SNStickyNoteManager::movedAsidePath() const
{
    return m_movedAsidePath;
}

QStringList SNStickyNoteManager::keptAsidePaths() const
{
    return m_keptAside;
}

void SNStickyNoteManager::setSaveFileFactory(SaveFileFactory factory)
{
    std::lock_guard lock(m_writeMutex);
    m_saveFileFactory = std::move(factory);
}

void SNStickyNoteManager::setJournalFileFactory(JournalFileFactory factory)
{
    std::lock_guard lock(m_writeMutex);
    m_journal->setFileFactory(std::move(factory));
}

QList<std::shared_ptr<SNStickyNote>> SNStickyNoteManager::notesArray() const
{
    std::lock_guard lock(m_listMutex);
    // A copy of its own, not one sharing the list's buffer: a caller on a save thread that
    // changes or merely iterates its copy would otherwise copy the elements out of the shared
    // buffer, unlocked, while the interface thread changes the list.
    return QList<std::shared_ptr<SNStickyNote>>(m_notes.notes().cbegin(), m_notes.notes().cend());
}

void SNStickyNoteManager::addNote(const std::shared_ptr<SNStickyNote> &note)
{
    if (!note)
        return;
    bool restored = false;
    {
        std::lock_guard lock(m_listMutex);
        if (!m_notes.contains(note.get())) {
            // Two notes never share an id: the newcomer takes a new one.
            if (note->uuid().isNull() || m_notes.containsId(note->uuid()))
                note->setUuid(QUuid::createUuid());
            m_notes.append(note);
            restored = m_recentlyDeleted.take(note->uuid()).has_value();
        }
    }
    if (restored) {
        note->didRestore();
        note->markTextEdited();
    }
    queueChange({ note, false, QDateTime() });
    scheduleSave();
}

void SNStickyNoteManager::removeNote(const std::shared_ptr<SNStickyNote> &note)
{
    if (!note)
        return;
    note->willDelete();
    const QDateTime now = QWClock::currentDateTime();
    {
        std::lock_guard lock(m_listMutex);
        if (m_notes.remove(note) && note->hasContent())
            m_recentlyDeleted.add(SNJournalRecord::deleting(note, now));
    }
    queueChange({ note, true, now });
    scheduleSave();
    note->didDelete();
}

void SNStickyNoteManager::noteDidChange(const std::shared_ptr<SNStickyNote> &note)
{
    if (!note)
        return;
    queueChange({ note, false, QDateTime() });
    scheduleSave();
}

void SNStickyNoteManager::queueChange(const Change &change)
{
    std::lock_guard lock(m_listMutex);
    m_changes.add(change);
}

void SNStickyNoteManager::scheduleSave()
{
    // A thread without an event loop has nobody to run the save later: it saves itself.
    if (QThread::currentThread() != m_ownerThread || !QAbstractEventDispatcher::instance())
        return;
    if (!m_saveDebouncer) {
        m_saveDebouncer = std::make_unique<QWDebouncer>(0.0, [this] { saveInBackground(); });
        m_compactionDebouncer = std::make_unique<QWDebouncer>(
            idleSecondsBeforeCompaction, [this] { m_workers.run([this] { compact(); }); });
    }
    m_saveDebouncer->restart();
    m_compactionDebouncer->restart();
}

QList<SNStickyNoteManager::Change> SNStickyNoteManager::takeChanges()
{
    std::lock_guard lock(m_listMutex);
    return m_changes.take();
}

void SNStickyNoteManager::putBackChanges(const QList<Change> &changes)
{
    std::lock_guard lock(m_listMutex);
    m_changes.putBack(changes);
}

bool SNStickyNoteManager::hasPendingSave() const
{
    return m_saveDebouncer && m_saveDebouncer->isPending();
}

// MARK: - Loading

void SNStickyNoteManager::loadDatabase()
{
    const QString base = m_baseDatabasePath;
    SNStoreLoader::Result loaded = SNStoreLoader::load({ base, databasePath(), journalPath(),
        base.isEmpty() ? QString() : base + recentlyDeletedFileName, defaultDatabaseResource });
    m_clock->observe(loaded.newestStamp);
    {
        std::lock_guard lock(m_writeMutex);
        m_writeRefused = loaded.archiveMustNotBeReplaced;
        m_archiveIsBehind = loaded.archiveIsBehind;
        m_keptAside = loaded.keptAside;
        m_movedAsidePath = loaded.archiveMovedAside;
        m_archiveSize = QFileInfo(databasePath()).size();
    }
    std::lock_guard lock(m_listMutex);
    m_notes = SNNoteList(loaded.notes);
    m_changes.clear();
    m_recentlyDeleted = loaded.recentlyDeleted;
}

// MARK: - Saving

bool SNStickyNoteManager::save()
{
    // This save takes every change told so far.
    if (m_saveDebouncer && QThread::currentThread() == m_ownerThread)
        m_saveDebouncer->cancel();
    std::lock_guard lock(m_writeMutex);
    QList<Change> changes = takeChanges();
    if (changes.isEmpty())
        return true;
    if (appendLocked(changes)) {
        m_archiveIsBehind = true;
        if (journalWantsCompaction())
            compactLocked(false);
        return true;
    }
    // The journal cannot take them; the whole archive still may.
    putBackChanges(changes);
    return compactLocked(false);
}

QList<QByteArray> SNStickyNoteManager::recordsOfChanges(
    const QList<Change> &changes, QList<QByteArray> *ownRecords)
{
    QSet<const SNStickyNote *> listed;
    {
        std::lock_guard lock(m_listMutex);
        for (const Change &change : changes) {
            if (m_notes.contains(change.note.get()))
                listed.insert(change.note.get());
        }
    }
    QSet<const SNStickyNote *> stamped;
    QList<QByteArray> records;
    for (const Change &change : changes) {
        // A note deleted since it changed is saved by its deletion alone.
        if (!change.isDeletion && !listed.contains(change.note.get()))
            continue;
        const bool keepsVersion = change.isMerged || change.isMadeByMerge;
        if (!keepsVersion && !stamped.contains(change.note.get())) {
            change.note->stampChange(*m_clock);
            stamped.insert(change.note.get());
        }
        const SNJournalRecord record = change.isDeletion
            ? SNJournalRecord::deleting(change.note, change.date)
            : SNJournalRecord::saving(change.note);
        records.append(record.archivedData());
        if (!change.isMerged && ownRecords)
            ownRecords->append(records.last());
    }
    return records;
}

bool SNStickyNoteManager::appendLocked(const QList<Change> &changes)
{
    QList<QByteArray> own;
    const QList<QByteArray> records = recordsOfChanges(changes, &own);
    QString error;
    if (m_journal->append(records, &error)) {
        if (m_ownRecordsHandler && !own.isEmpty())
            m_ownRecordsHandler(own);
        return true;
    }
    qWarning(
        "[DEBUG] Could not append to %s: %s", qUtf8Printable(journalPath()), qUtf8Printable(error));
    return false;
}

bool SNStickyNoteManager::journalWantsCompaction() const
{
    const qint64 journal = m_journal->size();
    return journal > smallestJournalToCompact && journal > m_archiveSize / 4;
}

bool SNStickyNoteManager::compact()
{
    std::lock_guard lock(m_writeMutex);
    return compactLocked(false);
}

bool SNStickyNoteManager::compactLocked(bool evenWhenCurrent)
{
    if (m_writeRefused || databasePath().isEmpty())
        return false;
    SNRecentlyDeleted deleted;
    bool dropped;
    {
        std::lock_guard listLock(m_listMutex);
        const qsizetype before = m_recentlyDeleted.records().size();
        m_recentlyDeleted.dropExpired(QWClock::currentDateTime());
        dropped = m_recentlyDeleted.records().size() < before;
        deleted = m_recentlyDeleted;
    }
    QList<Change> changes = takeChanges();
    if (changes.isEmpty() && !m_archiveIsBehind && !dropped && !evenWhenCurrent)
        return true;
    QList<QByteArray> own;
    recordsOfChanges(changes, &own);
    const QByteArray archive = archiveOfNotes();
    QDir().mkpath(m_baseDatabasePath);
    QString error;
    if (!replaceFile(databasePath(), archive, &error)) {
        qWarning("[DEBUG] Could not write %s: %s", qUtf8Printable(databasePath()),
            qUtf8Printable(error));
        putBackChanges(changes);
        return false;
    }
    QWFileSync::syncFolderOf(databasePath());
    m_archiveSize = archive.size();
    m_archiveIsBehind = false;
    if (m_ownRecordsHandler && !own.isEmpty())
        m_ownRecordsHandler(own);

    // The first compaction of a day keeps a copy of the day.
    const QDate today = QWClock::currentDateTime().date();
    if (!m_backups.hasBackupOf(today) && !m_backups.addBackup(archive, today, &error))
        qWarning("[DEBUG] Could not make the backup of today: %s", qUtf8Printable(error));

    const QString deletedPath = m_baseDatabasePath + recentlyDeletedFileName;
    if ((!deleted.isEmpty() || QFileInfo::exists(deletedPath))
        && !replaceFile(deletedPath, deleted.archivedData(), &error)) {
        // The journal still holds the deletions: it stays.
        qWarning(
            "[DEBUG] Could not write %s: %s", qUtf8Printable(deletedPath), qUtf8Printable(error));
        return true;
    }
    if (m_journal->size() > 0 && !m_journal->reset(&error)) {
        // Replaying the old journal over the new archive gives the same notes again.
        qWarning("[DEBUG] Could not start a new journal: %s", qUtf8Printable(error));
    }
    return true;
}

QByteArray SNStickyNoteManager::archiveOfNotes() const
{
    QList<std::shared_ptr<SNStickyNote>> notes = notesArray();
    // Notes never typed into stay in their windows but do not survive a restart.
    notes.removeIf([](const std::shared_ptr<SNStickyNote> &note) { return !note->hasContent(); });
    return QWKeyedArchiver::archivedDataWithRootObject(notes);
}

bool SNStickyNoteManager::replaceFile(const QString &path, const QByteArray &data, QString *error)
{
    std::unique_ptr<QSaveFile> file
        = m_saveFileFactory ? m_saveFileFactory(path) : std::make_unique<QSaveFile>(path);
    return file && QWFileReplacer::replace(*file, data, error);
}

void SNStickyNoteManager::saveInBackground()
{
    m_workers.run([this] { save(); });
}

void SNStickyNoteManager::waitForBackgroundSaves()
{
    m_workers.waitForAll();
}

// MARK: - History

QList<SNDeletedNote> SNStickyNoteManager::recentlyDeletedNotes() const
{
    std::lock_guard lock(m_listMutex);
    return m_recentlyDeleted.keptNotes(QWClock::currentDateTime());
}

std::shared_ptr<SNStickyNote> SNStickyNoteManager::restoreDeletedNote(const QUuid &uuid)
{
    std::shared_ptr<SNStickyNote> note;
    {
        std::lock_guard lock(m_listMutex);
        // Past its 30 days a note is gone, even before a compaction drops it from the file.
        const std::optional<SNJournalRecord> record
            = m_recentlyDeleted.takeKept(uuid, QWClock::currentDateTime());
        if (!record)
            return nullptr;
        note = record->note;
        m_notes.append(note);
    }
    note->didRestore();
    note->markTextEdited();
    queueChange({ note, false, QDateTime() });
    scheduleSave();
    return note;
}

QList<SNBackup> SNStickyNoteManager::backups() const
{
    return m_backups.backups();
}

bool SNStickyNoteManager::backUpNow(QString *error)
{
    std::lock_guard lock(m_writeMutex);
    if (!compactLocked(true)) {
        if (error)
            *error = QStringLiteral("the notes could not be written");
        return false;
    }
    QFile archive(databasePath());
    if (!archive.open(QIODevice::ReadOnly)) {
        if (error)
            *error = archive.errorString();
        return false;
    }
    return m_backups.addBackup(archive.readAll(), QWClock::currentDateTime().date(), error);
}

QList<std::shared_ptr<SNStickyNote>> SNStickyNoteManager::restoreBackup(
    const QString &path, QString *error)
{
    QList<std::shared_ptr<SNStickyNote>> notes = SNBackupShelf::notesInArchive(path, error);
    SNNoteIdentity::giveIdsToNotesWithout(notes);
    QList<std::shared_ptr<SNStickyNote>> added;
    for (const std::shared_ptr<SNStickyNote> &note : std::as_const(notes)) {
        bool present;
        {
            std::lock_guard lock(m_listMutex);
            present = m_notes.containsId(note->uuid());
        }
        if (present) {
            note->didDelete(); // only this copy is let go
            continue;
        }
        addNote(note);
        added.append(note);
    }
    return added;
}

bool SNStickyNoteManager::exportDatabaseToPath(const QString &path)
{
    // Under the lock of saves, so that the copy holds every note saved. A file already at the
    // path is one the user chose to replace; a failure leaves it as it was.
    std::lock_guard lock(m_writeMutex);
    QString error;
    if (replaceFile(path, archiveOfNotes(), &error))
        return true;
    qWarning("[DEBUG] Could not save because of error: %s", qUtf8Printable(error));
    return false;
}

// MARK: - Merging

void SNStickyNoteManager::setOwnRecordsHandler(OwnRecordsHandler handler)
{
    std::lock_guard lock(m_writeMutex);
    m_ownRecordsHandler = std::move(handler);
}

QList<QByteArray> SNStickyNoteManager::recordsOfEveryNote() const
{
    QList<QByteArray> records;
    std::lock_guard lock(m_listMutex);
    for (const std::shared_ptr<SNStickyNote> &note : m_notes.notes()) {
        if (note->hasContent())
            records.append(SNJournalRecord::saving(note).archivedData());
    }
    for (const SNJournalRecord &record : m_recentlyDeleted.records())
        records.append(record.archivedData());
    return records;
}

void SNStickyNoteManager::observeStamp(const SNNoteStamp &stamp)
{
    m_clock->observe(stamp);
}

QString SNStickyNoteManager::device() const
{
    return m_clock->device();
}

void SNStickyNoteManager::setDevice(const QString &device)
{
    std::lock_guard lock(m_writeMutex);
    auto clock = std::make_unique<SNHybridClock>(device);
    clock->observe(m_clock->now());
    m_clock = std::move(clock);
}

void SNStickyNoteManager::addMergedNote(const std::shared_ptr<SNStickyNote> &note)
{
    addAbsentNote({ note, false, QDateTime(), true });
}

void SNStickyNoteManager::addNoteMadeByMerge(const std::shared_ptr<SNStickyNote> &note)
{
    addAbsentNote({ note, false, QDateTime(), false, true });
}

void SNStickyNoteManager::addAbsentNote(const Change &change)
{
    {
        std::lock_guard lock(m_listMutex);
        if (m_notes.containsId(change.note->uuid()))
            return;
        m_notes.append(change.note);
    }
    queueChange(change);
    scheduleSave();
}

void SNStickyNoteManager::mergedNoteDidChange(const std::shared_ptr<SNStickyNote> &note)
{
    queueChange({ note, false, QDateTime(), true });
    scheduleSave();
}

void SNStickyNoteManager::removeMergedNote(const std::shared_ptr<SNStickyNote> &note)
{
    const QDateTime now = QWClock::currentDateTime();
    {
        std::lock_guard lock(m_listMutex);
        if (!m_notes.remove(note))
            return;
        if (note->hasContent())
            m_recentlyDeleted.add(SNJournalRecord::deleting(note, now));
    }
    queueChange({ note, true, now, true });
    scheduleSave();
    note->didDelete();
}

std::shared_ptr<SNStickyNote> SNStickyNoteManager::deletedNote(const QUuid &uuid) const
{
    std::lock_guard lock(m_listMutex);
    return m_recentlyDeleted.noteOf(uuid);
}

void SNStickyNoteManager::keepMergedDeletedNote(const std::shared_ptr<SNStickyNote> &note)
{
    const QDateTime now = QWClock::currentDateTime();
    note->didDelete();
    if (!note->hasContent())
        return;
    {
        std::lock_guard lock(m_listMutex);
        m_recentlyDeleted.add(SNJournalRecord::deleting(note, now));
    }
    queueChange({ note, true, now, true });
    scheduleSave();
}

void SNStickyNoteManager::reviveMergedNote(const std::shared_ptr<SNStickyNote> &note)
{
    {
        std::lock_guard lock(m_listMutex);
        m_recentlyDeleted.take(note->uuid());
        if (!m_notes.containsId(note->uuid()))
            m_notes.append(note);
    }
    note->didRestore();
    queueChange({ note, false, QDateTime(), true });
    scheduleSave();
}
