#include "app/SNApplicationMenu.h"

SNApplicationMenu::SNApplicationMenu(
    const QMenu &trayMenu, QList<FilledSubmenu> submenus, QWidget *parent)
    : QMenu(trayMenu.title(), parent)
{
    for (QAction *item : trayMenu.actions()) {
        const auto filled
            = std::find_if(submenus.begin(), submenus.end(), [item](const FilledSubmenu &submenu) {
                  return submenu.trayMenu->menuAction() == item;
              });
        if (filled == submenus.end()) {
            addAction(item);
            continue;
        }
        // The tray may hand its menus to the desktop's own tray; this one keeps a submenu of
        // its own.
        QMenu *own = addMenu(filled->trayMenu->title());
        m_submenus.append({ filled->trayMenu, own });
        connect(
            own, &QMenu::aboutToShow, this, [own, fill = std::move(filled->fill)] { fill(own); });
    }
}

SNApplicationMenu::~SNApplicationMenu() = default;

QMenu *SNApplicationMenu::submenuFor(const QMenu *trayMenu) const
{
    for (const auto &[tray, own] : m_submenus) {
        if (tray == trayMenu)
            return own;
    }
    return nullptr;
}
