#include "app/AppDelegate.h"

#include "app/QWApplicationsMenuEntry.h"
#include "app/QWHotKeyHelper.h"
#include "app/QWWelcomeWindowController.h"
#include "app/SNApplicationMenu.h"
#include "app/SNDatabaseExporter.h"
#include "app/SNDesktopPresence.h"
#include "app/SNGlobalHotKeys.h"
#include "app/SNHelpWindowController.h"
#include "app/SNHistoryCommandRunner.h"
#include "app/SNImportController.h"
#include "app/SNImportPanel.h"
#include "app/SNNoteArrangement.h"
#include "app/SNNotesMenuDelegate.h"
#include "app/SNRecentlyDeletedMenuDelegate.h"
#include "app/SNSyncCommandRunner.h"
#include "app/SNSyncController.h"
#include "kit/QWDebouncer.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "preferences/QWPreferencesWindowController.h"
#include "secret/QWSuperSecret.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "tagbrowser/SNTagManagerWindowController.h"
#include "themes/SNThemeManager.h"
#include "ui_AppDelegate.h"

#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QMenu>
#include <QMessageBox>
#include <QTimer>
#include <QUrl>

namespace {

constexpr double preferencesReleaseDelay = 0.2;

const QString desktopEntryResource = QStringLiteral(":/Vellumo/org.vellumo.Vellumo.desktop");
const QString applicationIconResource = QStringLiteral(":/Vellumo/icons/org.vellumo.Vellumo.svg");

QByteArray resourceBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QString AppDelegate::loginLaunchHost()
{
    return QStringLiteral("lal");
}

QString AppDelegate::projectPageURL()
{
    return QStringLiteral("https://vellumo.org/");
}

AppDelegate::AppDelegate(QObject *parent) : AppDelegate(Services(), parent) { }

AppDelegate::AppDelegate(const Services &services, QObject *parent)
    : QObject(parent),
      m_services(services),
      m_noteWindows(std::make_unique<SNNoteWindowSet>(noteManager(), windowManager())),
      m_statusItemMenu(std::make_unique<QMenu>()),
      m_ui(std::make_unique<Ui::AppDelegate>()),
      m_welcome(std::make_unique<QWWelcomeWindowController>(defaults().userDefaults()))
{
    if (!m_services.presenter)
        m_services.presenter = SNModalPresenter::defaultPresenter();
    m_preferencesReleaseTimer = std::make_unique<QWDebouncer>(preferencesReleaseDelay, [this] {
        // Opened again meanwhile: the window stays.
        if (m_preferencesWindowController && !m_preferencesWindowController->window()->isVisible())
            m_preferencesWindowController.reset();
    });
    m_ui->setupUi(m_statusItemMenu.get());
    connectMenuItems();
    m_arrangement
        = std::make_unique<SNNoteArrangement>([this] { return noteWindows().controllers(); },
            m_ui->arrangeNotesItem, m_ui->putNotesBackItem);
    connectParts();
    m_applicationMenu = std::make_unique<SNApplicationMenu>(*m_statusItemMenu,
        QList<SNApplicationMenu::FilledSubmenu> {
            { m_ui->notesMenu,
                [this](QMenu *menu) { m_notesMenuDelegate->menuNeedsUpdate(menu); } },
            { m_ui->recentlyDeletedMenu,
                [this](QMenu *menu) { m_recentlyDeletedMenuDelegate->menuNeedsUpdate(menu); } } });

    connect(
        qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive)
                applicationDidBecomeActive();
            else
                applicationDidResignActive();
        });
    windowManager().setWindowPreparation(
        [self = QPointer<AppDelegate>(this)](QWWindowController *controller) {
            if (self)
                self->prepareNoteWindow(controller);
        });
}

AppDelegate::~AppDelegate()
{
    QWNotificationCenter::defaultCenter().removeObserver(this);
}

