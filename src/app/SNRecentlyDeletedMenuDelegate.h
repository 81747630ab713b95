#pragma once

#include <QObject>

class QAction;
class QMenu;
class SNNoteWindowSet;
class SNStickyNoteManager;

// Fills the "Recently Deleted" submenus, the tray's and each note's "Vellumo" menu's, afresh
// each time one opens: every deleted note by its title and when it was deleted, newest first.
// Picking one brings the note back, with its text, theme and place, in a window of its own.
class SNRecentlyDeletedMenuDelegate final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNRecentlyDeletedMenuDelegate)

public:
    SNRecentlyDeletedMenuDelegate(
        SNStickyNoteManager &store, SNNoteWindowSet &notes, QObject *parent = nullptr);
    ~SNRecentlyDeletedMenuDelegate() override;

    static QString emptyMenuTitle(); // "No Deleted Notes"

    void menuNeedsUpdate(QMenu *menu);
    // The item may outlive its entry (brought back from another menu, or expired): then it
    // does nothing.
    void restoreNoteFromMenuItem(QAction *sender);

private:
    SNStickyNoteManager &m_store;
    SNNoteWindowSet &m_notes;
};
