#include "app/AppDelegate.h"

#include "app/MTStatusItem.h"
#include "app/QWApplicationsMenuEntry.h"
#include "app/QWHotKeyHelper.h"
#include "app/QWWelcomeWindowController.h"
#include "app/QWWorkspace.h"
#include "app/SNApplicationMenu.h"
#include "app/SNHelpWindowController.h"
#include "app/SNLaunchRequest.h"
#include "app/SNNoteArrangement.h"
#include "app/SNNoteFileReader.h"
#include "kit/QWDebouncer.h"
#include "kit/QWTextAttributes.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/QWX11WindowState.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "notewindow/SNStickyWindow.h"
#include "preferences/QWPreferencesWindowController.h"
#include "secret/QWSuperSecret.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "tagbrowser/SNTagManagerWindowController.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "ui_AppDelegate.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QSessionManager>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <algorithm>

namespace {

constexpr double dockIconActivationDelay = 0.1;
constexpr double preferencesReleaseDelay = 0.2;

const QString desktopEntryResource = QStringLiteral(":/Vellumo/org.vellumo.Vellumo.desktop");
const QString applicationIconResource = QStringLiteral(":/Vellumo/icons/org.vellumo.Vellumo.svg");

QByteArray resourceBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QDateTime creationDateOf(const SNStickyNoteWindowController *controller)
{
    const std::shared_ptr<SNStickyNote> &note = controller->note();
    return note ? note->dateCreated().value_or(QDateTime()) : QDateTime();
}

} // namespace

QString AppDelegate::exportFailedMessage()
{
    return tr("Could not export the database");
}

QString AppDelegate::exportFailedInformativeText()
{
    return tr("An error occured when trying to export the database.\nPlease try again.");
}

QString AppDelegate::noteFromServiceErrorText()
{
    return tr("Could not create a note with text");
}

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
      m_statusItemMenu(std::make_unique<QMenu>()),
      m_ui(std::make_unique<Ui::AppDelegate>()),
      m_welcome(std::make_unique<QWWelcomeWindowController>(defaults().userDefaults()))
{
    if (!m_services.presenter)
        m_services.presenter = SNModalPresenter::defaultPresenter();
    m_activationTimer = std::make_unique<QWDebouncer>(dockIconActivationDelay, [this] {
        SNStickyNoteWindowController *key = noteWindows().keyController();
        if (key && key->window()->isVisible())
            key->window()->activateWindow();
    });
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
    m_applicationMenu = std::make_unique<SNApplicationMenu>(
        *m_statusItemMenu, *m_ui->notesMenu, [this](QMenu *menu) { menuNeedsUpdate(menu); });

    connect(
        qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive)
                applicationDidBecomeActive();
            else
                applicationDidResignActive();
        });
    // Qt closes every window before it quits, and closing a note window deletes its note
    // unless the note knows the program is ending: it must know first, whoever asked to quit.
    qApp->installEventFilter(this);
    // Also when the event loop is ended without a quit request.
    connect(qApp, &QCoreApplication::aboutToQuit, this, &AppDelegate::applicationWillTerminate);

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

