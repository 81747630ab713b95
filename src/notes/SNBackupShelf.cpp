#include "notes/SNBackupShelf.h"

#include "kit/QWFileReplacer.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNStickyNote.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <algorithm>

namespace {

const QString dateFormat = QStringLiteral("yyyy-MM-dd");

} // namespace

SNBackupShelf::SNBackupShelf(const QString &folder) : m_folder(folder) { }

QString SNBackupShelf::pathForDate(const QDate &date) const
{
    return QDir(m_folder).filePath(QStringLiteral("stickies-%1.db").arg(date.toString(dateFormat)));
}

bool SNBackupShelf::hasBackupOf(const QDate &date) const
{
    return QFile::exists(pathForDate(date));
}

QList<QDate> SNBackupShelf::dates() const
{
    // Not static: the shared store may still save while statics are being destroyed at exit.
    const QRegularExpression name(QStringLiteral("^stickies-(\\d{4}-\\d{2}-\\d{2})\\.db$"));
    QList<QDate> found;
    for (const QString &file :
        QDir(m_folder).entryList({ QStringLiteral("stickies-*.db") }, QDir::Files)) {
        const QRegularExpressionMatch match = name.match(file);
        if (!match.hasMatch())
            continue;
        if (const QDate date = QDate::fromString(match.captured(1), dateFormat); date.isValid())
            found.append(date);
    }
    std::sort(found.begin(), found.end(), std::greater<>());
    return found;
}

bool SNBackupShelf::addBackup(const QByteArray &archive, const QDate &date, QString *error)
{
    QDir().mkpath(m_folder);
    QSaveFile file(pathForDate(date));
    if (!QWFileReplacer::replace(file, archive, error))
        return false;
    dropOldCopies();
    return true;
}

void SNBackupShelf::dropOldCopies()
{
    const QList<QDate> all = dates();
    QSet<QDate> kept;
    for (qsizetype index = 0; index < all.size() && index < keptDays; ++index)
        kept.insert(all.at(index));
    // Before the daily copies, the newest copy of each week, for a few weeks.
    QSet<int> weeks;
    for (qsizetype index = keptDays; index < all.size() && weeks.size() < keptWeeks; ++index) {
        int year = 0;
        const int week = all.at(index).weekNumber(&year);
        if (!weeks.contains(year * 100 + week)) {
            weeks.insert(year * 100 + week);
            kept.insert(all.at(index));
        }
    }
    for (const QDate &date : all) {
        if (!kept.contains(date))
            QFile::remove(pathForDate(date));
    }
}

QList<SNBackup> SNBackupShelf::backups() const
{
    QList<SNBackup> shelf;
    for (const QDate &date : dates())
        shelf.append({ pathForDate(date), date, noteCountOfArchive(pathForDate(date)) });
    return shelf;
}

qsizetype SNBackupShelf::noteCountOfArchive(const QString &path)
{
    // Counted without making notes of them: a note made joins the tag index.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(file.readAll());
    const QWArchiveValue::Array &notes = result.root.toArray();
    if (notes.empty() && !result.isComplete())
        return -1;
    return std::count_if(notes.cbegin(), notes.cend(), [](const QWArchiveValue &note) {
        return note.isObject() && note.className() == SNStickyNote::className();
    });
}

QList<std::shared_ptr<SNStickyNote>> SNBackupShelf::notesInArchive(
    const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return {};
    }
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(file.readAll());
    if (error)
        *error = result.error;
    QList<std::shared_ptr<SNStickyNote>> notes
        = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNStickyNote>>(
            result.root);
    notes.removeIf([](const std::shared_ptr<SNStickyNote> &note) {
        if (note->hasContent())
            return false;
        note->didDelete();
        return true;
    });
    return notes;
}
