#include "app/SNDesktopPresence.h"

#include "app/MTStatusItem.h"
#include "kit/QWDebouncer.h"
#include "kit/widgets/QWX11WindowState.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "settings/SNUserDefaults.h"

#include <QSystemTrayIcon>

namespace {

constexpr double dockIconActivationDelay = 0.1;

void setSkipsTaskbar(QWidget *window, bool skipsTaskbar)
{
    if (QWX11WindowState::skipsTaskbar(window) != skipsTaskbar)
        QWX11WindowState::setSkipsTaskbar(window, skipsTaskbar);
}

} // namespace

SNDesktopPresence::SNDesktopPresence(SNUserDefaults &defaults, SNNoteWindowSet &notes,
    QMenu *trayMenu, MTStatusItemDelegate *trayDelegate, QObject *parent)
    : QObject(parent),
      m_defaults(defaults),
      m_notes(notes),
      m_trayMenu(trayMenu),
      m_trayDelegate(trayDelegate),
      m_activationTimer(std::make_unique<QWDebouncer>(dockIconActivationDelay, [this] {
          SNStickyNoteWindowController *key = m_notes.keyController();
          if (key && key->window()->isVisible())
              key->window()->activateWindow();
      }))
{ }

SNDesktopPresence::~SNDesktopPresence() = default;

void SNDesktopPresence::applicationDidFinishLaunching()
{
    toggleDockIconVisible();
    if (!m_defaults.showMenuIcon() && !m_defaults.showIconInDock())
        m_defaults.setShowMenuIcon(true);
    makeStatusItemIfNeeded();
    toggleMenuBarIconVisible();
}

void SNDesktopPresence::toggleMenuBarIconVisible()
{
    if (m_defaults.showMenuIcon())
        makeStatusItemIfNeeded();
    else
        removeStatusItemIfNeeded();
    // Without the tray icon the taskbar is the way back to the notes.
    applyTaskbarPresence();
}

void SNDesktopPresence::makeStatusItemIfNeeded()
{
    if (!m_defaults.showMenuIcon())
        return;
    if (m_statusItem) {
        m_statusItem->makeStatusItem();
        return;
    }
    m_statusItem = new MTStatusItem(this);
    m_statusItem->setContextMenu(m_trayMenu);
    m_statusItem->setDelegate(m_trayDelegate);
    m_statusItem->setActive(m_active);
}

void SNDesktopPresence::removeStatusItemIfNeeded()
{
    if (m_statusItem && !m_defaults.showMenuIcon())
        m_statusItem->destroy();
}

void SNDesktopPresence::toggleDockIconVisible()
{
    setDockIconVisible(m_defaults.showIconInDock());
}

void SNDesktopPresence::setDockIconVisible(bool visible)
{
    applyTaskbarPresence();
    if (visible)
        return;
    // Leaving the taskbar can cost a window the focus; give it back to the note in use.
    m_activationTimer->restart();
}

bool SNDesktopPresence::showsNotesInTaskbar() const
{
    return m_defaults.showIconInDock() || !m_defaults.showMenuIcon()
        || !QSystemTrayIcon::isSystemTrayAvailable();
}

void SNDesktopPresence::applyTaskbarPresenceToWindow(QWidget *window) const
{
    setSkipsTaskbar(window, !showsNotesInTaskbar());
}

void SNDesktopPresence::applyTaskbarPresence()
{
    const bool skipsTaskbar = !showsNotesInTaskbar();
    for (SNStickyNoteWindowController *controller : m_notes.controllers()) {
        if (controller->isWindowLoaded())
            setSkipsTaskbar(controller->window(), skipsTaskbar);
    }
}

void SNDesktopPresence::setActive(bool active)
{
    m_active = active;
    if (m_statusItem)
        m_statusItem->setActive(active);
}
