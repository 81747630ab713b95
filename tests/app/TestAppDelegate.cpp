#include "SNAppTestSupport.h"
#include "app/AppDelegate.h"
#include "app/MTStatusItem.h"
#include "app/QWHotKeyHelper.h"
#include "app/QWWelcomeWindowController.h"
#include "app/SNApplicationMenu.h"
#include "app/SNDesktopPresence.h"
#include "app/SNGlobalHotKeys.h"
#include "app/SNHelpWindowController.h"
#include "app/SNLaunchRequest.h"
#include "notes/SNSyncFolder.h"
#include "notewindow/SNStickyWindow.h"
#include "preferences/QWPreferencesWindowController.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SyncPreferencesViewController.h"
#include "secret/QWSuperSecret.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <QPropertyAnimation>
#include <QSettings>
#include <QTest>

namespace {

// Notes, at each note window's showing, how many note windows had been built by then.
class NoteWindowShowings final : public QObject
{
public:
    NoteWindowShowings() { qApp->installEventFilter(this); }
    QList<qsizetype> builtWhenShown;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<SNStickyWindow *>(watched)) {
            const QWidgetList windows = QApplication::topLevelWidgets();
            builtWhenShown.append(std::count_if(windows.cbegin(), windows.cend(),
                [](QWidget *window) { return qobject_cast<SNStickyWindow *>(window); }));
        }
        return false;
    }
};

} // namespace

