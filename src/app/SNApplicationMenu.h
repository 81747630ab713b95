#pragma once

#include <QList>
#include <QMenu>

#include <functional>

// The tray menu's commands once more, as one menu for each note's settings menu: a desktop
// without a tray (stock GNOME) would otherwise leave them out of reach. It holds the tray
// menu's own actions, in the same order; each submenu that the tray fills as it opens (the
// notes, the deleted notes) is one of its own here, filled afresh each time it opens.
class SNApplicationMenu final : public QMenu
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNApplicationMenu)

public:
    using Filler = std::function<void(QMenu *menu)>;
    struct FilledSubmenu
    {
        const QMenu *trayMenu;
        Filler fill;
    };

    SNApplicationMenu(
        const QMenu &trayMenu, QList<FilledSubmenu> submenus, QWidget *parent = nullptr);
    ~SNApplicationMenu() override;

    // This menu's counterpart of one of the tray's filled submenus; null for any other menu.
    QMenu *submenuFor(const QMenu *trayMenu) const;

private:
    QList<QPair<const QMenu *, QMenu *>> m_submenus; // the tray's, and this menu's own
};
