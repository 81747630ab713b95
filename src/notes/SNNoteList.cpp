#include "notes/SNNoteList.h"

#include "notes/SNStickyNote.h"

SNNoteList::SNNoteList(const QList<std::shared_ptr<SNStickyNote>> &notes)
{
    for (const std::shared_ptr<SNStickyNote> &note : notes)
        append(note);
}

void SNNoteList::append(const std::shared_ptr<SNStickyNote> &note)
{
    m_notes.append(note);
    m_members.insert(note.get());
    ++m_idCounts[note->uuid()];
}

bool SNNoteList::remove(const std::shared_ptr<SNStickyNote> &note)
{
    if (!m_members.remove(note.get()))
        return false;
    m_notes.removeOne(note);
    const auto count = m_idCounts.find(note->uuid());
    if (count != m_idCounts.end() && --*count == 0)
        m_idCounts.erase(count);
    return true;
}
