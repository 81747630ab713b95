#pragma once

#include <QObject>

class QAction;
class QMenu;
class QWWindowManager;
class SNNoteWindowSet;

// Fills the "Notes" submenus, the tray's and each note's "Vellumo" menu's, afresh each time one
// opens: every note window by its title, newest note first. Picking one brings its window
// forward.
class SNNotesMenuDelegate final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNotesMenuDelegate)

public:
    SNNotesMenuDelegate(
        SNNoteWindowSet &notes, QWWindowManager &windowManager, QObject *parent = nullptr);
    ~SNNotesMenuDelegate() override;

    void menuNeedsUpdate(QMenu *menu);
    void generateNotesInMenu(QMenu *menu);
    // The item may outlive its note's window: then it does nothing.
    void showWindowControllerFromMenuItem(QAction *sender);

private:
    SNNoteWindowSet &m_notes;
    QWWindowManager &m_windowManager;
};