SNUserDefaults &AppDelegate::defaults() const
{
    return m_services.defaults ? *m_services.defaults : SNUserDefaults::standardUserDefaults();
}

SNStickyNoteManager &AppDelegate::noteManager() const
{
    return m_services.noteManager ? *m_services.noteManager : SNStickyNoteManager::sharedManager();
}

QWWindowManager &AppDelegate::windowManager() const
{
    return m_services.windowManager ? *m_services.windowManager : QWWindowManager::sharedManager();
}

QWHotKeyHelper &AppDelegate::hotKeyHelper() const
{
    return m_services.hotKeyHelper ? *m_services.hotKeyHelper : QWHotKeyHelper::sharedHelper();
}

QMenu *AppDelegate::statusItemMenu() const
{
    return m_statusItemMenu.get();
}

QMenu *AppDelegate::notesMenu() const
{
    return m_ui->notesMenu;
}

QMenu *AppDelegate::recentlyDeletedMenu() const
{
    return m_ui->recentlyDeletedMenu;
}

SNHistoryCommand::Result AppDelegate::handleHistoryCommand(const SNHistoryCommand &command)
{
    return SNHistoryCommandRunner(noteManager(), [this](const std::shared_ptr<SNStickyNote> &note) {
        noteWindows().openNote(note, true);
    }).run(command);
}

SNImportCommand::Result AppDelegate::handleImportCommand(const SNImportCommand &command)
{
    return m_import->run(command);
}

SNSyncCommand::Result AppDelegate::handleSyncCommand(const SNSyncCommand &command)
{
    return SNSyncCommandRunner(defaults(), noteManager(), &m_sync->state()).run(command);
}

void AppDelegate::connectMenuItems()
{
    connect(
        m_ui->newNoteItem, &QAction::triggered, this, [this] { newDocument(m_ui->newNoteItem); });
    connect(m_ui->noteFromSelectionItem, &QAction::triggered, this,
        [this] { m_launchRequests->noteFromSelection(m_ui->noteFromSelectionItem); });
    connect(m_ui->showAllNotesItem, &QAction::triggered, this,
        [this] { applicationShouldHandleReopenHasVisibleWindows(false); });
    connect(m_ui->hideAllNotesItem, &QAction::triggered, this, &AppDelegate::hideAllNotes);
    connect(m_ui->showTagsItem, &QAction::triggered, this, &AppDelegate::showTagManagerIfNeeded);
    connect(m_ui->exportDatabaseItem, &QAction::triggered, this,
        [this] { m_exporter->exportDatabase(m_ui->exportDatabaseItem); });
    connect(
        m_ui->importNotesItem, &QAction::triggered, this, [this] { m_import->showImportWindow(); });
    connect(m_ui->exportMarkdownItem, &QAction::triggered, this,
        [this] { m_import->exportMarkdown(nullptr); });
    connect(m_ui->preferencesItem, &QAction::triggered, this,
        [this] { openPreferences(m_ui->preferencesItem); });
    connect(m_ui->aboutItem, &QAction::triggered, this, [this] { openAbout(m_ui->aboutItem); });
    connect(m_ui->helpItem, &QAction::triggered, this, [this] { openHelp(m_ui->helpItem); });
    connect(m_ui->checkForUpdatesItem, &QAction::triggered, this,
        [this] { checkForUpdates(m_ui->checkForUpdatesItem); });
    connect(m_ui->feedbackItem, &QAction::triggered, this, [this] { rateApp(m_ui->feedbackItem); });
    connect(m_ui->quitItem, &QAction::triggered, this, [this] { quitApp(m_ui->quitItem); });
}

