#pragma once

#include <QObject>

#include <memory>

class MTStatusItem;
class MTStatusItemDelegate;
class QMenu;
class QWDebouncer;
class QWidget;
class SNNoteWindowSet;
class SNUserDefaults;

// Where the user finds the program: its tray icon, and its note windows in the taskbar and the
// window switcher, each as the settings say. At least one of the two stays on, and where no
// tray exists the notes stay in the taskbar whatever the settings say. A note window that left
// the taskbar can lose the focus; the note in use gets it back.
class SNDesktopPresence final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNDesktopPresence)

public:
    // The tray icon opens trayMenu and tells trayDelegate of its clicks.
    SNDesktopPresence(SNUserDefaults &defaults, SNNoteWindowSet &notes, QMenu *trayMenu,
        MTStatusItemDelegate *trayDelegate, QObject *parent = nullptr);
    ~SNDesktopPresence() override;

    // The launch's share: the taskbar as set, and the tray icon, turned on when both are off.
    void applicationDidFinishLaunching();

    void toggleMenuBarIconVisible();
    void makeStatusItemIfNeeded();
    void removeStatusItemIfNeeded();
    void toggleDockIconVisible();
    void setDockIconVisible(bool visible);

    // Whether note windows show in the taskbar: the setting, unless the tray icon is the only
    // way left to reach the program.
    bool showsNotesInTaskbar() const;
    // For a note window about to map: in the taskbar or not, as every other.
    void applyTaskbarPresenceToWindow(QWidget *window) const;

    // The tray icon's look follows whether the program is active.
    void setActive(bool active);
    // Made the first time the tray icon is wanted; kept while the setting is off.
    MTStatusItem *statusItem() const { return m_statusItem; }

private:
    void applyTaskbarPresence();

    SNUserDefaults &m_defaults;
    SNNoteWindowSet &m_notes;
    QMenu *m_trayMenu;
    MTStatusItemDelegate *m_trayDelegate;
    bool m_active = false;
    MTStatusItem *m_statusItem = nullptr; // a child
    std::unique_ptr<QWDebouncer> m_activationTimer;
};
