#pragma once

#include <QMenu>

#include <functional>

// The tray menu's commands once more, as one menu for each note's settings menu: a desktop
// without a tray (stock GNOME) would otherwise leave them out of reach. It holds the tray
// menu's own actions, in the same order; the notes submenu is one of its own, filled afresh
// each time it opens.
class SNApplicationMenu final : public QMenu
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNApplicationMenu)

public:
    using NotesFiller = std::function<void(QMenu *notesMenu)>;

    SNApplicationMenu(const QMenu &trayMenu, const QMenu &trayNotesMenu, NotesFiller fillNotes,
        QWidget *parent = nullptr);
    ~SNApplicationMenu() override;

    QMenu *notesMenu() const { return m_notesMenu; }

private:
    QMenu *m_notesMenu = nullptr;
};