SNNoteWindowSet &AppDelegate::noteWindows() const
{
    if (!m_noteWindows)
        m_noteWindows = std::make_unique<SNNoteWindowSet>(noteManager(), windowManager());
    return *m_noteWindows;
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

void AppDelegate::connectMenuItems()
{
    connect(
        m_ui->newNoteItem, &QAction::triggered, this, [this] { newDocument(m_ui->newNoteItem); });
    connect(m_ui->noteFromSelectionItem, &QAction::triggered, this,
        [this] { noteFromSelection(m_ui->noteFromSelectionItem); });
    connect(m_ui->showAllNotesItem, &QAction::triggered, this,
        [this] { applicationShouldHandleReopenHasVisibleWindows(false); });
    connect(m_ui->hideAllNotesItem, &QAction::triggered, this, &AppDelegate::hideAllNotes);
    connect(m_ui->showTagsItem, &QAction::triggered, this, &AppDelegate::showTagManagerIfNeeded);
    connect(m_ui->exportDatabaseItem, &QAction::triggered, this,
        [this] { exportDatabase(m_ui->exportDatabaseItem); });
    connect(m_ui->preferencesItem, &QAction::triggered, this,
        [this] { openPreferences(m_ui->preferencesItem); });
    connect(m_ui->aboutItem, &QAction::triggered, this, [this] { openAbout(m_ui->aboutItem); });
    connect(m_ui->helpItem, &QAction::triggered, this, [this] { openHelp(m_ui->helpItem); });
    connect(m_ui->checkForUpdatesItem, &QAction::triggered, this,
        [this] { checkForUpdates(m_ui->checkForUpdatesItem); });
    connect(m_ui->feedbackItem, &QAction::triggered, this, [this] { rateApp(m_ui->feedbackItem); });
    connect(m_ui->quitItem, &QAction::triggered, this, [this] { quitApp(m_ui->quitItem); });
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
    m_hotKeyID = -1;
    m_noteHotKeyID = -1;
    updateHotkeys();

    connect(notesMenu(), &QMenu::aboutToShow, this, [this] { menuNeedsUpdate(notesMenu()); });

    SNThemeManager::sharedManager().load();

    subscribeToNotifications();
    connect(
        &defaults(), &GVUserDefaults::didChangeValueForKey, this, &AppDelegate::settingDidChange);

    toggleDockIconVisible();
    if (!defaults().showMenuIcon() && !defaults().showIconInDock())
        defaults().setShowMenuIcon(true);
    makeStatusItemIfNeeded();
    toggleMenuBarIconVisible();

    m_welcome->setShowsRunAtLoginButton(true);
    m_welcome->setRunsAtLogin(defaults().startAtLogin());
    m_welcome->applicationDidLaunch();

    // Otherwise the notes come when the welcome window closes.
    if (m_welcome->canShowMainInterface())
        showAllNotes();

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
        toggleDockIconVisible();
    else if (key == SNUserDefaults::showMenuIconKey())
        toggleMenuBarIconVisible();
    else if (key == SNUserDefaults::startAtLoginKey())
        m_welcome->setRunsAtLogin(defaults().startAtLogin());
    else if (key == SNUserDefaults::hotKeyComboKey() || key == SNUserDefaults::noteHotKeyComboKey()
        || key == SNUserDefaults::hotKeyEnabledKey())
        updateHotkeys();
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Quit && watched == qApp) {
        if (!applicationShouldTerminate()) {
            event->ignore();
            return true;
        }
        applicationWillTerminate();
    }
    return QObject::eventFilter(watched, event);
}

bool AppDelegate::applicationShouldTerminate()
{
    // Any window may refuse to close and so cancel the quit (the preferences do while a theme
    // has no name). The notes are told the program ends only once every other window has
    // closed: told too early, the notes Qt closes before a refusal would vanish undeleted and
    // the others could no longer be deleted.
    m_isTerminating = true;
    if (m_preferencesWindowController)
        m_preferencesWindowController->setTerminating(true);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && window->windowType() != Qt::Popup
            && !qobject_cast<SNStickyWindow *>(window) && !window->close()) {
            m_isTerminating = false;
            if (m_preferencesWindowController)
                m_preferencesWindowController->setTerminating(false);
            return false;
        }
    }
    return true;
}

void AppDelegate::applicationWillTerminate()
{
    // A quit request and the end of the event loop both lead here: the archive is written once.
    if (m_didTerminate)
        return;
    m_didTerminate = true;
    m_isTerminating = true;
    if (m_preferencesWindowController)
        m_preferencesWindowController->setTerminating(true);
    noteWindows().flushEveryNote(true);
    noteManager().save();
    noteManager().waitForBackgroundSaves();
}

void AppDelegate::applicationMustTerminate()
{
    applicationWillTerminate();
    // Ends every event loop, a dialog's too; the windows are not asked to close.
    QCoreApplication::exit(0);
}

void AppDelegate::commitDataRequest(QSessionManager &)
{
    // Not terminating yet: the user may cancel the logout and go on closing notes.
    noteWindows().flushEveryNote(false);
    noteManager().save();
    noteManager().waitForBackgroundSaves();
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
    if (m_statusItem)
        m_statusItem->setActive(active);
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
    const bool skipsTaskbar = !showsNotesInTaskbar();
    if (QWX11WindowState::skipsTaskbar(window) != skipsTaskbar)
        QWX11WindowState::setSkipsTaskbar(window, skipsTaskbar);
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

void AppDelegate::applicationOpenFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        const std::optional<QWAttributedString> text
            = SNNoteFileReader::attributedStringWithContentsOfPath(path);
        if (!text || text->length() == 0)
            continue;
        const std::shared_ptr<SNStickyNote> note = SNStickyNote::note();
        note->setAttributedString(*text);
        noteWindows().openNote(note, true);
    }
}