class TestAppDelegate final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_scheduler = std::make_unique<QWManualScheduler>();
        m_defaults = GVUserDefaults::make<SNUserDefaults>();
        m_defaults->userDefaults().clear();
        // Every user but the one of firstRunWaitsForTheWelcomeWindow has met Vellumo before.
        m_defaults->userDefaults().setValue(QWWelcomeWindowController::wasShownKey(), true);
        m_notes = std::make_unique<TestNotes>();
        m_hotKeys = std::make_unique<QWHotKeyHelper>(std::make_unique<RecordingGrabber>());
        m_presenter = std::make_shared<RecordingPresenter>();
        m_delegate = std::make_unique<AppDelegate>(AppDelegate::Services { m_defaults.get(),
            &m_notes->store, &m_notes->windowManager, m_hotKeys.get(), m_presenter });
    }

    void cleanup()
    {
        m_delegate.reset();
        m_notes.reset();
        m_hotKeys.reset();
        m_defaults.reset();
        m_scheduler.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void launchWithoutNotesMakesOneNewNote()
    {
        for (const auto &note : m_notes->store.notesArray())
            m_notes->store.removeNote(note);
        launch();
        QCOMPARE(m_notes->store.notesArray().size(), 1);
        QCOMPARE(visibleNotes(), 1);
    }

    void loginStartDecidesWhetherNotesShow_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("hideWindow");
        QTest::addColumn<bool>("shown");
        QTest::newRow("at login, hideWindow on") << "vellumo://lal" << true << false;
        QTest::newRow("at login, hideWindow off") << "vellumo://lal" << false << true;
        QTest::newRow("ordinary start") << QString() << true << true;
        QTest::newRow("another host") << "vellumo://lalala" << true << true;
    }

    void loginStartDecidesWhetherNotesShow()
    {
        QFETCH(QString, url);
        QFETCH(bool, hideWindow);
        QFETCH(bool, shown);
        m_defaults->setHideWindow(hideWindow);
        NoteWindowShowings showings;
        launch(url);
        // The windows exist either way, one per note.
        QVERIFY(notes().size() > 2);
        QCOMPARE(notes().size(), m_notes->store.notesArray().size());
        QCOMPARE(visibleNotes(), shown ? notes().size() : 0);
        // Each shows before the next is built: the window manager can take on the first notes
        // while the others are still being built.
        QCOMPARE(showings.builtWhenShown.size(), visibleNotes());
        for (qsizetype i = 0; i < showings.builtWhenShown.size(); ++i)
            QCOMPARE(showings.builtWhenShown.at(i), i + 1);
        // After the launch a new note always shows.
        m_delegate->newDocument(nullptr);
        QVERIFY(notes().constLast()->window()->isVisible());
    }

    void trayIconHidesTheWholeProgramAndBringsBackWhatWasShown()
    {
        // Notes hidden at login come with a click on the tray icon.
        m_defaults->setHideWindow(true);
        launch(QStringLiteral("vellumo://lal"));
        m_delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), m_notes->store.notesArray().size());

        // The next hides not only the notes: the preferences go and come back with them.
        m_delegate->openHelp(nullptr);
        QWidget *help = m_delegate->helpWindowController()->window();
        help->close();
        m_delegate->openPreferences(nullptr);
        QWidget *preferences = m_delegate->preferencesWindowController()->window();
        m_delegate->setIsActive(true);
        m_delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), 0);
        QVERIFY(!preferences->isVisible());
        m_delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), notes().size());
        QVERIFY(preferences->isVisible() && !help->isVisible());

        // "Show All Notes" brings the open preferences forward with the notes.
        notes().constFirst()->window()->activateWindow();
        QTRY_VERIFY(notes().constFirst()->window()->isActiveWindow());
        m_delegate->showAllNotes();
        QTRY_VERIFY(preferences->isActiveWindow());
    }

    void firstRunWaitsForTheWelcomeWindow()
    {
        m_defaults->userDefaults().remove(QWWelcomeWindowController::wasShownKey());
        launch();
        QWWelcomeWindowController *welcome = m_delegate->welcomeWindowController();
        QVERIFY(welcome->window()->isVisible() && !m_delegate->menuShouldShow());
        // While it is open, new notes and the preferences only beep.
        m_delegate->newDocument(nullptr);
        m_delegate->openPreferences(nullptr);
        QCOMPARE(m_presenter->beeps, 2);
        QVERIFY(notes().isEmpty());
        // Its switch runs the login item through the settings, both ways.
        auto *runAtLogin = welcome->window()->findChild<QCheckBox *>();
        runAtLogin->click();
        QVERIFY(m_defaults->startAtLogin());
        m_defaults->setStartAtLogin(false);
        QVERIFY(!runAtLogin->isChecked());

        welcome->window()->close();
        QCOMPARE(visibleNotes(), m_notes->store.notesArray().size());
    }

    void partsFollowSettingsRequestsAndNotices()
    {
        m_defaults->setShowIconInDock(true);
        launch();
        const MTStatusItem *item = m_delegate->desktopPresence().statusItem();
        m_defaults->setShowMenuIcon(false);
        QVERIFY(!item->statusItem());
        m_defaults->setHotKeyEnabled(false);
        QVERIFY(m_hotKeys->carbonHotkeys().isEmpty());
        m_defaults->setHotKeyEnabled(true);
        QCOMPARE(m_hotKeys->carbonHotkeys().size(), 2);
        // New notes from requests and hot keys: the integration test.
        SNLaunchRequest request;
        request.actions = { SNLaunchRequest::toggleTagsAction() };
        QCOMPARE(m_delegate->handleLaunchRequest(request), QString());
        QVERIFY(m_delegate->tagManagerWindowController());
        // The hidden key sequence colours every note.
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            QWSuperSecret::superSecretNotification);
        for (SNStickyNoteWindowController *controller : notes())
            QVERIFY(controller->secretUnlocked());
    }

    void notesFromOtherComputersOpenOnceAFolderIsChosen()
    {
        launch();
        QTemporaryDir sync;
        QTemporaryDir laptopHome;
        SNStickyNoteManager laptop(laptopHome.path(), QStringLiteral("laptop"));
        auto note = SNStickyNote::note();
        note->setAttributedString(QWAttributedString(QStringLiteral("Written on the laptop")));
        laptop.addNote(note);
        QVERIFY(laptop.save());
        const QList<QByteArray> records = laptop.recordsOfEveryNote();
        QVERIFY(SNSyncFolder(sync.path(), QStringLiteral("laptop"))
                    .rewriteOwnJournal([&records](const auto &) { return records; }));

        m_defaults->setSyncFolder(sync.path());
        const QList<SNStickyNoteWindowController *> all = notes();
        QVERIFY(std::any_of(all.cbegin(), all.cend(), [&note](SNStickyNoteWindowController *shown) {
            return shown->note()->uuid() == note->uuid() && shown->window()->isVisible();
        }));
        m_delegate->openPreferences(nullptr);
        m_delegate->preferencesWindowController()->selectModuleAtRow(
            QWPreferencesWindowController::syncModuleRow);
        QVERIFY(m_delegate->preferencesWindowController()
                    ->syncViewController()
                    ->statusText()
                    .startsWith(QStringLiteral("The notes are shared")));
    }

    void everyTrayCommandIsInEachNotesVellumoMenu()
    {
        launch();
        const QList<QAction *> tray = m_delegate->statusItemMenu()->actions();
        const QList<QAction *> settings = notes().constLast()->settingsMenu()->actions();
        const auto vellumo = std::find_if(settings.cbegin(), settings.cend(),
            [this](const QAction *item) { return item->menu() == m_delegate->applicationMenu(); });
        QVERIFY(vellumo != settings.cend());
        const QList<QAction *> items = (*vellumo)->menu()->actions();
        QCOMPARE(items.size(), tray.size());
        for (qsizetype i = 0; i < tray.size(); ++i) {
            if (tray.at(i) != m_delegate->notesMenu()->menuAction()
                && tray.at(i) != m_delegate->recentlyDeletedMenu()->menuAction())
                QCOMPARE(items.at(i), tray.at(i));
        }
        // Its notes list fills as it opens, as the tray's does.
        QMenu *list = m_delegate->applicationMenu()->submenuFor(m_delegate->notesMenu());
        list->popup(QPoint(0, 0));
        list->close();
        QCOMPARE(list->actions().size(), notes().size());
        // So does its list of deleted notes.
        QMenu *deleted
            = m_delegate->applicationMenu()->submenuFor(m_delegate->recentlyDeletedMenu());
        QVERIFY(deleted && deleted != m_delegate->recentlyDeletedMenu());
        m_notes->store.removeNote(notes().constFirst()->note());
        deleted->popup(QPoint(0, 0));
        deleted->close();
        QCOMPARE(deleted->actions().size(), 1);
        QVERIFY(deleted->actions().constFirst()->isEnabled());
    }

    void arrangedNotesTileSaveTheirFramesAndGoBack()
    {
        launch();
        const QList<SNStickyNoteWindowController *> all = notes();
        const auto frames = [&all] {
            QList<QRect> result;
            for (SNStickyNoteWindowController *controller : all)
                result.append(controller->window()->geometry());
            return result;
        };
        const QList<QRect> before = frames();
        QHash<QString, QAction *> items;
        for (QAction *item : m_delegate->statusItemMenu()->actions())
            items.insert(item->text(), item);
        items.value(QStringLiteral("Arrange Notes"))->trigger();
        QTRY_VERIFY(std::none_of(all.cbegin(), all.cend(), [](SNStickyNoteWindowController *note) {
            return note->window()->findChild<QPropertyAnimation *>();
        }));
        // Where the tiles go is the masonry's own test.
        QVERIFY(frames() != before);
        m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        for (SNStickyNoteWindowController *controller : all)
            QCOMPARE(controller->note()->windowFrame(), controller->frameString());

        QAction *putBack = items.value(QStringLiteral("Put Notes Back"));
        putBack->trigger();
        QTRY_COMPARE(frames(), before);
        QVERIFY(!putBack->isEnabled());
    }

    void saveDocumentGoesToTheActiveNote()
    {
        launch();
        SNStickyNoteWindowController *active = notes().at(1);
        const auto asked = std::make_shared<RecordingPresenter>();
        for (SNStickyNoteWindowController *controller : notes())
            controller->setModalPresenter(controller == active ? asked : m_presenter);
        active->window()->activateWindow();
        QTRY_VERIFY(active->window()->isActiveWindow());

        m_delegate->saveDocument(nullptr);
        // Later, as a menu action would be.
        QVERIFY(asked->panels.isEmpty());
        QTRY_COMPARE(asked->panels.size(), 1);
        QVERIFY(m_presenter->panels.isEmpty());
    }

    void preferencesHoldTheQuitUntilTheThemeIsNamed()
    {
        launch();
        for (SNStickyNoteWindowController *controller : notes())
            controller->setModalPresenter(m_presenter);
        // A new theme still without a name keeps the preferences open, and so the program.
        m_delegate->openPreferences(nullptr);
        QWPreferencesWindowController *preferences = m_delegate->preferencesWindowController();
        preferences->selectModuleAtRow(QWPreferencesWindowController::themesModuleRow);
        preferences->appearanceViewController()->groupsActionWasClicked(0);
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(preferences->window()->isVisible());
        QCOMPARE(visibleNotes(), notes().size());
        // Named, it lets the program quit.
        preferences->appearanceViewController()->editingTextField()->setText(
            QStringLiteral("Dusk"));
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!preferences->window()->isVisible());
        QCOMPARE(visibleNotes(), 0);
    }

private:
    void launch(const QString &url = QString())
    {
        m_delegate->applicationWillFinishLaunching();
        if (!url.isEmpty())
            m_delegate->handleOpenURLWithReplyEvent(url);
        m_delegate->applicationDidFinishLaunching();
    }

    QList<SNStickyNoteWindowController *> notes() const { return m_notes->windows.controllers(); }
    qsizetype visibleNotes() const { return m_notes->visibleCount(); }

    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<SNUserDefaults> m_defaults;
    std::unique_ptr<TestNotes> m_notes;
    std::unique_ptr<QWHotKeyHelper> m_hotKeys;
    std::shared_ptr<RecordingPresenter> m_presenter;
    std::unique_ptr<AppDelegate> m_delegate;
};

QTEST_MAIN(TestAppDelegate)
#include "TestAppDelegate.moc"
