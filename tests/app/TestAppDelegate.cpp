#include "app/AppDelegate.h"
#include "app/MTStatusItem.h"
#include "app/QWHotKeyGrabber.h"
#include "app/QWHotKeyHelper.h"
#include "app/QWWelcomeWindowController.h"
#include "app/SNApplicationMenu.h"
#include "app/SNHelpWindowController.h"
#include "app/SNLaunchRequest.h"
#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/QWX11WindowState.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTextView.h"
#include "preferences/QWPreferencesWindowController.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "secret/QWSuperSecret.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "themes/SNTheme.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPropertyAnimation>
#include <QSaveFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

// Answers in place of a person and remembers what was asked.
class RecordingPresenter final : public SNModalPresenter
{
public:
    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        alerts.append({ alert.text(), alert.informativeText() });
        return nullptr;
    }
    QString runSavePanel(QFileDialog &panel) override
    {
        panelAcceptLabels.append(panel.labelText(QFileDialog::Accept));
        panelFiles.append(panel.selectedFiles().value(0));
        panelSuffixes.append(panel.defaultSuffix());
        return savePath;
    }
    void beep() override { ++beeps; }

    QList<QStringList> alerts;
    QStringList panelAcceptLabels;
    QStringList panelFiles;
    QStringList panelSuffixes;
    QString savePath;
    int beeps = 0;
};

class RecordingGrabber final : public QWHotKeyGrabber
{
public:
    bool grabKeyWithIdentifier(qint64 code, quint16, qint64 identifier) override
    {
        codes.insert(identifier, code);
        return true;
    }
    void ungrabKeyWithIdentifier(qint64 identifier) override { codes.remove(identifier); }
    void press(qint64 identifier) const { keyWasPressed(identifier); }

    QHash<qint64, qint64> codes; // held grabs: identifier to key code
};

std::shared_ptr<SNStickyNote> noteWithText(const QString &text, const QDateTime &created)
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    note->setDateCreated(created);
    return note;
}

QString textOf(const std::shared_ptr<SNStickyNote> &note)
{
    return note->attributedString().value_or(QWAttributedString()).string();
}

} // namespace

// Notes, at each note window's showing, how many note windows had been built by then.
class NoteWindowShowings final : public QObject
{
public:
    explicit NoteWindowShowings(std::function<qsizetype()> built) : m_built(std::move(built))
    {
        qApp->installEventFilter(this);
    }
    QList<qsizetype> builtWhenShown;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<SNStickyWindow *>(watched))
            builtWhenShown.append(m_built());
        return false;
    }

private:
    std::function<qsizetype()> m_built;
};

class TestAppDelegate final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void launchWithoutNotesMakesOneNewNote();
    void eachNoteShowsBeforeTheNextIsBuilt();
    void loginStartDecidesWhetherNotesShow_data();
    void loginStartDecidesWhetherNotesShow();
    void notesHiddenAtLoginComeWithAClickOnTheTrayIcon();
    void trayIconHidesTheWholeProgramAndBringsBackWhatWasShown();
    void bothIconsOffTurnsTheTrayIconOn();
    void trayIconIsReusedAcrossTheSetting();
    void withoutATrayNotesStayInTheTaskbar();
    void notesMenuListsNewestFirst();
    void everyTrayCommandIsInEachNotesVellumoMenu();
    void hiddenKeySequenceColoursEveryNote();
    void arrangedNotesTileSaveTheirFramesAndGoBack();
    void hotKeysRegisterWithFreshIdentifiers();
    void emptyHotKeysRegisterNothing();
    void hotKeyPressesDispatchByIdentifier();
    void firstRunWaitsForTheWelcomeWindow();
    void openedFilesBecomeNotesWhenTheyHoldText();
    void noteFromServiceUsesTheThemeAndNeedsText();
    void launchRequestsRunTheirActions();
    void exportFailureShowsTheAlert();
    void saveDocumentGoesToTheActiveNote();
    void quittingKeepsEveryNoteAndItsLastEdit();
    void refusedQuitLeavesEveryNoteAsItWas();
    // These run the event loop to its end: last.
    void quitWritesTheArchiveOnce();
    void terminationSignalEndsTheProgramWhateverItsWindowsSay();

