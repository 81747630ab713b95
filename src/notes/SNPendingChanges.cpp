#include "notes/SNPendingChanges.h"

void SNPendingChanges::add(const SNPendingChange &change)
{
    // A note already waiting to be saved is saved as it is then: one record is enough.
    if (const auto last = m_lastChangeOf.constFind(change.note.get());
        !change.isDeletion && last != m_lastChangeOf.cend() && !m_changes.at(*last).isDeletion) {
        SNPendingChange &waiting = m_changes[*last];
        // A change of this computer's own is stamped, even if a merge came first.
        waiting.isMerged = waiting.isMerged && change.isMerged;
        waiting.isMadeByMerge = waiting.isMadeByMerge && change.isMadeByMerge;
        return;
    }
    m_lastChangeOf.insert(change.note.get(), m_changes.size());
    m_changes.append(change);
}

QList<SNPendingChange> SNPendingChanges::take()
{
    QList<SNPendingChange> changes;
    changes.swap(m_changes);
    m_lastChangeOf.clear();
    return changes;
}

void SNPendingChanges::putBack(const QList<SNPendingChange> &changes)
{
    m_changes = changes + m_changes;
    m_lastChangeOf.clear();
    for (qsizetype index = 0; index < m_changes.size(); ++index)
        m_lastChangeOf.insert(m_changes.at(index).note.get(), index);
}

void SNPendingChanges::clear()
{
    m_changes.clear();
    m_lastChangeOf.clear();
}
