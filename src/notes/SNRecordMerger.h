#pragma once

#include "notes/SNNoteVersion.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QUuid>

#include <functional>
#include <memory>

class SNJournalRecord;
class SNStickyNote;
class SNStickyNoteManager;

// Merges the records other computers saved into the store: a note new here is added, a note
// both have is merged (SNNoteMerger), a deletion removes a note only where it has seen all of
// its text, and a note deleted here comes back when another computer wrote to it what the
// deletion had not seen. Reading a record twice, or in another order, gives the same notes.
//
// It remembers every deletion it was given, so that a stale record read later cannot bring a
// deleted note back. It reads no files: the sync session hands it what it read.
class SNRecordMerger final
{
public:
    static constexpr qsizetype manyDeletions = 10;

    struct Result
    {
        QList<std::shared_ptr<SNStickyNote>> added; // in the list now, windows to open
        QList<std::shared_ptr<SNStickyNote>> changed; // in the list, text or look changed
        QList<std::shared_ptr<SNStickyNote>> removed; // deleted elsewhere, windows to close
        qsizetype conflicts = 0;
        bool isEmpty() const { return added.isEmpty() && changed.isEmpty() && removed.isEmpty(); }
    };

    // Asked before one merge deletes more than 10 notes or more than half of them, with how
    // many; false keeps those notes, here and (as notes brought back) on every computer.
    using DeletionQuestion = std::function<bool(qsizetype count)>;

    explicit SNRecordMerger(SNStickyNoteManager &store);
    SNRecordMerger(const SNRecordMerger &) = delete;
    SNRecordMerger &operator=(const SNRecordMerger &) = delete;

    Result merge(const QList<SNJournalRecord> &records, const DeletionQuestion &ask = {});

private:
    enum class Outcome { Added, Changed, Removed };
    // What the windows are told of the note, in the order notes were first touched.
    void tell(const std::shared_ptr<SNStickyNote> &note, Outcome outcome);
    void rememberDeletions(const QList<SNJournalRecord> &records);
    QSet<QUuid> keptFromDeletion(const QList<SNJournalRecord> &records,
        const QHash<QUuid, std::shared_ptr<SNStickyNote>> &notes, const DeletionQuestion &ask);
    void mergeDeletion(const SNJournalRecord &record);
    void mergeNote(const SNJournalRecord &record);
    void mergeAbsentNote(const std::shared_ptr<SNStickyNote> &incoming);
    // Merges the incoming version into the note; true when the note changed.
    bool mergeInto(const std::shared_ptr<SNStickyNote> &note, const SNStickyNote &incoming);
    bool isCovered(const QUuid &uuid, const SNStickyNote &note) const;

    SNStickyNoteManager &m_store;
    // Per note, the text edits its deletions had seen, all of them joined.
    QHash<QUuid, SNNoteVersion> m_deletions;

    // Within one merge:
    QHash<QUuid, std::shared_ptr<SNStickyNote>> m_notes;
    QSet<QUuid> m_kept;
    QList<std::shared_ptr<SNStickyNote>> m_touched;
    QHash<const SNStickyNote *, Outcome> m_outcomes;
    Result m_result;
};