private:
    AppDelegate &launch(const QString &url = QString());
    QList<SNStickyNoteWindowController *> noteControllers() const;
    int visibleNoteWindows() const;
    QWPreferencesWindowController *openThemeWithoutName();

    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SNUserDefaults> m_defaults;
    std::unique_ptr<SNStickyNoteManager> m_store;
    std::unique_ptr<QWWindowManager> m_windows;
    RecordingGrabber *m_grabber = nullptr;
    std::unique_ptr<QWHotKeyHelper> m_hotKeys;
    std::shared_ptr<RecordingPresenter> m_presenter;
    std::unique_ptr<AppDelegate> m_delegate;
    int m_archiveWrites = 0;
};

void TestAppDelegate::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    m_folder = std::make_unique<QTemporaryDir>();
    m_defaults = GVUserDefaults::make<SNUserDefaults>();
    m_defaults->userDefaults().clear();
    // Every user but the one of firstRunWaitsForTheWelcomeWindow has met Vellumo before.
    m_defaults->userDefaults().setValue(QWWelcomeWindowController::wasShownKey(), true);
    // Starts with the welcome notes, as a first start does.
    m_store = std::make_unique<SNStickyNoteManager>(m_folder->path());
    m_store->setSaveFileFactory([this](const QString &path) {
        ++m_archiveWrites;
        return std::make_unique<QSaveFile>(path);
    });
    m_windows = std::make_unique<QWWindowManager>();
    auto grabber = std::make_unique<RecordingGrabber>();
    m_grabber = grabber.get();
    m_hotKeys = std::make_unique<QWHotKeyHelper>(std::move(grabber));
    m_presenter = std::make_shared<RecordingPresenter>();
    AppDelegate::Services services;
    services.defaults = m_defaults.get();
    services.noteManager = m_store.get();
    services.windowManager = m_windows.get();
    services.hotKeyHelper = m_hotKeys.get();
    services.presenter = m_presenter;
    m_delegate = std::make_unique<AppDelegate>(services);
}

void TestAppDelegate::cleanup()
{
    m_delegate.reset();
    m_windows.reset();
    m_hotKeys.reset();
    m_store.reset();
    m_defaults->userDefaults().clear();
    m_defaults.reset();
    m_folder.reset();
    m_scheduler.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

AppDelegate &TestAppDelegate::launch(const QString &url)
{
    m_delegate->applicationWillFinishLaunching();
    if (!url.isEmpty())
        m_delegate->handleOpenURLWithReplyEvent(url);
    m_delegate->applicationDidFinishLaunching();
    return *m_delegate;
}

QList<SNStickyNoteWindowController *> TestAppDelegate::noteControllers() const
{
    return m_windows->windowControllersForClass<SNStickyNoteWindowController>();
}

int TestAppDelegate::visibleNoteWindows() const
{
    int visible = 0;
    for (SNStickyNoteWindowController *controller : noteControllers())
        visible += controller->isWindowLoaded() && controller->window()->isVisible() ? 1 : 0;
    return visible;
}

void TestAppDelegate::launchWithoutNotesMakesOneNewNote()
{
    for (const auto &note : m_store->notesArray())
        m_store->removeNote(note);
    launch();
    QCOMPARE(m_store->notesArray().size(), 1);
    QCOMPARE(noteControllers().size(), 1);
    QCOMPARE(noteControllers().constFirst()->note(), m_store->notesArray().constFirst());
    QCOMPARE(visibleNoteWindows(), 1);
    QVERIFY(m_delegate->appDidLaunch());
}

void TestAppDelegate::eachNoteShowsBeforeTheNextIsBuilt()
{
    const qsizetype notes = m_store->notesArray().size();
    QVERIFY(notes > 2);
    NoteWindowShowings showings([] {
        const QWidgetList windows = QApplication::topLevelWidgets();
        return std::count_if(windows.cbegin(), windows.cend(),
            [](const QWidget *window) { return qobject_cast<const SNStickyWindow *>(window); });
    });
    launch();
    // The window manager can take on the first notes while the others are still being built.
    QList<qsizetype> oneByOne;
    for (qsizetype built = 1; built <= notes; ++built)
        oneByOne.append(built);
    QCOMPARE(showings.builtWhenShown, oneByOne);
}

void TestAppDelegate::loginStartDecidesWhetherNotesShow_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("hideWindow");
    QTest::addColumn<bool>("startedAtLogin");
    QTest::addColumn<bool>("shown");
    QTest::newRow("at login, hideWindow on") << "vellumo://lal" << true << true << false;
    QTest::newRow("at login, hideWindow off") << "vellumo://lal" << false << true << true;
    QTest::newRow("ordinary start, hideWindow on") << QString() << true << false << true;
    QTest::newRow("another host") << "vellumo://lalala" << true << false << true;
    QTest::newRow("host only in the path") << "vellumo:lal" << true << false << true;
    QTest::newRow("another scheme's host") << "https://lal.example/" << true << false << true;
}

