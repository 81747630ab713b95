#pragma once

#include "app/MTStatusItemDelegate.h"
#include "app/QWApplicationHider.h"
#include "app/SNApplicationTermination.h"
#include "app/SNHistoryCommand.h"
#include "app/SNImportCommand.h"
#include "app/SNLaunchRequestHandler.h"
#include "app/SNSyncCommand.h"
#include "kit/QWNotificationCenter.h"

#include <QObject>
#include <QString>

#include <memory>

class QMenu;
class QSessionManager;
class QWHotKeyHelper;
class QWPreferencesWindowController;
class QWDebouncer;
class QWWelcomeWindowController;
class QWWindowController;
class QWWindowManager;
class SNApplicationMenu;
class SNDatabaseExporter;
class SNDesktopPresence;
class SNGlobalHotKeys;
class SNHelpWindowController;
class SNImportController;
class SNModalPresenter;
class SNNoteArrangement;
class SNNoteWindowSet;
class SNNotesMenuDelegate;
class SNRecentlyDeletedMenuDelegate;
class SNStickyNoteManager;
class SNSyncController;
class SNTagManagerWindowController;
class SNUserDefaults;
struct SNLaunchRequest;

namespace Ui {
class AppDelegate;
}

// The application controller. It runs the launch sequence, owns the tray menu
// (AppDelegate.ui), answers the application's commands (new note, show and hide all notes,
// help, quit...) and opens the windows that are not notes. It wires the parts that do the rest
// (the program's ending, its tray icon and taskbar presence, its hot keys, the notes menus, the
// export, and what is handed in from outside) and keeps them and the login item in step with
// the settings. It holds no note data: notes belong to the note store, which note windows exist
// and show to the note window set.
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
    // The program's ending: see SNApplicationTermination.
    bool applicationShouldTerminate() { return m_termination->applicationShouldTerminate(); }
    void applicationWillTerminate() { m_termination->applicationWillTerminate(); }
    void applicationMustTerminate() { m_termination->applicationMustTerminate(); }
    void commitDataRequest(QSessionManager &) { m_termination->commitDataRequest(); }
    void applicationDidBecomeActive();
    void applicationDidResignActive();
    // The program started again, or its notes were asked for: always false.
    bool applicationShouldHandleReopenHasVisibleWindows(bool hasVisibleWindows);
    // "vellumo://lal" marks a start at login.
    void handleOpenURLWithReplyEvent(const QString &url);

    // What the command line or another start asks for; an error text, or nothing.
    QString handleLaunchRequest(const SNLaunchRequest &request)
    {
        return m_launchRequests->handleLaunchRequest(request);
    }
    // A command of the command line about deleted notes and backups; a restored note shows.
    SNHistoryCommand::Result handleHistoryCommand(const SNHistoryCommand &command);
    // A command of the command line about the sync folder; a folder set starts sharing at once.
    SNSyncCommand::Result handleSyncCommand(const SNSyncCommand &command);
    // A command of the command line about other notes programs or Markdown; imported notes show.
    SNImportCommand::Result handleImportCommand(const SNImportCommand &command);

    // Commands.
    void newDocument(QObject *sender);
    void showAllNotes();
    void hideAllNotes();
    // The notes and every other window, until the next showing of the notes.
    void hideApplication();
    void saveDocument(QObject *sender);
    void openAbout(QObject *sender);
    void openPreferences(QObject *sender);
    void openHelp(QObject *sender);
    void checkForUpdates(QObject *sender);
    void rateApp(QObject *sender);
    void quitApp(QObject *sender);
    void toggleStrikethrough(QObject *sender);

    // MTStatusItemDelegate
    bool menuShouldShow() override;
    void menuIconWasClicked() override;

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

    void welcomeWindowDidOpen();
    void welcomeWindowDidClose();
    void didToggleRunAtLogin(const QWNotification &notification);

    bool launchedFromStartup() const { return m_launchedFromStartup; }
    bool appDidLaunch() const { return m_appDidLaunch; }
    bool isActive() const { return m_isActive; }
    void setIsActive(bool active);
    QMenu *statusItemMenu() const;
    QMenu *notesMenu() const;
    QMenu *recentlyDeletedMenu() const;
    // The "Vellumo" submenu of every note's settings menu.
    SNApplicationMenu *applicationMenu() const { return m_applicationMenu.get(); }
    QWWelcomeWindowController *welcomeWindowController() const { return m_welcome.get(); }
    SNNoteWindowSet &noteWindows() const { return *m_noteWindows; }

    // The parts it wires.
    SNApplicationTermination &termination() const { return *m_termination; }
    SNDesktopPresence &desktopPresence() const { return *m_presence; }
    SNGlobalHotKeys &hotKeys() const { return *m_hotKeys; }
    SNNotesMenuDelegate &notesMenuDelegate() const { return *m_notesMenuDelegate; }
    SNRecentlyDeletedMenuDelegate &recentlyDeletedMenuDelegate() const
    {
        return *m_recentlyDeletedMenuDelegate;
    }
    SNDatabaseExporter &exporter() const { return *m_exporter; }
    SNLaunchRequestHandler &launchRequests() const { return *m_launchRequests; }
    SNSyncController &sync() const { return *m_sync; }
    SNImportController &importer() const { return *m_import; }

private:
    // The services handed in, else the shared instances. The note store loads its archive
    // when the controller is made.
    SNUserDefaults &defaults() const;
    SNStickyNoteManager &noteManager() const;
    QWWindowManager &windowManager() const;
    QWHotKeyHelper &hotKeyHelper() const;
    // hideWindow hides the notes only on a start at login, and only while launching.
    bool shouldShowNotes() const;
    // What every note window needs before it first maps; run by the window manager as it
    // takes each one on.
    void prepareNoteWindow(QWWindowController *controller);
    void settingDidChange(const QString &key);
    void connectMenuItems();
    void connectParts();
    void subscribeToNotifications();

    // Launch state.
    bool m_launchedFromStartup = false;
    bool m_appDidLaunch = false;
    bool m_isActive = false;

    Services m_services;
    std::unique_ptr<SNNoteWindowSet> m_noteWindows;

    std::unique_ptr<QMenu> m_statusItemMenu;
    std::unique_ptr<Ui::AppDelegate> m_ui;
    // The tray menu's commands for each note's settings menu.
    std::unique_ptr<SNApplicationMenu> m_applicationMenu;
    std::unique_ptr<SNNoteArrangement> m_arrangement;
    QWApplicationHider m_applicationHider;
    std::unique_ptr<QWWelcomeWindowController> m_welcome;
    std::unique_ptr<SNHelpWindowController> m_helpWindowController;
    // Only while its window is open.
    std::unique_ptr<SNTagManagerWindowController> m_tagManagerWindowController;
    std::unique_ptr<QWPreferencesWindowController> m_preferencesWindowController;
    std::unique_ptr<QWDebouncer> m_preferencesReleaseTimer;

    std::unique_ptr<SNApplicationTermination> m_termination;
    std::unique_ptr<SNDesktopPresence> m_presence;
    std::unique_ptr<SNGlobalHotKeys> m_hotKeys;
    std::unique_ptr<SNNotesMenuDelegate> m_notesMenuDelegate;
    std::unique_ptr<SNRecentlyDeletedMenuDelegate> m_recentlyDeletedMenuDelegate;
    std::unique_ptr<SNDatabaseExporter> m_exporter;
    std::unique_ptr<SNLaunchRequestHandler> m_launchRequests;
    std::unique_ptr<SNSyncController> m_sync;
    std::unique_ptr<SNImportController> m_import;
};
