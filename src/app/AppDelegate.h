#pragma once

#include "app/MTStatusItemDelegate.h"
#include "app/QWApplicationHider.h"
#include "kit/QWNotificationCenter.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

class MTStatusItem;
class QAction;
class QMenu;
class QSessionManager;
class QWHotKeyHelper;
class QWPreferencesWindowController;
class QWDebouncer;
class QWWelcomeWindowController;
class QWWindowController;
class QWWindowManager;
class SNApplicationMenu;
class SNHelpWindowController;
class SNModalPresenter;
class SNNoteArrangement;
class SNNoteWindowSet;
class SNStickyNote;
class SNStickyNoteManager;
class SNStickyNoteWindowController;
class SNTagManagerWindowController;
class SNUserDefaults;
struct SNLaunchRequest;

namespace Ui {
class AppDelegate;
}

// The application controller. It runs the launch sequence, owns the tray icon and its menu
// (AppDelegate.ui), answers the application's commands (new note, show and hide all notes,
// export, help, quit...), takes in files, text and URLs handed to the program, and keeps the
// tray icon, the taskbar presence, the hot keys and the login item in step with the settings.
// It holds no note data: notes belong to the note store, which note windows exist and show to
// the note window set.
class AppDelegate final : public QObject, public MTStatusItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AppDelegate)

public:
    // What the controller works with. Null members mean the shared instances.
    struct Services
    {
        SNUserDefaults *defaults = nullptr;
        SNStickyNoteManager *noteManager = nullptr;
        QWWindowManager *windowManager = nullptr;
        QWHotKeyHelper *hotKeyHelper = nullptr;
        std::shared_ptr<SNModalPresenter> presenter;
    };

    // Texts the user meets, spelt as they must stay.
    static QString exportFailedMessage(); // "Could not export the database"
    static QString exportFailedInformativeText();
    static QString noteFromServiceErrorText(); // "Could not create a note with text"
    // The host of the "vellumo:" URL that marks a start at login.
    static QString loginLaunchHost(); // "lal"
    // Where feedback goes.
    static QString projectPageURL();

    explicit AppDelegate(QObject *parent = nullptr);
    explicit AppDelegate(const Services &services, QObject *parent = nullptr);
    ~AppDelegate() override;

    // Launch and lifecycle.
    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    // Whether the program may end: false when a window other than the notes refuses to close.
    bool applicationShouldTerminate();
    // Every note flushed and saved; windows closed after this only flush, never delete.
    void applicationWillTerminate();
    // A termination signal (shutdown, kill, closed terminal): nobody is there to answer a
    // window that would refuse, so the program ends at once, every note saved.
    void applicationMustTerminate();
    void applicationDidBecomeActive();
    void applicationDidResignActive();
    // The program started again, or its notes were asked for: always false.
    bool applicationShouldHandleReopenHasVisibleWindows(bool hasVisibleWindows);
    void applicationOpenFiles(const QStringList &paths);
    void handleOpenURLWithReplyEvent(const QString &url);
    // Makes a note of the text; *error gets the reason when there is no text to make one of.
    void noteFromServiceUserDataError(
        const QString &pasteboardText, const QString &userData, QString *error);
    // The session is ending: every note is saved, but the user may still cancel the logout.
    void commitDataRequest(QSessionManager &manager);

    // What the command line or another start asks for; an error text, or nothing.
    QString handleLaunchRequest(const SNLaunchRequest &request);

    // Commands.
    void newDocument(QObject *sender);
    void showAllNotes();
    void hideAllNotes();
    // The notes and every other window, until the next showing of the notes.
    void hideApplication();
    void saveDocument(QObject *sender);
    void exportDatabase(QObject *sender);
    void openAbout(QObject *sender);
    void openPreferences(QObject *sender);
    void openHelp(QObject *sender);
    void checkForUpdates(QObject *sender);
    void rateApp(QObject *sender);
    void quitApp(QObject *sender);
    void toggleStrikethrough(QObject *sender);
    void showWindowControllerFromMenuItem(QAction *sender);
    // note-from-selection: the X11 primary selection, else the clipboard.
    void noteFromSelection(QObject *sender);

    // MTStatusItemDelegate
    bool menuShouldShow() override;
    void menuIconWasClicked() override;

    void menuNeedsUpdate(QMenu *menu);
    void generateNotesInMenu(QMenu *menu);

    // The preferences window exists while it is open, and 0.2 s after it closed.
    void makePreferencesControllerIfNeeded();
    void preferencesDidClose();
    QWPreferencesWindowController *preferencesWindowController() const
    {
        return m_preferencesWindowController.get();
    }

    // Opens the tag browser, or closes it when it is open.
    void showTagManagerIfNeeded();
    void tagManagerWindowDidClose();
    SNTagManagerWindowController *tagManagerWindowController() const
    {
        return m_tagManagerWindowController.get();
    }
    SNHelpWindowController *helpWindowController() const { return m_helpWindowController.get(); }
    void updateHotkeys();
    void toggleMenuBarIconVisible();
    void makeStatusItemIfNeeded();
    void removeStatusItemIfNeeded();
    void toggleDockIconVisible();
    void setDockIconVisible(bool visible);

    void welcomeWindowDidOpen();
    void welcomeWindowDidClose();
    void didToggleRunAtLogin(const QWNotification &notification);

    bool launchedFromStartup() const { return m_launchedFromStartup; }
    bool appDidLaunch() const { return m_appDidLaunch; }
    bool isActive() const { return m_isActive; }
    void setIsActive(bool active);
    qint64 hotKeyID() const { return m_hotKeyID; }
    qint64 noteHotKeyID() const { return m_noteHotKeyID; }
    MTStatusItem *statusItem() const { return m_statusItem; }
    QMenu *statusItemMenu() const;
    QMenu *notesMenu() const;
    // The "Vellumo" submenu of every note's settings menu.
    SNApplicationMenu *applicationMenu() const { return m_applicationMenu.get(); }
    QWWelcomeWindowController *welcomeWindowController() const { return m_welcome.get(); }
    // Whether note windows show in the taskbar: the setting, unless the tray icon is the only
    // way left to reach the program.
    bool showsNotesInTaskbar() const;