void TestAppDelegate::loginStartDecidesWhetherNotesShow()
{
    QFETCH(QString, url);
    QFETCH(bool, hideWindow);
    QFETCH(bool, startedAtLogin);
    QFETCH(bool, shown);
    m_defaults->setHideWindow(hideWindow);
    const qsizetype notes = m_store->notesArray().size();
    QVERIFY(notes > 1);

    launch(url);
    QCOMPARE(m_delegate->launchedFromStartup(), startedAtLogin);
    // The windows exist either way, one per note, in store order.
    QCOMPARE(noteControllers().size(), notes);
    for (qsizetype i = 0; i < notes; ++i)
        QCOMPARE(noteControllers().at(i)->note(), m_store->notesArray().at(i));
    QCOMPARE(visibleNoteWindows(), shown ? notes : 0);

    // After the launch a new note always shows.
    m_delegate->newDocument(nullptr);
    QVERIFY(noteControllers().constLast()->window()->isVisible());
}

void TestAppDelegate::notesHiddenAtLoginComeWithAClickOnTheTrayIcon()
{
    m_defaults->setHideWindow(true);
    launch(QStringLiteral("vellumo://lal"));
    QCOMPARE(visibleNoteWindows(), 0);
    const qsizetype notes = noteControllers().size();

    m_delegate->menuIconWasClicked();
    QVERIFY(m_delegate->isActive());
    QCOMPARE(visibleNoteWindows(), notes);
    // No second set of windows.
    QCOMPARE(noteControllers().size(), notes);

    // The next click hides them all, and keeps them.
    m_delegate->menuIconWasClicked();
    QVERIFY(!m_delegate->isActive());
    QCOMPARE(visibleNoteWindows(), 0);
    QCOMPARE(noteControllers().size(), notes);
}

void TestAppDelegate::trayIconHidesTheWholeProgramAndBringsBackWhatWasShown()
{
    launch();
    m_delegate->openHelp(nullptr);
    QWidget *help = m_delegate->helpWindowController()->window();
    help->close();
    m_delegate->openPreferences(nullptr);
    QWidget *preferences = m_delegate->preferencesWindowController()->window();

    m_delegate->setIsActive(true);
    m_delegate->menuIconWasClicked();
    QCOMPARE(visibleNoteWindows(), 0);
    QVERIFY(!preferences->isVisible());
    m_delegate->menuIconWasClicked();
    QCOMPARE(visibleNoteWindows(), noteControllers().size());
    QVERIFY(preferences->isVisible());
    QVERIFY(!help->isVisible());

    // "Show All Notes" brings the open preferences forward with the notes.
    noteControllers().constFirst()->window()->activateWindow();
    QTRY_VERIFY(noteControllers().constFirst()->window()->isActiveWindow());
    m_delegate->showAllNotes();
    QTRY_VERIFY(preferences->isActiveWindow());
}

void TestAppDelegate::bothIconsOffTurnsTheTrayIconOn()
{
    m_defaults->setShowMenuIcon(false);
    m_defaults->setShowIconInDock(false);
    launch();
    QVERIFY(m_defaults->showMenuIcon());
    QVERIFY(m_delegate->statusItem());
    QVERIFY(m_delegate->statusItem()->statusItem());
    QCOMPARE(m_delegate->statusItem()->contextMenu(), m_delegate->statusItemMenu());
    QCOMPARE(m_delegate->statusItem()->delegate(), m_delegate.get());
}

