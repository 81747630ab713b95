#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>

// The files of notes shared through a folder that a sync tool (Syncthing, Nextcloud) keeps in
// step between computers: "<folder>/Vellumo/devices/<device id>/", one folder per computer,
// each written by its own computer only, so that the tool never sees two writers of a file.
// A computer's folder holds a small description of it and its journal of records.
//
// What the tools leave behind is taken in stride: half-arrived files under temporary names are
// not read, conflict copies are read as more records of their computer, a file with a damaged
// record is read up to the damage and read again once it changes, and a folder that is missing
// or empty is simply nothing new. It knows files only; merging is the record merger's business.
class SNSyncFolder final
{
public:
    static const QString applicationFolderName; // "Vellumo"
    static const QString devicesFolderName; // "devices"
    static const QString deviceFileName; // "device.ini"

    struct Device
    {
        QString id;
        QString name; // as that computer calls itself; its id when it said nothing
        QDateTime lastWrite; // of its newest file
    };

    struct Reading
    {
        QList<QByteArray> records; // in the order of the files and within them
        QStringList waiting; // files read only up to damage, until they change
    };

    SNSyncFolder(const QString &folder, const QString &device);
    SNSyncFolder(const SNSyncFolder &) = delete;
    SNSyncFolder &operator=(const SNSyncFolder &) = delete;

    QString folder() const { return m_folder; }
    QString device() const { return m_device; }
    QString devicesPath() const;
    QString ownPath() const;
    // Whether the chosen folder is there at all: an unmounted disk is not an empty folder.
    bool isReachable() const;
    static bool isTemporaryName(const QString &fileName);

    // Every computer that wrote a description or records, this one included, by name.
    QList<Device> devices() const;

    // This computer's description: its name and the machine that writes as it. Creates the
    // own folder, but never the chosen folder itself.
    bool writeDescription(const QString &name, const QString &machine, QString *error = nullptr);
    // The machine the own folder's description names; empty when there is none.
    QString describedMachine() const;

    bool hasOwnJournal() const;
    qint64 ownJournalSize() const;
    // Thread-safe: the store's saves append from their own thread.
    bool appendOwn(const QList<QByteArray> &records, QString *error = nullptr);
    // A new journal takes the old one's place, under a new name, so that a reader elsewhere
    // reads it from its start. It holds what the rewrite makes of the old one's records; no
    // append comes in between.
    using Rewrite = std::function<QList<QByteArray>(const QList<QByteArray> &records)>;
    bool rewriteOwnJournal(const Rewrite &rewrite, QString *error = nullptr);

    // The records that arrived since the last reading, from every computer's folder.
    Reading readNewRecords();
    // The next reading starts again at the beginning of every file.
    void forgetReading();

private:
    struct FileState
    {
        qint64 offset = 0; // where the next record begins
        qint64 size = -1;
        QDateTime modified;
        bool isWaiting = false; // damaged at offset: read again once the file changes
    };

    QString ownJournalPathLocked() const;
    static QStringList journalFilesIn(const QString &folder);

    const QString m_folder;
    const QString m_device;
    mutable std::mutex m_ownMutex;
    QHash<QString, FileState> m_files;
};
