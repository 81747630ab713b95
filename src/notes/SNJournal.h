#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <memory>

class QFile;

// The journal beside the archive: an append-only file of records. Each record is framed by its
// length and a CRC-32C (both little-endian 32-bit) before its bytes, so that a record torn by a
// crash or damaged on the disk is recognised and nothing after it is trusted.
//
// It knows bytes only: what a record means is the note store's business.
class SNJournal final
{
public:
    // The first bytes of every journal, so that a stray file is never read as one.
    static const QByteArray header; // "Vellumo journal 1\n"
    static constexpr qint64 maximumRecordSize = qint64(512) * 1024 * 1024;

    // Where appends write; tests hand in files that fail.
    using FileFactory = std::function<std::unique_ptr<QFile>(const QString &path)>;

    struct Contents
    {
        QList<QByteArray> records; // the whole records before any damage
        qint64 validLength = 0; // bytes of the file that those records (and the header) fill
        QString error; // empty when the whole file was read
        bool isComplete() const { return error.isEmpty(); }
    };

    explicit SNJournal(const QString &path);
    SNJournal(const SNJournal &) = delete;
    SNJournal &operator=(const SNJournal &) = delete;

    QString path() const { return m_path; }
    void setFileFactory(FileFactory factory);

    // A missing file reads as an empty, complete journal. Reading may start at a record
    // boundary past the header, as where a reader stopped before; the valid length then still
    // counts from the start of the file.
    static Contents read(const QString &path, qint64 from = 0);
    static QByteArray frame(const QByteArray &record);

    // Appends the records and waits until they are on the disk. On failure the file is cut
    // back to what it held before, so that one failed append never hides later ones.
    bool append(const QList<QByteArray> &records, QString *error = nullptr);
    // Bytes on the disk; 0 when there is no journal.
    qint64 size() const;
    // Cuts the file to its first bytes, as after a damaged tail was kept aside.
    bool truncate(qint64 length, QString *error = nullptr);
    // An empty journal takes the place of the old one in one rename.
    bool reset(QString *error = nullptr);

private:
    std::unique_ptr<QFile> openFile() const;

    const QString m_path;
    FileFactory m_fileFactory;
};