void TestAppDelegate::trayIconIsReusedAcrossTheSetting()
{
    // With the taskbar presence on, the tray icon may go: it stays off at launch.
    m_defaults->setShowMenuIcon(false);
    launch();
    QVERIFY(!m_defaults->showMenuIcon());
    QVERIFY(!m_delegate->statusItem());

    m_defaults->setShowMenuIcon(true);
    MTStatusItem *item = m_delegate->statusItem();
    QVERIFY(item);
    QVERIFY(item->statusItem());

    m_defaults->setShowMenuIcon(false);
    QCOMPARE(m_delegate->statusItem(), item);
    QVERIFY(!item->statusItem());

    m_defaults->setShowMenuIcon(true);
    QCOMPARE(m_delegate->statusItem(), item);
    QVERIFY(item->statusItem());
}

void TestAppDelegate::withoutATrayNotesStayInTheTaskbar()
{
    QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
    m_defaults->setShowIconInDock(false);
    launch();
    QVERIFY(m_delegate->showsNotesInTaskbar());
    for (SNStickyNoteWindowController *controller : noteControllers())
        QVERIFY(!QWX11WindowState::skipsTaskbar(controller->window()));
    m_delegate->newDocument(nullptr);
    QVERIFY(!QWX11WindowState::skipsTaskbar(noteControllers().constLast()->window()));
}

void TestAppDelegate::notesMenuListsNewestFirst()
{
    QMenu *menu = m_delegate->notesMenu();
    m_delegate->menuNeedsUpdate(menu);
    QVERIFY(menu->actions().isEmpty());

    for (const auto &note : m_store->notesArray())
        m_store->removeNote(note);
    const QDateTime start(QDate(2024, 5, 1), QTime(9, 0));
    m_store->addNote(noteWithText(QStringLiteral("middle"), start.addDays(1)));
    m_store->addNote(noteWithText(QStringLiteral("newest"), start.addDays(2)));
    m_store->addNote(noteWithText(QStringLiteral("oldest"), start));
    launch();

    menu->popup(QPoint(0, 0)); // regenerated on every opening
    menu->close();
    const QList<QAction *> items = menu->actions();
    QCOMPARE(items.size(), 3);
    QStringList order;
    for (QAction *item : items) {
        auto *controller
            = qobject_cast<SNStickyNoteWindowController *>(item->data().value<QObject *>());
        QVERIFY(controller);
        QCOMPARE(item->text(), controller->window()->windowTitle());
        order.append(textOf(controller->note()));
    }
    QCOMPARE(order,
        (QStringList {
            QStringLiteral("newest"), QStringLiteral("middle"), QStringLiteral("oldest") }));

    // Opening again does not pile items up; picking one brings its note back.
    m_delegate->menuNeedsUpdate(menu);
    QCOMPARE(menu->actions().size(), 3);
    m_delegate->hideAllNotes();
    menu->actions().at(1)->trigger();
    QCOMPARE(visibleNoteWindows(), 1);
    auto *middle = qobject_cast<SNStickyNoteWindowController *>(
        menu->actions().at(1)->data().value<QObject *>());
    QVERIFY(middle->window()->isVisible());

    // An item whose note window has gone does nothing.
    QAction stale;
    QObject gone;
    stale.setData(QVariant::fromValue<QObject *>(&gone));
    m_delegate->showWindowControllerFromMenuItem(&stale);
    QCOMPARE(visibleNoteWindows(), 1);
}

