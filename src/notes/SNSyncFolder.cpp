#include "notes/SNSyncFolder.h"

#include "kit/QWFileReplacer.h"
#include "notes/SNJournal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSettings>

const QString SNSyncFolder::applicationFolderName = QStringLiteral("Vellumo");
const QString SNSyncFolder::devicesFolderName = QStringLiteral("devices");
const QString SNSyncFolder::deviceFileName = QStringLiteral("device.ini");

namespace {

const QString nameKey = QStringLiteral("name");
const QString machineKey = QStringLiteral("machine");
// "stickies-<generation>.journal": a replaced journal gets the next generation.
const QRegularExpression &ownJournalName()
{
    static const QRegularExpression name(QStringLiteral("^stickies-(\\d{1,9})\\.journal$"));
    return name;
}

qint64 generationOf(const QString &fileName)
{
    const QRegularExpressionMatch match = ownJournalName().match(fileName);
    return match.hasMatch() ? match.captured(1).toLongLong() : -1;
}

} // namespace

SNSyncFolder::SNSyncFolder(const QString &folder, const QString &device)
    : m_folder(QDir::cleanPath(folder)), m_device(device)
{ }

QString SNSyncFolder::devicesPath() const
{
    return m_folder + QLatin1Char('/') + applicationFolderName + QLatin1Char('/')
        + devicesFolderName;
}

QString SNSyncFolder::ownPath() const
{
    return devicesPath() + QLatin1Char('/') + m_device;
}

bool SNSyncFolder::isReachable() const
{
    return !m_folder.isEmpty() && QFileInfo(m_folder).isDir();
}

bool SNSyncFolder::isTemporaryName(const QString &fileName)
{
    // Syncthing's ".syncthing.*.tmp", Office-style "~*" and ".~*", browsers' and Nextcloud's
    // "*.part", and hidden files in general: none is a whole file yet.
    return fileName.startsWith(QLatin1Char('.')) || fileName.startsWith(QLatin1Char('~'))
        || fileName.endsWith(QStringLiteral(".part")) || fileName.endsWith(QStringLiteral(".tmp"));
}

QStringList SNSyncFolder::journalFilesIn(const QString &folder)
{
    QStringList files;
    const QFileInfoList entries
        = QDir(folder).entryInfoList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        // Conflict copies ("*.sync-conflict-*", "* (conflicted copy *)") are journals too.
        if (name == deviceFileName || isTemporaryName(name)
            || !name.contains(QStringLiteral(".journal")))
            continue;
        files.append(entry.filePath());
    }
    return files;
}

