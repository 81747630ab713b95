#include "notes/SNStickyNoteManager.h"

#include "kit/QWClock.h"
#include "kit/QWDebouncer.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNStickyNote.h"

#include <QAbstractEventDispatcher>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>

const QString SNStickyNoteManager::databaseFileName = QStringLiteral("stickies.db");
const QString SNStickyNoteManager::defaultDatabaseResource
    = QStringLiteral(":/Vellumo/stickies.default.db");

namespace {

QString standardBaseDatabasePath()
{
    const QString dataHome = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return dataHome.isEmpty() ? QString() : dataHome + QStringLiteral("/Vellumo/");
}

QString withTrailingSlash(const QString &path)
{
    return path.isEmpty() || path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

} // namespace

SNStickyNoteManager::SNStickyNoteManager() : SNStickyNoteManager(standardBaseDatabasePath()) { }

SNStickyNoteManager::SNStickyNoteManager(const QString &baseDatabasePath)
    : m_baseDatabasePath(withTrailingSlash(baseDatabasePath)),
      m_ownerThread(QThread::currentThread())
{
    loadDatabase();
    // A renamed theme renames it in the notes that wear it (each note sees to its own name).
    m_themeRenameObservation = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
        SNStickyNote::themeNameDidChangeNotification, nullptr,
        [this](const QWNotification &) { scheduleSave(); });
}