void AppDelegate::connectParts()
{
    m_termination = std::make_unique<SNApplicationTermination>(noteWindows(), noteManager());
    connect(m_termination.get(), &SNApplicationTermination::terminatingDidChange, this,
        [this](bool terminating) {
            if (m_preferencesWindowController)
                m_preferencesWindowController->setTerminating(terminating);
        });
    m_presence = std::make_unique<SNDesktopPresence>(
        defaults(), noteWindows(), m_statusItemMenu.get(), this);
    m_exporter = std::make_unique<SNDatabaseExporter>(noteManager(), m_services.presenter);
    m_notesMenuDelegate = std::make_unique<SNNotesMenuDelegate>(noteWindows(), windowManager());
    m_recentlyDeletedMenuDelegate
        = std::make_unique<SNRecentlyDeletedMenuDelegate>(noteManager(), noteWindows());
    m_hotKeys = std::make_unique<SNGlobalHotKeys>(
        defaults(), hotKeyHelper(), [this] { showTagManagerIfNeeded(); },
        [this] { newDocument(nullptr); });

    m_launchRequests
        = std::make_unique<SNLaunchRequestHandler>(noteWindows(), m_services.presenter);
    SNLaunchRequestHandler *requests = m_launchRequests.get();
    connect(requests, &SNLaunchRequestHandler::openURLRequested, this,
        &AppDelegate::handleOpenURLWithReplyEvent);
    connect(requests, &SNLaunchRequestHandler::showAllNotesRequested, this,
        [this] { applicationShouldHandleReopenHasVisibleWindows(false); });
    connect(requests, &SNLaunchRequestHandler::newNoteRequested, this,
        [this] { newDocument(nullptr); });
    connect(requests, &SNLaunchRequestHandler::toggleTagsRequested, this,
        &AppDelegate::showTagManagerIfNeeded);
    connect(requests, &SNLaunchRequestHandler::quitRequested, this, [this] { quitApp(nullptr); });

    m_sync = std::make_unique<SNSyncController>(defaults(), noteManager(), m_services.presenter);
    // What is typed in the windows goes into the store before others' changes meet it.
    m_sync->setBeforeMerge([this] { noteWindows().flushEveryNote(false); });
    connect(m_sync.get(), &SNSyncController::notesMerged, m_noteWindows.get(),
        &SNNoteWindowSet::notesDidMerge);

    m_import
        = std::make_unique<SNImportController>(noteManager(), noteWindows(), m_services.presenter);
}

// Launch and lifecycle

void AppDelegate::applicationWillFinishLaunching()
{
    // A program run from its build folder offers, in the welcome window, to join the
    // applications menu.
    const QString identifier = SNApplicationInfo::applicationIdentifier();
    if (QWApplicationsMenuEntry::isRunningFromBuildTree(QCoreApplication::applicationFilePath())
        && !QWApplicationsMenuEntry::isInstalled(identifier)) {
        m_welcome->setApplicationsMenuInstaller([identifier] {
            return QWApplicationsMenuEntry::install(identifier, resourceBytes(desktopEntryResource),
                resourceBytes(applicationIconResource), QCoreApplication::applicationFilePath());
        });
    }

    QWNotificationCenter &center = QWNotificationCenter::defaultCenter();
    center.addObserverForNameObjectHandler(this, QWWelcomeWindowController::didOpenNotification,
        m_welcome.get(), [this](const QWNotification &) { welcomeWindowDidOpen(); });
    center.addObserverForNameObjectHandler(this, QWWelcomeWindowController::didCloseNotification,
        m_welcome.get(), [this](const QWNotification &) { welcomeWindowDidClose(); });
    center.addObserverForNameObjectHandler(this,
        QWWelcomeWindowController::didToggleRunAtLoginNotification, m_welcome.get(),
        [this](const QWNotification &notification) { didToggleRunAtLogin(notification); });
    // URLs and text for new notes arrive as launch requests, over the session bus.
}

