#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>

#include <memory>

class SNStickyNote;

// A change of a note that the store has been told of and not yet written.
struct SNPendingChange
{
    std::shared_ptr<SNStickyNote> note;
    bool isDeletion = false;
    QDateTime date; // of a deletion
    bool isMerged = false; // came from another computer, stamped there
    bool isMadeByMerge = false; // stamped by the merge, but shared as this computer's own
};

// The changes waiting for the next save, in the order they were told, with one record for a
// note that changes again before it is written. A value without a lock: the note store
// guards it.
class SNPendingChanges final
{
public:
    void add(const SNPendingChange &change);
    // All of them, leaving none.
    QList<SNPendingChange> take();
    // Changes a save could not write go back before those told since.
    void putBack(const QList<SNPendingChange> &changes);
    void clear();

private:
    QList<SNPendingChange> m_changes;
    QHash<const SNStickyNote *, qsizetype> m_lastChangeOf; // each note's last place in m_changes
};
