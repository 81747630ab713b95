#include "notes/SNJournalRecord.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNStickyNote.h"

namespace {

const QString uuidKey = QStringLiteral("uuid");
const QString deletedKey = QStringLiteral("deleted");
const QString dateDeletedKey = QStringLiteral("dateDeleted");
const QString noteKey = QStringLiteral("note");

} // namespace

SNJournalRecord SNJournalRecord::saving(const std::shared_ptr<SNStickyNote> &note)
{
    return { note->uuid(), note, false, QDateTime() };
}

SNJournalRecord SNJournalRecord::deleting(
    const std::shared_ptr<SNStickyNote> &note, const QDateTime &date)
{
    return { note->uuid(), note, true, date };
}

QByteArray SNJournalRecord::archivedData() const
{
    return QWKeyedArchiver::archivedDataWithRootObject(*this);
}

std::optional<SNJournalRecord> SNJournalRecord::fromArchivedData(const QByteArray &data)
{
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data);
    if (!result.isComplete())
        return std::nullopt;
    return QWKeyedUnarchiver::decodeObjectOfClass<SNJournalRecord>(result.root);
}

void SNJournalRecord::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeStringForKey(uuid.toString(QUuid::WithoutBraces), uuidKey);
    coder.encodeBoolForKey(isDeletion, deletedKey);
    if (isDeletion)
        coder.encodeDateForKey(dateDeleted, dateDeletedKey);
    coder.encodeObjectForKey(note, noteKey);
}

std::optional<SNJournalRecord> SNJournalRecord::initWithCoder(const QWKeyedUnarchiver &coder)
{
    SNJournalRecord record;
    record.uuid = QUuid::fromString(coder.decodeStringForKey(uuidKey).value_or(QString()));
    if (record.uuid.isNull())
        return std::nullopt;
    record.isDeletion = coder.decodeBoolForKey(deletedKey);
    record.dateDeleted = coder.decodeDateForKey(dateDeletedKey).value_or(QDateTime());
    record.note
        = coder.decodeObjectOfClassForKey<std::shared_ptr<SNStickyNote>>(noteKey).value_or(nullptr);
    // The record's id is the note's, whatever the note itself says.
    if (record.note)
        record.note->setUuid(record.uuid);
    else if (!record.isDeletion)
        return std::nullopt; // a saved note without the note says nothing
    return record;
}