void AppDelegate::applicationDidFinishLaunching()
{
    QWSuperSecret::shhhhhh();
    m_hotKeys->updateHotkeys();

    connect(notesMenu(), &QMenu::aboutToShow, this,
        [this] { m_notesMenuDelegate->menuNeedsUpdate(notesMenu()); });
    connect(recentlyDeletedMenu(), &QMenu::aboutToShow, this,
        [this] { m_recentlyDeletedMenuDelegate->menuNeedsUpdate(recentlyDeletedMenu()); });

    SNThemeManager::sharedManager().load();

    subscribeToNotifications();
    connect(
        &defaults(), &GVUserDefaults::didChangeValueForKey, this, &AppDelegate::settingDidChange);

    m_presence->applicationDidFinishLaunching();

    m_welcome->setShowsRunAtLoginButton(true);
    m_welcome->setRunsAtLogin(defaults().startAtLogin());
    m_welcome->applicationDidLaunch();

    // Otherwise the notes come when the welcome window closes.
    if (m_welcome->canShowMainInterface())
        showAllNotes();
    // Once the windows are there, so that what other computers wrote reaches them.
    m_sync->start();

    m_appDidLaunch = true;
}

void AppDelegate::subscribeToNotifications()
{
    QWNotificationCenter &center = QWNotificationCenter::defaultCenter();
    center.addObserverForNameObjectHandler(this,
        SNStickyNoteWindowController::showTagManagerNotification, nullptr,
        [this](const QWNotification &) { showTagManagerIfNeeded(); });
    center.addObserverForNameObjectHandler(this,
        SNStickyNoteWindowController::openPreferencesNotification, nullptr,
        [this](const QWNotification &) { openPreferences(nullptr); });
    center.addObserverForNameObjectHandler(this, SNStickyNoteWindowController::showHelpNotification,
        nullptr, [this](const QWNotification &) { openHelp(nullptr); });
    center.addObserverForNameObjectHandler(this, SNStickyNoteWindowController::rateAppNotification,
        nullptr, [this](const QWNotification &) { rateApp(nullptr); });
    // The hidden key sequence colours every note; the notes do not know of it themselves.
    center.addObserverForNameObjectHandler(
        this, QWSuperSecret::superSecretNotification, nullptr, [this](const QWNotification &) {
            for (SNStickyNoteWindowController *controller : noteWindows().controllers())
                controller->rainbowize();
        });
}

void AppDelegate::settingDidChange(const QString &key)
{
    if (key == SNUserDefaults::showIconInDockKey())
        m_presence->toggleDockIconVisible();
    else if (key == SNUserDefaults::showMenuIconKey())
        m_presence->toggleMenuBarIconVisible();
    else if (key == SNUserDefaults::startAtLoginKey())
        m_welcome->setRunsAtLogin(defaults().startAtLogin());
    else if (key == SNUserDefaults::hotKeyComboKey() || key == SNUserDefaults::noteHotKeyComboKey()
        || key == SNUserDefaults::hotKeyEnabledKey())
        m_hotKeys->updateHotkeys();
}

void AppDelegate::applicationDidBecomeActive()
{
    setIsActive(true);
}

void AppDelegate::applicationDidResignActive()
{
    setIsActive(false);
}

void AppDelegate::setIsActive(bool active)
{
    m_isActive = active;
    m_presence->setActive(active);
}

bool AppDelegate::applicationShouldHandleReopenHasVisibleWindows(bool)
{
    setIsActive(true);
    m_applicationHider.unhide();
    if (m_welcome->canShowMainInterface())
        showAllNotes();
    else
        m_welcome->showWindow();
    return false;
}

// Notes

bool AppDelegate::shouldShowNotes() const
{
    if (m_launchedFromStartup && !m_appDidLaunch)
        return !defaults().hideWindow();
    return true;
}

void AppDelegate::prepareNoteWindow(QWWindowController *controller)
{
    QWidget *window = controller->window();
    if (!window)
        return;
    m_presence->applyTaskbarPresenceToWindow(window);
    // Ctrl+N makes a new note from any note.
    window->addAction(m_ui->newNoteItem);
    if (auto *note = qobject_cast<SNStickyNoteWindowController *>(controller))
        note->setApplicationMenu(m_applicationMenu.get());
}