void TestAppDelegate::everyTrayCommandIsInEachNotesVellumoMenu()
{
    launch();
    const QList<QAction *> tray = m_delegate->statusItemMenu()->actions();
    for (SNStickyNoteWindowController *controller : noteControllers()) {
        const QList<QAction *> settings = controller->settingsMenu()->actions();
        const auto vellumo = std::find_if(settings.cbegin(), settings.cend(),
            [](const QAction *item) { return item->text() == QStringLiteral("Vellumo"); });
        QVERIFY(vellumo != settings.cend() && (*vellumo)->menu());
        const QList<QAction *> items = (*vellumo)->menu()->actions();
        QCOMPARE(items.size(), tray.size());
        for (qsizetype i = 0; i < tray.size(); ++i) {
            if (tray.at(i) != m_delegate->notesMenu()->menuAction())
                QCOMPARE(items.at(i), tray.at(i));
        }
    }
    // Its notes list fills as it opens, as the tray's does.
    QMenu *notes = m_delegate->applicationMenu()->notesMenu();
    notes->popup(QPoint(0, 0));
    notes->close();
    QCOMPARE(notes->actions().size(), noteControllers().size());
}

void TestAppDelegate::hiddenKeySequenceColoursEveryNote()
{
    launch();
    QVERIFY(!noteControllers().isEmpty());
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        QWSuperSecret::superSecretNotification);
    for (SNStickyNoteWindowController *controller : noteControllers())
        QVERIFY(controller->secretUnlocked());
}

void TestAppDelegate::arrangedNotesTileSaveTheirFramesAndGoBack()
{
    launch();
    const QList<SNStickyNoteWindowController *> notes = noteControllers();
    const auto frames = [&notes] {
        QList<QRect> result;
        for (SNStickyNoteWindowController *controller : notes)
            result.append(controller->window()->geometry());
        return result;
    };
    const QList<QRect> before = frames();
    QHash<QString, QAction *> items;
    for (QAction *item : m_delegate->statusItemMenu()->actions())
        items.insert(item->text(), item);
    QAction *putBack = items.value(QStringLiteral("Put Notes Back"));
    QVERIFY(putBack && !putBack->isEnabled());

    items.value(QStringLiteral("Arrange Notes"))->trigger();
    QVERIFY(putBack->isEnabled());
    QTRY_VERIFY(std::none_of(notes.cbegin(), notes.cend(), [](SNStickyNoteWindowController *note) {
        return note->window()->findChild<QPropertyAnimation *>();
    }));
    // One size for all, side by side.
    const QList<QRect> tiled = frames();
    for (qsizetype i = 0; i < tiled.size(); ++i) {
        QCOMPARE(tiled.at(i).size(), tiled.constFirst().size());
        QVERIFY(tiled.at(i) != before.at(i));
        for (qsizetype j = 0; j < i; ++j)
            QVERIFY(!tiled.at(i).intersects(tiled.at(j)));
    }
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    for (SNStickyNoteWindowController *controller : notes)
        QCOMPARE(controller->note()->windowFrame(), controller->frameString());

    putBack->trigger();
    QTRY_COMPARE(frames(), before);
    QVERIFY(!putBack->isEnabled());
}

void TestAppDelegate::hotKeysRegisterWithFreshIdentifiers()
{
    launch();
    QCOMPARE(m_delegate->hotKeyID(), 1);
    QCOMPARE(m_delegate->noteHotKeyID(), 2);
    QCOMPARE(m_grabber->codes, (QHash<qint64, qint64> { { 1, 45 }, { 2, 45 } }));

    m_defaults->setHotKeyEnabled(false);
    QVERIFY(m_grabber->codes.isEmpty());
    // The identifiers keep their old values.
    QCOMPARE(m_delegate->hotKeyID(), 1);
    QCOMPARE(m_delegate->noteHotKeyID(), 2);

    m_defaults->setHotKeyEnabled(true);
    QCOMPARE(m_delegate->hotKeyID(), 3);
    QCOMPARE(m_delegate->noteHotKeyID(), 4);

    // A new combination replaces both registrations.
    m_defaults->setNoteHotKeyCombo(QWKeyCombo { QWKeyCombo::ControlKeyMask, 49 });
    QCOMPARE(m_delegate->hotKeyID(), 5);
    QCOMPARE(m_delegate->noteHotKeyID(), 6);
    QCOMPARE(m_grabber->codes, (QHash<qint64, qint64> { { 5, 45 }, { 6, 49 } }));
}

