#pragma once

#include "notes/SNJournalRecord.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

// A note in Recently Deleted, as menus list it.
struct SNDeletedNote
{
    QUuid uuid;
    QDateTime dateDeleted;
    QString title; // the first line of its text
};

// The notes deleted in the last 30 days, each with its last version, so that one wrong click
// loses nothing. A value: the note store guards it and decides when it is written.
class SNRecentlyDeleted final
{
public:
    static constexpr int keptDays = 30;

    // Replaces an entry of the same note.
    void add(const SNJournalRecord &deletion);
    // The entry of the note, taken out; nothing when the note is not here.
    std::optional<SNJournalRecord> take(const QUuid &uuid);
    // The same, but only while it is within its 30 days at the time given.
    std::optional<SNJournalRecord> takeKept(const QUuid &uuid, const QDateTime &now);
    static bool isKept(const SNJournalRecord &deletion, const QDateTime &now);
    bool contains(const QUuid &uuid) const;
    // The note kept of the id, whatever its age; null when there is none.
    std::shared_ptr<SNStickyNote> noteOf(const QUuid &uuid) const;
    // What is within its 30 days at the time given, newest first.
    QList<SNDeletedNote> keptNotes(const QDateTime &now) const;
    // Drops what was deleted more than 30 days before the time given.
    void dropExpired(const QDateTime &now);
    // Newest deletion first.
    QList<SNJournalRecord> records() const { return m_records; }
    bool isEmpty() const { return m_records.isEmpty(); }

    // The file form: a keyed archive whose root is the list of deletion records.
    QByteArray archivedData() const;
    // What could be read; the error is empty when the whole file was read.
    static SNRecentlyDeleted fromArchivedData(const QByteArray &data, QString *error = nullptr);

private:
    QList<SNJournalRecord> m_records;
};
