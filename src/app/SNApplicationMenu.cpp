#include "app/SNApplicationMenu.h"

SNApplicationMenu::SNApplicationMenu(
    const QMenu &trayMenu, const QMenu &trayNotesMenu, NotesFiller fillNotes, QWidget *parent)
    : QMenu(trayMenu.title(), parent)
{
    for (QAction *item : trayMenu.actions()) {
        if (item != trayNotesMenu.menuAction()) {
            addAction(item);
            continue;
        }
        // The tray may hand its menus to the desktop's own tray; this one keeps a submenu of
        // its own.
        m_notesMenu = addMenu(trayNotesMenu.title());
        connect(m_notesMenu, &QMenu::aboutToShow, this,
            [this, fill = std::move(fillNotes)] { fill(m_notesMenu); });
    }
}

SNApplicationMenu::~SNApplicationMenu() = default;