void AppDelegate::showAllNotes()
{
    if (noteManager().notesArray().isEmpty())
        newDocument(nullptr);
    else
        noteWindows().showAllNotes(shouldShowNotes());
    // Open preferences come forward with the notes.
    if (m_preferencesWindowController)
        m_preferencesWindowController->actuallyShowWindow();
}

void AppDelegate::hideAllNotes()
{
    noteWindows().hideAllNotes();
    setIsActive(false);
}

void AppDelegate::hideApplication()
{
    // The tag browser closes whenever it loses the keyboard, showing again the notes it had
    // hidden: it closes first, so that hiding the notes has the last word.
    if (m_tagManagerWindowController)
        m_tagManagerWindowController->close(nullptr);
    hideAllNotes();
    m_applicationHider.hide();
}

void AppDelegate::newDocument(QObject *)
{
    if (!m_welcome->canShowMainInterface()) {
        m_services.presenter->beep();
        return;
    }
    noteWindows().openNote(SNStickyNote::note(), shouldShowNotes());
}

void AppDelegate::handleOpenURLWithReplyEvent(const QString &url)
{
    if (QUrl(url).host() == loginLaunchHost())
        m_launchedFromStartup = true;
}

// Commands

void AppDelegate::saveDocument(QObject *sender)
{
    const QPointer<SNStickyNoteWindowController> controller = noteWindows().keyController();
    if (!controller)
        return;
    const QPointer<QObject> item = sender;
    QTimer::singleShot(0, this, [controller, item] {
        if (controller)
            controller->saveNote(item.data());
    });
}

void AppDelegate::toggleStrikethrough(QObject *)
{
    SNStickyNoteWindowController *controller = noteWindows().keyController();
    if (!controller || !controller->isWindowLoaded())
        return;
    // Whoever has the keyboard in the note window answers first, as the editor does; then its
    // parents, then the window's controller.
    QObjectList chain;
    for (QWidget *widget = controller->window()->focusWidget(); widget;
         widget = widget->parentWidget())
        chain.append(widget);
    chain.append(controller);
    for (QObject *responder : std::as_const(chain)) {
        if (responder->metaObject()->indexOfMethod("toggleStrikethrough(QObject*)") >= 0) {
            QMetaObject::invokeMethod(
                responder, "toggleStrikethrough", Qt::QueuedConnection, Q_ARG(QObject *, nullptr));
            return;
        }
    }
}

void AppDelegate::openAbout(QObject *)
{
    makePreferencesControllerIfNeeded();
    // A hidden window takes the About page's size before it is shown, not while it is seen.
    m_preferencesWindowController->selectModuleAtRow(QWPreferencesWindowController::aboutModuleRow);
    m_preferencesWindowController->showWindow();
}

void AppDelegate::openPreferences(QObject *)
{
    if (!m_welcome->canShowMainInterface()) {
        m_services.presenter->beep();
        return;
    }
    makePreferencesControllerIfNeeded();
    m_preferencesWindowController->selectModuleAtRow(
        QWPreferencesWindowController::generalModuleRow);
    m_preferencesWindowController->showWindow();
}

void AppDelegate::makePreferencesControllerIfNeeded()
{
    if (m_preferencesWindowController)
        return;
    m_preferencesWindowController = QWPreferencesWindowController::controller();
    m_preferencesWindowController->setModalPresenter(m_services.presenter);
    m_preferencesWindowController->setSyncState(&m_sync->state());
    m_preferencesWindowController->setHotKeyState(&m_hotKeys->state());
    m_preferencesWindowController->setNoteStore(
        &noteManager(), [this](const QList<std::shared_ptr<SNStickyNote>> &notes) {
            for (const std::shared_ptr<SNStickyNote> &note : notes)
                noteWindows().openNote(note, true);
        });
    connect(m_preferencesWindowController.get(), &QWWindowController::windowWillClose, this,
        &AppDelegate::preferencesDidClose);
}

