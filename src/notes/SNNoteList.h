#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QUuid>

#include <memory>

class SNStickyNote;

// The store's notes in their order, each found at once by itself or by its id, so that adding
// one to thousands costs no walk through the list. A value without a lock: the note store
// guards it. A note's id must not change while it is in the list.
class SNNoteList final
{
public:
    SNNoteList() = default;
    explicit SNNoteList(const QList<std::shared_ptr<SNStickyNote>> &notes);

    const QList<std::shared_ptr<SNStickyNote>> &notes() const { return m_notes; }
    bool contains(const SNStickyNote *note) const { return m_members.contains(note); }
    bool containsId(const QUuid &uuid) const { return m_idCounts.contains(uuid); }

    // At the end; the caller sees to the id (a list read from disk may hold one twice).
    void append(const std::shared_ptr<SNStickyNote> &note);
    // False when the note is not in the list.
    bool remove(const std::shared_ptr<SNStickyNote> &note);

private:
    QList<std::shared_ptr<SNStickyNote>> m_notes;
    QSet<const SNStickyNote *> m_members;
    QHash<QUuid, int> m_idCounts;
};
