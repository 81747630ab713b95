#include "notes/SNJournal.h"

#include "kit/QWCrc32c.h"
#include "kit/QWFileSync.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

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

SNJournal::Contents SNJournal::read(const QString &path)
{
    Contents contents;
    QFile file(path);
    if (!file.exists())
        return contents;
    if (!file.open(QIODevice::ReadOnly)) {
        contents.error = file.errorString();
        return contents;
    }
    const QByteArray bytes = file.readAll();
    if (bytes.isEmpty())
        return contents; // created, then cut off before its header
    if (!bytes.startsWith(header)) {
        contents.error = QStringLiteral("not a journal: the header is missing");
        return contents;
    }
    qint64 position = header.size();
    contents.validLength = position;
    while (position < bytes.size()) {
        if (bytes.size() - position < frameSize) {
            contents.error = QStringLiteral("a record is cut off at byte %1").arg(position);
            break;
        }
        const quint32 length = qFromLittleEndian<quint32>(bytes.constData() + position);
        const quint32 checksum = qFromLittleEndian<quint32>(bytes.constData() + position + 4);
        if (qint64(length) > maximumRecordSize
            || qint64(length) > bytes.size() - position - frameSize) {
            contents.error = QStringLiteral("a record is cut off at byte %1").arg(position);
            break;
        }
        const QByteArray record = bytes.mid(position + frameSize, length);
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
    if (!file.open(QIODevice::WriteOnly) || file.write(header) != header.size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return fail(error, reason);
    }
    if (!file.commit())
        return fail(error, file.errorString());
    QWFileSync::syncFolderOf(m_path);
    return true;
}