QList<SNSyncFolder::Device> SNSyncFolder::devices() const
{
    QList<Device> devices;
    const QFileInfoList folders
        = QDir(devicesPath()).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &folder : folders) {
        if (isTemporaryName(folder.fileName()))
            continue;
        Device device { folder.fileName(), folder.fileName(), QDateTime() };
        const QString description = folder.filePath() + QLatin1Char('/') + deviceFileName;
        if (QFileInfo::exists(description)) {
            const QString name
                = QSettings(description, QSettings::IniFormat).value(nameKey).toString();
            if (!name.trimmed().isEmpty())
                device.name = name.trimmed();
        }
        const QStringList files = journalFilesIn(folder.filePath());
        for (const QString &file : files)
            device.lastWrite = std::max(device.lastWrite, QFileInfo(file).lastModified());
        if (files.isEmpty() && !QFileInfo::exists(description))
            continue;
        devices.append(device);
    }
    std::sort(devices.begin(), devices.end(), [](const Device &a, const Device &b) {
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    return devices;
}

bool SNSyncFolder::writeDescription(const QString &name, const QString &machine, QString *error)
{
    if (!isReachable()) {
        if (error)
            *error = QStringLiteral("the folder %1 is not there").arg(m_folder);
        return false;
    }
    if (!QDir().mkpath(ownPath())) {
        if (error)
            *error = QStringLiteral("could not make the folder %1").arg(ownPath());
        return false;
    }
    QSettings description(ownPath() + QLatin1Char('/') + deviceFileName, QSettings::IniFormat);
    description.setValue(nameKey, name);
    description.setValue(machineKey, machine);
    description.sync();
    if (description.status() != QSettings::NoError) {
        if (error)
            *error = QStringLiteral("could not write %1").arg(description.fileName());
        return false;
    }
    return true;
}

QString SNSyncFolder::describedMachine() const
{
    const QString path = ownPath() + QLatin1Char('/') + deviceFileName;
    if (!QFileInfo::exists(path))
        return QString();
    return QSettings(path, QSettings::IniFormat).value(machineKey).toString();
}

QString SNSyncFolder::ownJournalPathLocked() const
{
    qint64 newest = -1;
    for (const QString &file : QDir(ownPath()).entryList(QDir::Files))
        newest = std::max(newest, generationOf(file));
    return newest < 0 ? QString() : ownPath() + QStringLiteral("/stickies-%1.journal").arg(newest);
}

bool SNSyncFolder::hasOwnJournal() const
{
    std::lock_guard lock(m_ownMutex);
    return !ownJournalPathLocked().isEmpty();
}

qint64 SNSyncFolder::ownJournalSize() const
{
    std::lock_guard lock(m_ownMutex);
    const QString path = ownJournalPathLocked();
    return path.isEmpty() ? 0 : QFileInfo(path).size();
}

bool SNSyncFolder::appendOwn(const QList<QByteArray> &records, QString *error)
{
    std::lock_guard lock(m_ownMutex);
    // A folder that went away (unmounted, emptied) is not made again here: the session writes
    // every note anew once it is back.
    QString path = ownJournalPathLocked();
    if (path.isEmpty() || !isReachable()) {
        if (error)
            *error = QStringLiteral("there is no journal of this computer in %1").arg(m_folder);
        return false;
    }
    return SNJournal(path).append(records, error);
}

bool SNSyncFolder::rewriteOwnJournal(const Rewrite &rewrite, QString *error)
{
    std::lock_guard lock(m_ownMutex);
    if (!isReachable() || !QDir().mkpath(ownPath())) {
        if (error)
            *error = QStringLiteral("the folder %1 is not there").arg(m_folder);
        return false;
    }
    const QString old = ownJournalPathLocked();
    const QList<QByteArray> records
        = rewrite(old.isEmpty() ? QList<QByteArray>() : SNJournal::read(old).records);
    const qint64 generation = old.isEmpty() ? 1 : generationOf(QFileInfo(old).fileName()) + 1;
    const QString path = ownPath() + QStringLiteral("/stickies-%1.journal").arg(generation);
    QSaveFile file(path);
    QByteArray bytes = SNJournal::header;
    for (const QByteArray &record : records)
        bytes += SNJournal::frame(record);
    if (!QWFileReplacer::replace(file, bytes, error))
        return false;
    if (!old.isEmpty())
        QFile::remove(old);
    return true;
}

SNSyncFolder::Reading SNSyncFolder::readNewRecords()
{
    Reading reading;
    QHash<QString, FileState> seen;
    const QFileInfoList folders
        = QDir(devicesPath()).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &folder : folders) {
        if (isTemporaryName(folder.fileName()))
            continue;
        for (const QString &path : journalFilesIn(folder.filePath())) {
            const QFileInfo info(path);
            FileState state = m_files.value(path);
            const bool unchanged
                = state.size == info.size() && state.modified == info.lastModified();
            if (!unchanged) {
                // A file that shrank is not the one read before: it is read again whole, and
                // records read twice merge to the same notes.
                if (info.size() < state.offset)
                    state.offset = 0;
                const SNJournal::Contents contents = SNJournal::read(path, state.offset);
                reading.records += contents.records;
                state.offset = contents.validLength;
                state.isWaiting = !contents.isComplete();
                state.size = info.size();
                state.modified = info.lastModified();
            }
            if (state.isWaiting)
                reading.waiting.append(path);
            seen.insert(path, state);
        }
    }
    // A vanished file is forgotten: should it come back, it is read from its start.
    m_files = seen;
    return reading;
}

void SNSyncFolder::forgetReading()
{
    m_files.clear();
}