void AppDelegate::noteFromServiceUserDataError(
    const QString &pasteboardText, const QString &, QString *error)
{
    if (pasteboardText.isEmpty()) {
        if (error)
            *error = noteFromServiceErrorText();
        return;
    }
    const std::shared_ptr<SNStickyNote> note = SNStickyNote::note();
    QWTextAttributes attributes;
    if (const std::shared_ptr<SNTheme> theme = note->theme()) {
        attributes.setForegroundColor(theme->defaultFontColor());
        attributes.setFont(theme->defaultFont());
    }
    note->setAttributedString(QWAttributedString(pasteboardText, attributes));
    noteWindows().openNote(note, true);
}

QString AppDelegate::selectedText() const
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection()) {
        const QString selection = clipboard->text(QClipboard::Selection);
        if (!selection.isEmpty())
            return selection;
    }
    return clipboard->text(QClipboard::Clipboard);
}

void AppDelegate::noteFromSelection(QObject *)
{
    QString error;
    noteFromServiceUserDataError(selectedText(), QString(), &error);
    if (error.isEmpty())
        return;
    QMessageBox alert(QMessageBox::Warning, QCoreApplication::applicationName(), error);
    m_services.presenter->runAlert(alert);
}

void AppDelegate::handleOpenURLWithReplyEvent(const QString &url)
{
    if (QUrl(url).host() == loginLaunchHost())
        m_launchedFromStartup = true;
}