SNStickyNoteManager::~SNStickyNoteManager()
{
    m_themeRenameObservation.cancel();
    // A change told but not yet written is written now.
    if (hasPendingSave())
        save();
    m_saveDebouncer.reset();
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

QString SNStickyNoteManager::movedAsidePath() const
{
    return m_movedAsidePath;
}

void SNStickyNoteManager::setSaveFileFactory(SaveFileFactory factory)
{
    std::lock_guard lock(m_writeMutex);
    m_saveFileFactory = std::move(factory);
}

QList<std::shared_ptr<SNStickyNote>> SNStickyNoteManager::notesArray() const
{
    std::lock_guard lock(m_listMutex);
    return m_actualNotesArray;
}

void SNStickyNoteManager::addNote(const std::shared_ptr<SNStickyNote> &note)
{
    if (!note)
        return;
    {
        std::lock_guard lock(m_listMutex);
        m_actualNotesArray.append(note);
    }
    scheduleSave();
}

void SNStickyNoteManager::removeNote(const std::shared_ptr<SNStickyNote> &note)
{
    if (!note)
        return;
    note->willDelete();
    {
        std::lock_guard lock(m_listMutex);
        m_actualNotesArray.removeAll(note);
    }
    scheduleSave();
    note->didDelete();
}

void SNStickyNoteManager::noteDidChange(const std::shared_ptr<SNStickyNote> &note)
{
    if (note)
        scheduleSave();
}

void SNStickyNoteManager::scheduleSave()
{
    // A thread without an event loop has nobody to run the save later: it saves itself.
    if (QThread::currentThread() != m_ownerThread || !QAbstractEventDispatcher::instance())
        return;
    if (!m_saveDebouncer)
        m_saveDebouncer = std::make_unique<QWDebouncer>(0.0, [this] { saveInBackground(); });
    m_saveDebouncer->restart();
}

bool SNStickyNoteManager::hasPendingSave() const
{
    return m_saveDebouncer && m_saveDebouncer->isPending();
}

void SNStickyNoteManager::removeUnfinishedSaves() const
{
    // A save writes a temporary file beside the archive ("stickies.db.AbC123") and renames it
    // into place; one killed in between leaves the temporary file. Only one Vellumo runs, so at
    // load no save of this program is under way.
    const QFileInfo archive(databasePath());
    const QRegularExpression unfinished(QStringLiteral("^%1\\.[A-Za-z0-9]{6}$")
                                            .arg(QRegularExpression::escape(archive.fileName())));
    QDir folder = archive.dir();
    const QStringList names
        = folder.entryList({ archive.fileName() + QStringLiteral(".??????") }, QDir::Files);
    for (const QString &name : names) {
        if (unfinished.match(name).hasMatch())
            folder.remove(name);
    }
}

void SNStickyNoteManager::loadDatabase()
{
    {
        std::lock_guard lock(m_listMutex);
        m_actualNotesArray.clear();
    }
    const QString path = databasePath();
    if (path.isEmpty())
        return;
    removeUnfinishedSaves();
    if (!QFileInfo::exists(path)) {
        QDir().mkpath(m_baseDatabasePath);
        if (QFile::copy(defaultDatabaseResource, path)) {
            // Files copied out of the resources are read-only.
            QFile::setPermissions(
                path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
        }
    }

    QFile file(path);
    if (!file.exists())
        return;
    QString error;
    QWKeyedUnarchiver::ParseResult result;
    if (file.open(QIODevice::ReadOnly)) {
        result = QWKeyedUnarchiver::parse(file.readAll());
        error = result.error;
        file.close();
    } else {
        error = file.errorString();
    }

    const QList<std::shared_ptr<SNStickyNote>> notes
        = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNStickyNote>>(
            result.root);
    if (!error.isEmpty()) {
        // The user's only copy: move it aside before anything can write over it.
        const QString stamped = path + QStringLiteral(".damaged-")
            + QWClock::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
        // Never onto an earlier damaged copy from the same second.
        QString aside = stamped;
        for (int copy = 2; QFileInfo::exists(aside); ++copy)
            aside = stamped + QStringLiteral("-%1").arg(copy);
        if (QFile::rename(path, aside)) {
            m_movedAsidePath = aside;
            qWarning("[DEBUG] Could not read %s (%s); moved it to %s and kept the %lld notes it "
                     "still held",
                qUtf8Printable(path), qUtf8Printable(error), qUtf8Printable(aside),
                qlonglong(notes.size()));
        } else {
            std::lock_guard lock(m_writeMutex);
            m_writeRefused = true;
            qWarning("[DEBUG] Could not read %s (%s) nor move it aside; it will not be overwritten",
                qUtf8Printable(path), qUtf8Printable(error));
        }
    }
    std::lock_guard lock(m_listMutex);
    m_actualNotesArray = notes;
}

bool SNStickyNoteManager::save()
{
    // This snapshot holds every change scheduled so far.
    if (m_saveDebouncer && QThread::currentThread() == m_ownerThread)
        m_saveDebouncer->cancel();
    QByteArray archive;
    quint64 generation;
    {
        std::lock_guard lock(m_snapshotMutex);
        generation = ++m_lastGeneration;
        QList<std::shared_ptr<SNStickyNote>> notes = notesArray();
        // Notes never typed into stay in their windows but do not survive a restart.
        notes.removeIf(
            [](const std::shared_ptr<SNStickyNote> &note) { return !note->hasContent(); });
        archive = QWKeyedArchiver::archivedDataWithRootObject(notes);
    }
    return writeArchive(archive, generation);
}

bool SNStickyNoteManager::writeArchive(const QByteArray &archive, quint64 generation)
{
    std::lock_guard lock(m_writeMutex);
    if (generation <= m_writtenGeneration || m_writeRefused)
        return false;
    const QString path = databasePath();
    if (path.isEmpty())
        return false;
    QDir().mkpath(m_baseDatabasePath);
    if (!replaceFile(path, archive))
        return false;
    m_writtenGeneration = generation;
    return true;
}

bool SNStickyNoteManager::replaceFile(const QString &path, const QByteArray &data, QString *error)
{
    std::unique_ptr<QSaveFile> file
        = m_saveFileFactory ? m_saveFileFactory(path) : std::make_unique<QSaveFile>(path);
    if (!file)
        return false;
    const auto failed = [&file, error] {
        if (error)
            *error = file->errorString();
        return false;
    };
    if (!file->open(QIODevice::WriteOnly))
        return failed();
    if (file->write(data) != data.size()) {
        failed();
        // A full disk or a failing device: keep the old file as it is, and no temporary one.
        file->cancelWriting();
        file->commit();
        return false;
    }
    return file->commit() || failed();
}

void SNStickyNoteManager::saveInBackground()
{
    reapFinishedWorkers();
    auto finished = std::make_shared<std::atomic<bool>>(false);
    std::lock_guard lock(m_workersMutex);
    m_workers.push_back(Worker { std::thread([this, finished] {
                                    save();
                                    finished->store(true);
                                }),
        finished });
}

void SNStickyNoteManager::reapFinishedWorkers()
{
    std::vector<Worker> done;
    {
        std::lock_guard lock(m_workersMutex);
        auto split = std::partition(m_workers.begin(), m_workers.end(),
            [](const Worker &worker) { return !worker.finished->load(); });
        std::move(split, m_workers.end(), std::back_inserter(done));
        m_workers.erase(split, m_workers.end());
    }
    for (Worker &worker : done)
        worker.thread.join();
}

void SNStickyNoteManager::waitForBackgroundSaves()
{
    std::vector<Worker> running;
    {
        std::lock_guard lock(m_workersMutex);
        running.swap(m_workers);
    }
    for (Worker &worker : running)
        worker.thread.join();
}

bool SNStickyNoteManager::exportDatabaseToPath(const QString &path)
{
    // Under the lock of saves, so that the copy is the newest file written. A file already at
    // the path is one the user chose to replace; a failure leaves it as it was.
    std::lock_guard lock(m_writeMutex);
    QFile source(databasePath());
    QString error;
    if (source.open(QIODevice::ReadOnly)) {
        const QByteArray archive = source.readAll();
        if (source.error() != QFileDevice::NoError)
            error = source.errorString();
        else if (replaceFile(path, archive, &error))
            return true;
    } else {
        error = source.errorString();
    }
    qWarning("[DEBUG] Could not save because of error: %s", qUtf8Printable(error));
    return false;
}