void TestAppDelegate::emptyHotKeysRegisterNothing()
{
    m_defaults->setHotKeyCombo(QWKeyCombo {});
    m_defaults->setNoteHotKeyCombo(QWKeyCombo {});
    launch();
    QCOMPARE(m_delegate->hotKeyID(), -1);
    QCOMPARE(m_delegate->noteHotKeyID(), -1);
    QVERIFY(m_grabber->codes.isEmpty());
}

void TestAppDelegate::hotKeyPressesDispatchByIdentifier()
{
    launch();
    const qsizetype notes = noteControllers().size();

    m_grabber->press(m_delegate->noteHotKeyID());
    QCOMPARE(noteControllers().size(), notes + 1);
    QVERIFY(noteControllers().constLast()->window()->isVisible());

    // The show-tags hot key never makes a note.
    m_grabber->press(m_delegate->hotKeyID());
    QCOMPARE(noteControllers().size(), notes + 1);

    // Every identifier other than the show-tags one means a new note, stale ones included.
    const qint64 stale = m_delegate->hotKeyID();
    m_defaults->setHotKeyEnabled(false);
    m_defaults->setHotKeyEnabled(true);
    m_grabber->press(stale);
    QCOMPARE(noteControllers().size(), notes + 2);
    m_grabber->press(m_delegate->hotKeyID());
    QCOMPARE(noteControllers().size(), notes + 2);
}

void TestAppDelegate::firstRunWaitsForTheWelcomeWindow()
{
    m_defaults->userDefaults().remove(QWWelcomeWindowController::wasShownKey());
    launch();
    QWWelcomeWindowController *welcome = m_delegate->welcomeWindowController();
    QVERIFY(welcome->isOpen());
    QVERIFY(welcome->window()->isVisible());
    QVERIFY(noteControllers().isEmpty());
    QVERIFY(!m_delegate->menuShouldShow());

    // While it is open, new notes and the preferences only beep.
    m_delegate->newDocument(nullptr);
    m_delegate->openPreferences(nullptr);
    QCOMPARE(m_presenter->beeps, 2);
    QVERIFY(noteControllers().isEmpty());

    // Its switch runs the login item through the settings.
    auto *runAtLogin = welcome->window()->findChild<QCheckBox *>();
    QVERIFY(runAtLogin && runAtLogin->isVisibleTo(welcome->window()));
    runAtLogin->click();
    QVERIFY(m_defaults->startAtLogin());
    m_defaults->setStartAtLogin(false);
    QVERIFY(!runAtLogin->isChecked());

    // Closing it brings the notes.
    welcome->window()->close();
    QVERIFY(m_delegate->menuShouldShow());
    QCOMPARE(noteControllers().size(), m_store->notesArray().size());
    QCOMPARE(visibleNoteWindows(), noteControllers().size());
}

void TestAppDelegate::openedFilesBecomeNotesWhenTheyHoldText()
{
    launch();
    const qsizetype notes = m_store->notesArray().size();
    const QString rtf = m_folder->filePath(QStringLiteral("letter.rtf"));
    const QString empty = m_folder->filePath(QStringLiteral("empty.rtf"));
    const QString binary = m_folder->filePath(QStringLiteral("picture.png"));
    for (const auto &[path, bytes] :
        { std::pair { rtf, QByteArray("{\\rtf1\\ansi Dear {\\b Anna}}") },
            std::pair { empty, QByteArray("{\\rtf1\\ansi }") },
            std::pair { binary, QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) } }) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    m_delegate->applicationOpenFiles(
        { empty, binary, m_folder->filePath(QStringLiteral("missing.rtf")), rtf });
    QCOMPARE(m_store->notesArray().size(), notes + 1);
    const std::shared_ptr<SNStickyNote> note = m_store->notesArray().constLast();
    QCOMPARE(textOf(note), QStringLiteral("Dear Anna"));
    QVERIFY(note->attributedString()->attributesAtIndex(5).isBold());
    QCOMPARE(noteControllers().constLast()->note(), note);
    QVERIFY(noteControllers().constLast()->window()->isVisible());
}

