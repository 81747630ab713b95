#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QUuid>

#include <memory>
#include <optional>

class QWKeyedArchiver;
class QWKeyedUnarchiver;
class SNStickyNote;

// One record of the journal: a note as it was saved, or its deletion. A deletion carries the
// note's last version too, so that Recently Deleted can bring it back; the same record is an
// entry of Recently Deleted's own file.
//
// Each record is a whole keyed archive of its own, so that a CBOR tool reads it alone.
class SNJournalRecord final
{
public:
    QUuid uuid;
    std::shared_ptr<SNStickyNote> note; // null only in records that could not be read whole
    bool isDeletion = false;
    QDateTime dateDeleted; // for deletions

    static SNJournalRecord saving(const std::shared_ptr<SNStickyNote> &note);
    static SNJournalRecord deleting(
        const std::shared_ptr<SNStickyNote> &note, const QDateTime &date);

    QByteArray archivedData() const;
    // Nothing when the bytes are not a record with a note id.
    static std::optional<SNJournalRecord> fromArchivedData(const QByteArray &data);

    static QString className() { return QStringLiteral("SNJournalRecord"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    static std::optional<SNJournalRecord> initWithCoder(const QWKeyedUnarchiver &coder);
};
