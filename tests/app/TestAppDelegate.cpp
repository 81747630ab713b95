#include "SNAppTestSupport.h"
#include "app/MTStatusItem.h"
#include "app/SNApplicationMenu.h"
#include "app/SNDesktopPresence.h"
#include "app/SNGlobalHotKeys.h"
#include "app/SNHelpWindowController.h"
#include "app/SNLaunchRequest.h"
#include "notewindow/SNStickyWindow.h"
#include "preferences/QWPreferencesWindowController.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SyncPreferencesViewController.h"
#include "secret/QWSuperSecret.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <QPropertyAnimation>
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
    void init() { m_app = std::make_unique<TestApplication>(); }

    void cleanup()
    {
        m_app.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void launchWithoutNotesMakesOneNewNote()
    {
        for (const auto &note : m_app->notes.store.notesArray())
            m_app->notes.store.removeNote(note);
        launch();
        QCOMPARE(m_app->notes.store.notesArray().size(), 1);
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
        m_app->defaults->setHideWindow(hideWindow);
        NoteWindowShowings showings;
        launch(url);
        // The windows exist either way, one per note.
        QVERIFY(notes().size() > 2);
        QCOMPARE(notes().size(), m_app->notes.store.notesArray().size());
        QCOMPARE(visibleNotes(), shown ? notes().size() : 0);
        // Each shows before the next is built: the window manager can take on the first notes
        // while the others are still being built.
        QCOMPARE(showings.builtWhenShown.size(), visibleNotes());
        for (qsizetype i = 0; i < showings.builtWhenShown.size(); ++i)
            QCOMPARE(showings.builtWhenShown.at(i), i + 1);
        // After the launch a new note always shows.
        m_app->delegate->newDocument(nullptr);
        QVERIFY(notes().constLast()->window()->isVisible());
    }

    void trayIconHidesTheWholeProgramAndBringsBackWhatWasShown()
    {
        // Notes hidden at login come with a click on the tray icon.
        m_app->defaults->setHideWindow(true);
        launch(QStringLiteral("vellumo://lal"));
        m_app->delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), m_app->notes.store.notesArray().size());

        // The next hides not only the notes: the preferences go and come back with them.
        m_app->delegate->openHelp(nullptr);
        QWidget *help = m_app->delegate->helpWindowController()->window();
        help->close();
        m_app->delegate->openPreferences(nullptr);
        QWidget *preferences = m_app->delegate->preferencesWindowController()->window();
        m_app->delegate->setIsActive(true);
        m_app->delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), 0);
        QVERIFY(!preferences->isVisible());
        m_app->delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), notes().size());
        QVERIFY(preferences->isVisible() && !help->isVisible());

        // "Show All Notes" brings the open preferences forward with the notes.
        notes().constFirst()->window()->activateWindow();
        QTRY_VERIFY(notes().constFirst()->window()->isActiveWindow());
        m_app->delegate->showAllNotes();
        QTRY_VERIFY(preferences->isActiveWindow());
    }

    void firstRunWaitsForTheWelcomeWindow()
    {
        m_app->defaults->userDefaults().remove(QWWelcomeWindowController::wasShownKey());
        launch();
        QWWelcomeWindowController *welcome = m_app->delegate->welcomeWindowController();
        QVERIFY(welcome->window()->isVisible() && !m_app->delegate->menuShouldShow());
        // While it is open, new notes and the preferences only beep.
        m_app->delegate->newDocument(nullptr);
        m_app->delegate->openPreferences(nullptr);
        QCOMPARE(m_app->presenter->beeps, 2);
        QVERIFY(notes().isEmpty());
        // Its switch runs the login item through the settings, both ways.
        auto *runAtLogin = welcome->window()->findChild<QCheckBox *>();
        runAtLogin->click();
        QVERIFY(m_app->defaults->startAtLogin());
        m_app->defaults->setStartAtLogin(false);
        QVERIFY(!runAtLogin->isChecked());
    }

    void partsFollowSettingsRequestsAndNotices()
    {
        m_app->defaults->setShowIconInDock(true);
        launch();
        const MTStatusItem *item = m_app->delegate->desktopPresence().statusItem();
        m_app->defaults->setShowMenuIcon(false);
        QVERIFY(!item->statusItem());
        m_app->defaults->setHotKeyEnabled(false);
        QVERIFY(m_app->hotKeys.carbonHotkeys().isEmpty());
        m_app->defaults->setHotKeyEnabled(true);
        QCOMPARE(m_app->hotKeys.carbonHotkeys().size(), 2);
        // New notes from requests and hot keys: the integration test.
        SNLaunchRequest request;
        request.actions = { SNLaunchRequest::toggleTagsAction() };
        QCOMPARE(m_app->delegate->handleLaunchRequest(request), QString());
        QVERIFY(m_app->delegate->tagManagerWindowController());
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
        const auto note = writeLaptop(sync.path(), QStringLiteral("Written on the laptop"));
        m_app->defaults->setSyncFolder(sync.path());
        const QList<SNStickyNoteWindowController *> all = notes();
        QVERIFY(std::any_of(all.cbegin(), all.cend(), [&note](SNStickyNoteWindowController *shown) {
            return shown->note()->uuid() == note->uuid() && shown->window()->isVisible();
        }));
        m_app->delegate->openPreferences(nullptr);
        m_app->delegate->preferencesWindowController()->selectModuleAtRow(
            QWPreferencesWindowController::syncModuleRow);
        QVERIFY(m_app->delegate->preferencesWindowController()
                    ->syncViewController()
                    ->statusText()
                    .startsWith(QStringLiteral("The notes are shared")));
    }

    void everyTrayCommandIsInEachNotesVellumoMenu()
    {
        launch();
        const QList<QAction *> tray = m_app->delegate->statusItemMenu()->actions();
        const QList<QAction *> settings = notes().constLast()->settingsMenu()->actions();
        const auto vellumo
            = std::find_if(settings.cbegin(), settings.cend(), [this](const QAction *item) {
                  return item->menu() == m_app->delegate->applicationMenu();
              });
        QVERIFY(vellumo != settings.cend());
        const QList<QAction *> items = (*vellumo)->menu()->actions();
        QCOMPARE(items.size(), tray.size());
        for (qsizetype i = 0; i < tray.size(); ++i) {
            if (tray.at(i) != m_app->delegate->notesMenu()->menuAction()
                && tray.at(i) != m_app->delegate->recentlyDeletedMenu()->menuAction())
                QCOMPARE(items.at(i), tray.at(i));
        }
        // Its notes list fills as it opens, as the tray's does.
        QMenu *list = m_app->delegate->applicationMenu()->submenuFor(m_app->delegate->notesMenu());
        list->popup(QPoint(0, 0));
        list->close();
        QCOMPARE(list->actions().size(), notes().size());
        // So does its list of deleted notes.
        QMenu *deleted = m_app->delegate->applicationMenu()->submenuFor(
            m_app->delegate->recentlyDeletedMenu());
        QVERIFY(deleted && deleted != m_app->delegate->recentlyDeletedMenu());
        m_app->notes.store.removeNote(notes().constFirst()->note());
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
        m_app->trayItem(QStringLiteral("Arrange Notes"))->trigger();
        QTRY_VERIFY(std::none_of(all.cbegin(), all.cend(), [](SNStickyNoteWindowController *note) {
            return note->window()->findChild<QPropertyAnimation *>();
        }));
        // Where the tiles go is the masonry's own test.
        QVERIFY(frames() != before);
        m_app->scheduler.advanceBy(SNStickyNoteWindowController::saveDelay);
        for (SNStickyNoteWindowController *controller : all)
            QCOMPARE(controller->note()->windowFrame(), controller->frameString());

        QAction *putBack = m_app->trayItem(QStringLiteral("Put Notes Back"));
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
            controller->setModalPresenter(controller == active ? asked : m_app->presenter);
        active->window()->activateWindow();
        QTRY_VERIFY(active->window()->isActiveWindow());

        m_app->delegate->saveDocument(nullptr);
        // Later, as a menu action would be.
        QVERIFY(asked->panels.isEmpty());
        QTRY_COMPARE(asked->panels.size(), 1);
        QVERIFY(m_app->presenter->panels.isEmpty());
    }

    void preferencesHoldTheQuitUntilTheThemeIsNamed()
    {
        launch();
        for (SNStickyNoteWindowController *controller : notes())
            controller->setModalPresenter(m_app->presenter);
        // A new theme still without a name keeps the preferences open, and so the program.
        m_app->delegate->openPreferences(nullptr);
        QWPreferencesWindowController *preferences = m_app->delegate->preferencesWindowController();
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
    void launch(const QString &url = QString()) const { m_app->launch(url); }
    QList<SNStickyNoteWindowController *> notes() const
    {
        return m_app->notes.windows.controllers();
    }
    qsizetype visibleNotes() const { return m_app->notes.visibleCount(); }

    std::unique_ptr<TestApplication> m_app;
};

QTEST_MAIN(TestAppDelegate)
#include "TestAppDelegate.moc"