void TestAppDelegate::noteFromServiceUsesTheThemeAndNeedsText()
{
    launch();
    const qsizetype notes = m_store->notesArray().size();
    QString error;
    m_delegate->noteFromServiceUserDataError(QString(), QString(), &error);
    QCOMPARE(error, QStringLiteral("Could not create a note with text"));
    QCOMPARE(m_store->notesArray().size(), notes);

    error.clear();
    m_delegate->noteFromServiceUserDataError(QStringLiteral("Buy stamps"), QString(), &error);
    QVERIFY(error.isEmpty());
    QCOMPARE(m_store->notesArray().size(), notes + 1);
    const std::shared_ptr<SNStickyNote> note = m_store->notesArray().constLast();
    QCOMPARE(textOf(note), QStringLiteral("Buy stamps"));
    const QWTextAttributes attributes = note->attributedString()->attributesAtIndex(0);
    QCOMPARE(attributes.foregroundColor(), std::optional(note->theme()->defaultFontColor()));
    QCOMPARE(attributes.font(), note->theme()->defaultFont());
    QVERIFY(noteControllers().constLast()->window()->isVisible());
}

void TestAppDelegate::launchRequestsRunTheirActions()
{
    launch();
    const qsizetype notes = noteControllers().size();

    SNLaunchRequest newNote;
    newNote.actions = { SNLaunchRequest::newNoteAction(), SNLaunchRequest::newNoteAction() };
    QCOMPARE(m_delegate->handleLaunchRequest(newNote), QString());
    QCOMPARE(noteControllers().size(), notes + 2);

    SNLaunchRequest fromInput;
    fromInput.actions = { SNLaunchRequest::noteFromSelectionAction() };
    fromInput.selectionText = QString();
    QCOMPARE(m_delegate->handleLaunchRequest(fromInput),
        QStringLiteral("Could not create a note with text"));
    fromInput.selectionText = QStringLiteral("from a pipe");
    QCOMPARE(m_delegate->handleLaunchRequest(fromInput), QString());
    QCOMPARE(textOf(m_store->notesArray().constLast()), QStringLiteral("from a pipe"));

    SNLaunchRequest bogus;
    bogus.actions = { QStringLiteral("make-coffee") };
    QVERIFY(!m_delegate->handleLaunchRequest(bogus).isEmpty());

    // A second start with nothing to ask brings the notes forward.
    m_delegate->hideAllNotes();
    QCOMPARE(visibleNoteWindows(), 0);
    QCOMPARE(m_delegate->handleLaunchRequest(SNLaunchRequest()), QString());
    QCOMPARE(visibleNoteWindows(), noteControllers().size());
}

void TestAppDelegate::exportFailureShowsTheAlert()
{
    launch();
    m_presenter->savePath = m_folder->filePath(QStringLiteral("no/such/folder/stickies.db"));
    m_delegate->exportDatabase(nullptr);
    QCOMPARE(m_presenter->panelAcceptLabels, QStringList { QStringLiteral("Choose") });
    QCOMPARE(QFileInfo(m_presenter->panelFiles.value(0)).fileName(), QStringLiteral("stickies.db"));
    QCOMPARE(m_presenter->panelSuffixes, QStringList { QStringLiteral("db") });
    QCOMPARE(m_presenter->alerts,
        (QList<QStringList> { { QStringLiteral("Could not export the database"),
            QStringLiteral(
                "An error occured when trying to export the database.\nPlease try again.") } }));

    // Cancelling the panel does nothing.
    m_presenter->savePath.clear();
    m_delegate->exportDatabase(nullptr);
    QCOMPARE(m_presenter->alerts.size(), 1);
}

void TestAppDelegate::saveDocumentGoesToTheActiveNote()
{
    launch();
    QList<std::shared_ptr<RecordingPresenter>> presenters;
    for (SNStickyNoteWindowController *controller : noteControllers()) {
        presenters.append(std::make_shared<RecordingPresenter>());
        controller->setModalPresenter(presenters.constLast());
    }
    SNStickyNoteWindowController *active = noteControllers().at(1);
    active->window()->activateWindow();
    QTRY_VERIFY(active->window()->isActiveWindow());

    m_delegate->saveDocument(nullptr);
    // Later, as a menu action would be.
    QVERIFY(presenters.at(1)->panelFiles.isEmpty());
    QTRY_COMPARE(presenters.at(1)->panelFiles.size(), 1);
    for (int i = 0; i < presenters.size(); ++i) {
        if (i != 1)
            QVERIFY(presenters.at(i)->panelFiles.isEmpty());
    }
}

