#include "notes/SNRecentlyDeleted.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNote.h"

#include <algorithm>

void SNRecentlyDeleted::add(const SNJournalRecord &deletion)
{
    if (!deletion.note)
        return;
    take(deletion.uuid);
    // Kept newest first, wherever the record comes from.
    const auto position = std::find_if(
        m_records.begin(), m_records.end(), [&deletion](const SNJournalRecord &record) {
            return record.dateDeleted <= deletion.dateDeleted;
        });
    m_records.insert(position, deletion);
}

std::optional<SNJournalRecord> SNRecentlyDeleted::take(const QUuid &uuid)
{
    for (qsizetype index = 0; index < m_records.size(); ++index) {
        if (m_records.at(index).uuid == uuid)
            return m_records.takeAt(index);
    }
    return std::nullopt;
}

std::optional<SNJournalRecord> SNRecentlyDeleted::takeKept(const QUuid &uuid, const QDateTime &now)
{
    for (qsizetype index = 0; index < m_records.size(); ++index) {
        if (m_records.at(index).uuid == uuid)
            return isKept(m_records.at(index), now) ? std::optional(m_records.takeAt(index))
                                                    : std::nullopt;
    }
    return std::nullopt;
}

bool SNRecentlyDeleted::isKept(const SNJournalRecord &deletion, const QDateTime &now)
{
    return deletion.dateDeleted.isValid() && deletion.dateDeleted >= now.addDays(-keptDays);
}

bool SNRecentlyDeleted::contains(const QUuid &uuid) const
{
    return std::any_of(m_records.cbegin(), m_records.cend(),
        [&uuid](const SNJournalRecord &record) { return record.uuid == uuid; });
}

std::shared_ptr<SNStickyNote> SNRecentlyDeleted::noteOf(const QUuid &uuid) const
{
    for (const SNJournalRecord &record : m_records) {
        if (record.uuid == uuid)
            return record.note;
    }
    return nullptr;
}

QList<SNDeletedNote> SNRecentlyDeleted::keptNotes(const QDateTime &now) const
{
    QList<SNDeletedNote> notes;
    for (const SNJournalRecord &record : m_records) {
        if (!isKept(record, now))
            continue;
        const std::optional<QWAttributedString> text = record.note->attributedString();
        notes.append({ record.uuid, record.dateDeleted,
            SNNoteTitle::titleTextOfString(text ? text->string() : QString()) });
    }
    return notes;
}

void SNRecentlyDeleted::dropExpired(const QDateTime &now)
{
    m_records.removeIf([&now](const SNJournalRecord &record) { return !isKept(record, now); });
}

QByteArray SNRecentlyDeleted::archivedData() const
{
    return QWKeyedArchiver::archivedDataWithRootObject(m_records);
}

SNRecentlyDeleted SNRecentlyDeleted::fromArchivedData(const QByteArray &data, QString *error)
{
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data);
    if (error)
        *error = result.error;
    SNRecentlyDeleted deleted;
    for (const SNJournalRecord &record :
        QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<SNJournalRecord>(result.root)) {
        // In the file's order, which is already newest first.
        if (record.isDeletion && record.note && !deleted.contains(record.uuid))
            deleted.m_records.append(record);
    }
    return deleted;
}