QString AppDelegate::handleLaunchRequest(const SNLaunchRequest &request)
{
    if (request.isEmpty()) {
        applicationShouldHandleReopenHasVisibleWindows(false);
        return {};
    }
    QStringList paths;
    for (const QString &uri : request.uris) {
        const QUrl url(uri);
        if (url.scheme() == QLatin1String("vellumo"))
            handleOpenURLWithReplyEvent(uri);
        else if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    if (!paths.isEmpty())
        applicationOpenFiles(paths);

    QString error;
    for (const QString &action : request.actions) {
        if (action == SNLaunchRequest::newNoteAction()) {
            newDocument(nullptr);
        } else if (action == SNLaunchRequest::showAllNotesAction()) {
            applicationShouldHandleReopenHasVisibleWindows(false);
        } else if (action == SNLaunchRequest::toggleTagsAction()) {
            showTagManagerIfNeeded();
        } else if (action == SNLaunchRequest::noteFromSelectionAction()) {
            noteFromServiceUserDataError(
                request.selectionText.value_or(selectedText()), QString(), &error);
        } else if (action == SNLaunchRequest::quitAction()) {
            quitApp(nullptr);
        } else {
            error = tr("Vellumo has no action \"%1\".").arg(action);
        }
    }
    return error;
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

void AppDelegate::exportDatabase(QObject *)
{
    QFileDialog panel(nullptr, tr("Export All Notes"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setLabelText(QFileDialog::Accept, tr("Choose"));
    panel.setNameFilter(tr("Notes archive (*.db)"));
    panel.setDefaultSuffix(QStringLiteral("db"));
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.selectFile(SNStickyNoteManager::databaseFileName);

    const QString path = m_services.presenter->runSavePanel(panel);
    if (path.isEmpty())
        return;
    if (noteManager().exportDatabaseToPath(path)) {
        QWWorkspace::selectFileInFileViewerRootedAtPath(path, QString());
        return;
    }
    QMessageBox alert(QMessageBox::Warning, QCoreApplication::applicationName(),
        exportFailedMessage(), QMessageBox::Ok);
    alert.setInformativeText(exportFailedInformativeText());
    m_services.presenter->runAlert(alert);
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

void AppDelegate::showWindowControllerFromMenuItem(QAction *sender)
{
    if (!sender)
        return;
    // The item may outlive its note's window: only a controller still managed is used.
    auto *represented
        = qobject_cast<SNStickyNoteWindowController *>(sender->data().value<QObject *>());
    if (represented && noteWindows().contains(represented))
        windowManager().showWindow(represented->window());
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

void AppDelegate::menuNeedsUpdate(QMenu *menu)
{
    menu->clear();
    generateNotesInMenu(menu);
}

void AppDelegate::generateNotesInMenu(QMenu *menu)
{
    QList<SNStickyNoteWindowController *> controllers = noteWindows().controllers();
    // Newest first.
    std::stable_sort(controllers.begin(), controllers.end(),
        [](const SNStickyNoteWindowController *first, const SNStickyNoteWindowController *second) {
            return creationDateOf(second) < creationDateOf(first);
        });
    for (SNStickyNoteWindowController *controller : std::as_const(controllers)) {
        QAction *item = menu->addAction(controller->window()->windowTitle());
        item->setData(QVariant::fromValue<QObject *>(controller));
        connect(item, &QAction::triggered, this,
            [this, item] { showWindowControllerFromMenuItem(item); });
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

void AppDelegate::updateHotkeys()
{
    QWHotKeyHelper &helper = hotKeyHelper();
    // The identifiers keep their values: unregistering a stale one later does nothing.
    if (m_hotKeyID != -1)
        helper.unregisterHotkeyWithID(m_hotKeyID);
    if (m_noteHotKeyID != -1)
        helper.unregisterHotkeyWithID(m_noteHotKeyID);
    if (!defaults().hotKeyEnabled())
        return;
    if (!helper.pressedBlock()) {
        helper.setPressedBlock([controller = QPointer<AppDelegate>(this)](qint64 identifier) {
            if (controller)
                controller->hotKeyWasPressed(identifier);
        });
    }
    m_hotKeyID = helper.registerHotKey(defaults().hotKeyCombo());
    m_noteHotKeyID = helper.registerHotKey(defaults().noteHotKeyCombo());
}

void AppDelegate::hotKeyWasPressed(qint64 identifier)
{
    if (identifier == m_hotKeyID)
        showTagManagerIfNeeded();
    else
        newDocument(nullptr);
}

void AppDelegate::toggleMenuBarIconVisible()
{
    if (defaults().showMenuIcon())
        makeStatusItemIfNeeded();
    else
        removeStatusItemIfNeeded();
    // Without the tray icon the taskbar is the way back to the notes.
    applyTaskbarPresence();
}

void AppDelegate::makeStatusItemIfNeeded()
{
    if (!defaults().showMenuIcon())
        return;
    if (m_statusItem) {
        m_statusItem->makeStatusItem();
        return;
    }
    m_statusItem = new MTStatusItem(this);
    m_statusItem->setContextMenu(m_statusItemMenu.get());
    m_statusItem->setDelegate(this);
    m_statusItem->setActive(m_isActive);
}

void AppDelegate::removeStatusItemIfNeeded()
{
    if (m_statusItem && !defaults().showMenuIcon())
        m_statusItem->destroy();
}

void AppDelegate::toggleDockIconVisible()
{
    setDockIconVisible(defaults().showIconInDock());
}

bool AppDelegate::showsNotesInTaskbar() const
{
    return defaults().showIconInDock() || !defaults().showMenuIcon()
        || !QSystemTrayIcon::isSystemTrayAvailable();
}

void AppDelegate::applyTaskbarPresence()
{
    const bool skipsTaskbar = !showsNotesInTaskbar();
    for (SNStickyNoteWindowController *controller : noteWindows().controllers()) {
        if (controller->isWindowLoaded()
            && QWX11WindowState::skipsTaskbar(controller->window()) != skipsTaskbar)
            QWX11WindowState::setSkipsTaskbar(controller->window(), skipsTaskbar);
    }
}

void AppDelegate::setDockIconVisible(bool visible)
{
    applyTaskbarPresence();
    if (visible)
        return;
    // Leaving the taskbar can cost a window the focus; give it back to the note in use.
    m_activationTimer->restart();
}

// The welcome window

void AppDelegate::welcomeWindowDidOpen()
{
    noteWindows().hideAllNotes();
}

void AppDelegate::welcomeWindowDidClose()
{
    // Closed because the program is quitting: no notes to show any more.
    if (m_isTerminating)
        return;
    showAllNotes();
}

void AppDelegate::didToggleRunAtLogin(const QWNotification &notification)
{
    defaults().setStartAtLogin(
        notification.userInfo.value(QWWelcomeWindowController::enabledKey()).toBool());
}