void TestAppDelegate::quittingKeepsEveryNoteAndItsLastEdit()
{
    launch();
    const QList<std::shared_ptr<SNStickyNote>> notes = m_store->notesArray();
    // A note window that asked whether to export would be answered at once, not wait.
    for (SNStickyNoteWindowController *controller : noteControllers())
        controller->setModalPresenter(m_presenter);
    SNStickyNoteWindowController *edited = noteControllers().constFirst();
    edited->textView()->setPlainText(QStringLiteral("typed just before the end"));

    // Qt closes every window when asked to quit; closing a note window must not delete it.
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &quit);
    QCOMPARE(visibleNoteWindows(), 0);
    QCOMPARE(m_store->notesArray(), notes);
    QVERIFY(m_presenter->alerts.isEmpty());

    const SNStickyNoteManager reread(m_folder->path());
    QCOMPARE(reread.notesArray().size(), notes.size());
    QCOMPARE(textOf(reread.notesArray().constFirst()), QStringLiteral("typed just before the end"));
}

QWPreferencesWindowController *TestAppDelegate::openThemeWithoutName()
{
    // A new theme still without a name keeps the preferences open, and so the program.
    m_delegate->openPreferences(nullptr);
    QWPreferencesWindowController *preferences = m_delegate->preferencesWindowController();
    preferences->selectModuleAtRow(QWPreferencesWindowController::themesModuleRow);
    preferences->appearanceViewController()->groupsActionWasClicked(0);
    return preferences;
}

void TestAppDelegate::refusedQuitLeavesEveryNoteAsItWas()
{
    launch();
    const QList<SNStickyNoteWindowController *> notes = noteControllers();
    for (SNStickyNoteWindowController *controller : notes)
        controller->setModalPresenter(m_presenter);
    QWPreferencesWindowController *preferences = openThemeWithoutName();

    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &quit);
    QVERIFY(preferences->window()->isVisible());
    QCOMPARE(noteControllers(), notes);
    QCOMPARE(visibleNoteWindows(), notes.size());
    QVERIFY(std::none_of(notes.cbegin(), notes.cend(),
        [](const SNStickyNoteWindowController *note) { return note->isTerminating(); }));
    // Closing a note is deleting it again: the export question comes.
    m_presenter->alerts.clear();
    notes.constFirst()->close();
    QCOMPARE(m_presenter->alerts.value(0).value(0),
        QStringLiteral("Would you like to export this note?"));
    QCOMPARE(noteControllers().size(), notes.size() - 1);

    // Once the theme has its name, the program quits.
    preferences->appearanceViewController()->editingTextField()->setText(QStringLiteral("Dusk"));
    QCoreApplication::sendEvent(qApp, &quit);
    QCOMPARE(visibleNoteWindows(), 0);
    QVERIFY(!preferences->window()->isVisible());
}

void TestAppDelegate::quitWritesTheArchiveOnce()
{
    launch();
    const int before = m_archiveWrites;
    QTimer::singleShot(0, m_delegate.get(), [this] { m_delegate->quitApp(nullptr); });
    QCoreApplication::exec();
    QCOMPARE(m_archiveWrites, before + 1);
}

void TestAppDelegate::terminationSignalEndsTheProgramWhateverItsWindowsSay()
{
    launch();
    openThemeWithoutName();
    const int before = m_archiveWrites;
    QTimer::singleShot(0, m_delegate.get(), [this] { m_delegate->applicationMustTerminate(); });
    QTimer refused; // the loop would run on
    refused.callOnTimeout([] { QCoreApplication::exit(1); });
    refused.start(3000);
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(m_archiveWrites, before + 1);
}

QTEST_MAIN(TestAppDelegate)
#include "TestAppDelegate.moc"
