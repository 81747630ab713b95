#include "notes/SNRecordMerger.h"

#include "notes/SNJournalRecord.h"
#include "notes/SNNoteMerger.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

SNRecordMerger::SNRecordMerger(SNStickyNoteManager &store) : m_store(store) { }

SNRecordMerger::Result SNRecordMerger::merge(
    const QList<SNJournalRecord> &records, const DeletionQuestion &ask)
{
    m_result = Result();
    m_notes.clear();
    for (const std::shared_ptr<SNStickyNote> &note : m_store.notesArray())
        m_notes.insert(note->uuid(), note);
    rememberDeletions(records);
    m_kept = keptFromDeletion(records, m_notes, ask);

    for (const SNJournalRecord &record : records) {
        if (!record.note)
            continue;
        m_store.observeStamp(record.note->version().stamp);
        if (record.isDeletion)
            mergeDeletion(record);
        else
            mergeNote(record);
        // A version merged into a note here is let go: no tag may list it.
        if (m_notes.value(record.uuid) != record.note)
            record.note->didDelete();
    }
    m_notes.clear();
    for (const std::shared_ptr<SNStickyNote> &note : std::as_const(m_touched)) {
        switch (m_outcomes.value(note.get())) {
        case Outcome::Added:
            m_result.added.append(note);
            break;
        case Outcome::Changed:
            m_result.changed.append(note);
            break;
        case Outcome::Removed:
            m_result.removed.append(note);
            break;
        }
    }
    m_touched.clear();
    m_outcomes.clear();
    return std::exchange(m_result, Result());
}

void SNRecordMerger::tell(const std::shared_ptr<SNStickyNote> &note, Outcome outcome)
{
    const auto known = m_outcomes.constFind(note.get());
    if (known == m_outcomes.cend())
        m_touched.append(note);
    // A note added by this merge stays new to the windows whatever changes it next.
    else if (outcome == Outcome::Changed && *known == Outcome::Added)
        return;
    m_outcomes.insert(note.get(), outcome);
}

void SNRecordMerger::rememberDeletions(const QList<SNJournalRecord> &records)
{
    for (const SNJournalRecord &record : records) {
        if (!record.isDeletion || !record.note)
            continue;
        SNNoteVersion &seen = m_deletions[record.uuid];
        seen.textEdits = SNNoteVersion::joinedTextEdits(seen, record.note->version());
    }
}

bool SNRecordMerger::isCovered(const QUuid &uuid, const SNStickyNote &note) const
{
    const auto deletion = m_deletions.constFind(uuid);
    return deletion != m_deletions.cend() && deletion->hasSeenTextOf(note.version());
}

QSet<QUuid> SNRecordMerger::keptFromDeletion(const QList<SNJournalRecord> &records,
    const QHash<QUuid, std::shared_ptr<SNStickyNote>> &notes, const DeletionQuestion &ask)
{
    QSet<QUuid> doomed;
    for (const SNJournalRecord &record : records) {
        const auto note = notes.constFind(record.uuid);
        if (record.isDeletion && note != notes.cend() && isCovered(record.uuid, **note))
            doomed.insert(record.uuid);
    }
    const qsizetype count = doomed.size();
    if (count == 0 || (count <= manyDeletions && count * 2 <= notes.size()) || !ask || ask(count))
        return {};
    // Kept as if brought back from Recently Deleted: the next save counts a text edit that no
    // deletion has seen, so the note comes back on every computer too.
    for (const QUuid &uuid : std::as_const(doomed)) {
        const std::shared_ptr<SNStickyNote> &note = notes.value(uuid);
        note->markTextEdited();
        m_store.noteDidChange(note);
    }
    return doomed;
}

void SNRecordMerger::mergeDeletion(const SNJournalRecord &record)
{
    const std::shared_ptr<SNStickyNote> note = m_notes.value(record.uuid);
    if (!note) {
        mergeAbsentNote(record.note);
        return;
    }
    if (m_kept.contains(record.uuid) || !isCovered(record.uuid, *note))
        return; // an edit the deletion had not seen keeps the note
    // What the deleting computer had last goes to Recently Deleted.
    mergeInto(note, *record.note);
    m_store.removeMergedNote(note);
    m_notes.remove(record.uuid);
    tell(note, Outcome::Removed);
}

void SNRecordMerger::mergeNote(const SNJournalRecord &record)
{
    // A note never typed into exists only on its computer.
    if (!record.note->hasContent())
        return;
    const std::shared_ptr<SNStickyNote> note = m_notes.value(record.uuid);
    if (!note) {
        mergeAbsentNote(record.note);
        return;
    }
    if (mergeInto(note, *record.note)) {
        m_store.mergedNoteDidChange(note);
        tell(note, Outcome::Changed);
    }
}

void SNRecordMerger::mergeAbsentNote(const std::shared_ptr<SNStickyNote> &incoming)
{
    // A deleted note goes on merging in Recently Deleted, so that it comes back, if it does,
    // as it would be had it never been deleted here.
    const std::shared_ptr<SNStickyNote> kept = m_store.deletedNote(incoming->uuid());
    std::shared_ptr<SNStickyNote> note = kept ? kept : incoming;
    const bool changed = kept ? mergeInto(kept, *incoming) : true;
    if (!note->hasContent()) {
        note->didDelete();
        return;
    }
    if (isCovered(note->uuid(), *note)) {
        if (changed)
            m_store.keepMergedDeletedNote(note);
        else if (!kept)
            note->didDelete();
        return;
    }
    if (kept)
        m_store.reviveMergedNote(note);
    else
        m_store.addMergedNote(note);
    m_notes.insert(note->uuid(), note);
    tell(note, Outcome::Added);
}

bool SNRecordMerger::mergeInto(
    const std::shared_ptr<SNStickyNote> &note, const SNStickyNote &incoming)
{
    const SNNoteMerger::Decision decision = SNNoteMerger::merge(*note, incoming);
    // A newer stamp alone (a window moved elsewhere) changes nothing anyone sees: reporting it
    // would have the windows save it back, and the computers would trade stamps for ever.
    const SNNoteVersion before = note->version();
    const bool changed = decision.takesText || decision.takesLook || decision.conflictNote
        || decision.version.textEdits != before.textEdits
        || decision.version.textStamp != before.textStamp
        || decision.version.lookStamp != before.lookStamp;
    if (decision.takesText)
        note->takeTextOf(incoming);
    if (decision.takesLook)
        note->takeLookOf(incoming);
    note->takeMergedVersion(decision.version);
    if (const std::shared_ptr<SNStickyNote> &conflict = decision.conflictNote) {
        ++m_result.conflicts;
        // Made once: the same conflict read again, or made first on another computer, is
        // already here.
        if (!m_notes.contains(conflict->uuid()) && !m_store.deletedNote(conflict->uuid())
            && !m_deletions.contains(conflict->uuid())) {
            m_store.addNoteMadeByMerge(conflict);
            m_notes.insert(conflict->uuid(), conflict);
            tell(conflict, Outcome::Added);
        } else {
            conflict->didDelete();
        }
    }
    return changed;
}