protected:
    // Sees the application's quit request before Qt closes the windows.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // The services handed in, else the shared instances, reached on first use: the note store
    // loads its archive then.
    SNUserDefaults &defaults() const;
    SNStickyNoteManager &noteManager() const;
    QWWindowManager &windowManager() const;
    SNNoteWindowSet &noteWindows() const;
    QWHotKeyHelper &hotKeyHelper() const;
    // hideWindow hides the notes only on a start at login, and only while launching.
    bool shouldShowNotes() const;
    // What every note window needs before it first maps; run by the window manager as it
    // takes each one on.
    void prepareNoteWindow(QWWindowController *controller);
    void hotKeyWasPressed(qint64 identifier);
    void settingDidChange(const QString &key);
    void connectMenuItems();
    void subscribeToNotifications();
    QString selectedText() const;
    void applyTaskbarPresence();

    // Launch state.
    bool m_launchedFromStartup = false;
    bool m_appDidLaunch = false;
    bool m_isActive = false;
    bool m_isTerminating = false;
    bool m_didTerminate = false;
    qint64 m_hotKeyID = -1;
    qint64 m_noteHotKeyID = -1;

    Services m_services;
    // Made on first use, with the note store.
    mutable std::unique_ptr<SNNoteWindowSet> m_noteWindows;

    std::unique_ptr<QMenu> m_statusItemMenu;
    std::unique_ptr<Ui::AppDelegate> m_ui;
    // The tray menu's commands for each note's settings menu.
    std::unique_ptr<SNApplicationMenu> m_applicationMenu;
    std::unique_ptr<SNNoteArrangement> m_arrangement;
    QWApplicationHider m_applicationHider;
    MTStatusItem *m_statusItem = nullptr; // a child: lives as long as the controller
    std::unique_ptr<QWWelcomeWindowController> m_welcome;
    std::unique_ptr<SNHelpWindowController> m_helpWindowController;
    // Only while its window is open.
    std::unique_ptr<SNTagManagerWindowController> m_tagManagerWindowController;
    std::unique_ptr<QWDebouncer> m_activationTimer;
    std::unique_ptr<QWPreferencesWindowController> m_preferencesWindowController;
    std::unique_ptr<QWDebouncer> m_preferencesReleaseTimer;
};
