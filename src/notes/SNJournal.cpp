#include "notes/SNJournal.h"

#include "kit/QWCrc32c.h"
#include "kit/QWFileReplacer.h"
#include "kit/QWFileSync.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>

const QByteArray SNJournal::header = QByteArrayLiteral("Vellumo journal 1\n");

namespace {

constexpr qint64 frameSize = 8; // length and checksum

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

SNJournal::SNJournal(const QString &path) : m_path(path) { }

void SNJournal::setFileFactory(FileFactory factory)
{
    m_fileFactory = std::move(factory);
}

std::unique_ptr<QFile> SNJournal::openFile() const
{
    return m_fileFactory ? m_fileFactory(m_path) : std::make_unique<QFile>(m_path);
}

QByteArray SNJournal::frame(const QByteArray &record)
{
    QByteArray framed(frameSize, Qt::Uninitialized);
    qToLittleEndian(quint32(record.size()), framed.data());
    qToLittleEndian(QWCrc32c::checksum(record), framed.data() + 4);
    return framed + record;
}

SNJournal::Contents SNJournal::read(const QString &path, qint64 from)
{
    Contents contents;
    QFile file(path);
    if (!file.exists())
        return contents;
    if (!file.open(QIODevice::ReadOnly)) {
        contents.error = file.errorString();
        return contents;
    }
    const QByteArray start = file.read(header.size());
    if (start.isEmpty())
        return contents; // created, then cut off before its header
    if (start != header) {
        contents.error = QStringLiteral("not a journal: the header is missing");
        return contents;
    }
    from = std::max(from, qint64(header.size()));
    if (!file.seek(from)) {
        contents.error = file.errorString();
        return contents;
    }
    const QByteArray bytes = file.readAll();
    // Positions count from the file's start; the bytes read begin `from` bytes into it.
    const qint64 end = from + bytes.size();
    const auto at
        = [&bytes, from](qint64 position) { return bytes.constData() + (position - from); };
    qint64 position = from;
    contents.validLength = position;
    while (position < end) {
        if (end - position < frameSize) {
            contents.error = QStringLiteral("a record is cut off at byte %1").arg(position);
            break;
        }
        const quint32 length = qFromLittleEndian<quint32>(at(position));
        const quint32 checksum = qFromLittleEndian<quint32>(at(position) + 4);
        if (qint64(length) > maximumRecordSize || qint64(length) > end - position - frameSize) {
            contents.error = QStringLiteral("a record is cut off at byte %1").arg(position);
            break;
        }
        const QByteArray record = bytes.mid(position - from + frameSize, length);
        if (QWCrc32c::checksum(record) != checksum) {
            contents.error = QStringLiteral("the record at byte %1 is damaged").arg(position);
            break;
        }
        contents.records.append(record);
        position += frameSize + length;
        contents.validLength = position;
    }
    return contents;
}

qint64 SNJournal::size() const
{
    return QFileInfo(m_path).size();
}

bool SNJournal::append(const QList<QByteArray> &records, QString *error)
{
    if (records.isEmpty())
        return true;
    const qint64 before = size();
    QByteArray bytes = before == 0 ? header : QByteArray();
    for (const QByteArray &record : records)
        bytes += frame(record);

    const std::unique_ptr<QFile> file = openFile();
    if (!file || !file->open(QIODevice::WriteOnly | QIODevice::Append))
        return fail(error, file ? file->errorString() : QStringLiteral("no file"));
    if (file->write(bytes) == bytes.size() && QWFileSync::syncData(*file)) {
        file->close();
        // A journal just made is a new entry of the folder.
        if (before == 0)
            QWFileSync::syncFolderOf(m_path);
        return true;
    }
    const QString reason = file->errorString();
    file->close();
    // Whatever part reached the file is cut away again.
    QFile cut(m_path);
    if (before == 0)
        cut.remove();
    else
        cut.resize(before);
    return fail(error, reason);
}

bool SNJournal::truncate(qint64 length, QString *error)
{
    QFile file(m_path);
    if (!file.resize(length))
        return fail(error, file.errorString());
    if (!file.open(QIODevice::ReadWrite) || !QWFileSync::syncData(file))
        return fail(error, file.errorString());
    return true;
}

bool SNJournal::reset(QString *error)
{
    QSaveFile file(m_path);
    if (!QWFileReplacer::replace(file, header, error))
        return false;
    QWFileSync::syncFolderOf(m_path);
    return true;
}