void AppDelegate::preferencesDidClose()
{
    if (!m_preferencesWindowController)
        return;
    m_preferencesWindowController->disconnect(this);
    m_preferencesReleaseTimer->restart();
}

void AppDelegate::openHelp(QObject *)
{
    if (!m_helpWindowController)
        m_helpWindowController = std::make_unique<SNHelpWindowController>();
    m_helpWindowController->showWindow();
}

void AppDelegate::checkForUpdates(QObject *)
{
    QMessageBox alert(QMessageBox::Information, QCoreApplication::applicationName(),
        tr("Vellumo is updated by your package manager."), QMessageBox::Ok);
    alert.setInformativeText(tr("New versions arrive with your system's other software "
                                "updates; Vellumo itself never connects to the network."));
    m_services.presenter->runAlert(alert);
}

void AppDelegate::rateApp(QObject *)
{
    QDesktopServices::openUrl(QUrl(projectPageURL()));
}

void AppDelegate::quitApp(QObject *)
{
    QCoreApplication::quit();
}

// Tray icon and menus

bool AppDelegate::menuShouldShow()
{
    return m_welcome->canShowMainInterface();
}

void AppDelegate::menuIconWasClicked()
{
    if (!m_isActive) {
        setIsActive(true);
        applicationShouldHandleReopenHasVisibleWindows(false);
    } else {
        hideApplication();
    }
}

void AppDelegate::showTagManagerIfNeeded()
{
    if (m_tagManagerWindowController) {
        m_tagManagerWindowController->close(nullptr);
        return;
    }
    const bool wasActive = QGuiApplication::applicationState() == Qt::ApplicationActive;
    m_tagManagerWindowController = SNTagManagerWindowController::controller();
    m_tagManagerWindowController->setAppWasActive(wasActive);
    // The browser picks tags; which notes show is the note windows' owner's to decide.
    SNNoteWindowSet *notes = &noteWindows();
    SNTagManagerWindowController *browser = m_tagManagerWindowController.get();
    connect(browser, &SNTagManagerWindowController::notesWillBeBrowsed, notes,
        &SNNoteWindowSet::beginTagBrowsing);
    connect(browser, &SNTagManagerWindowController::tagsWerePicked, notes,
        &SNNoteWindowSet::showOnlyNotesWithTags);
    connect(browser, &SNTagManagerWindowController::notesShouldBePutBack, notes,
        &SNNoteWindowSet::endTagBrowsing);
    m_tagManagerWindowController->showWindow();
    connect(m_tagManagerWindowController.get(), &QWWindowController::windowWillClose, this,
        &AppDelegate::tagManagerWindowDidClose);
}

void AppDelegate::tagManagerWindowDidClose()
{
    if (!m_tagManagerWindowController)
        return;
    m_tagManagerWindowController->disconnect(this);
    // Told from inside its own window's closing: it goes once that is over.
    m_tagManagerWindowController.release()->deleteLater();
}

// The welcome window

void AppDelegate::welcomeWindowDidOpen()
{
    noteWindows().hideAllNotes();
    // Nobody starts with an empty desktop: the notes of other programs are offered at once.
    if (SNImportPanel *panel = m_welcome->importPanel())
        m_import->offerIn(panel);
}

void AppDelegate::welcomeWindowDidClose()
{
    // Closed because the program is quitting: no notes to show any more.
    if (m_termination->isTerminating())
        return;
    showAllNotes();
}

void AppDelegate::didToggleRunAtLogin(const QWNotification &notification)
{
    defaults().setStartAtLogin(
        notification.userInfo.value(QWWelcomeWindowController::enabledKey()).toBool());
}
