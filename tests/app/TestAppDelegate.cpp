#include "SNAppTestSupport.h"
#include "app/SNHelpWindowController.h"
#include "notewindow/SNStickyWindow.h"
#include "preferences/QWPreferencesWindowController.h"

#include <QApplication>
#include <QCheckBox>
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
        m_app->launch(url);
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
        // Notes hidden at login come with the first click.
        m_app->defaults->setHideWindow(true);
        m_app->launch(QStringLiteral("vellumo://lal"));
        m_app->delegate->menuIconWasClicked();
        QCOMPARE(visibleNotes(), notes().size());
        // The next hides not only the notes: the preferences go and come back with them, the
        // closed help window does not.
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
    }

    void firstRunWaitsForTheWelcomeWindow()
    {
        m_app->defaults->userDefaults().remove(QWWelcomeWindowController::wasShownKey());
        m_app->launch();
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

    void notesFromOtherComputersOpenOnceAFolderIsChosen()
    {
        m_app->launch();
        QTemporaryDir sync;
        const auto note = writeLaptop(sync.path(), QStringLiteral("Written on the laptop"));
        m_app->defaults->setSyncFolder(sync.path());
        const QList<SNStickyNoteWindowController *> all = notes();
        QVERIFY(std::any_of(all.cbegin(), all.cend(), [&note](SNStickyNoteWindowController *shown) {
            return shown->note()->uuid() == note->uuid() && shown->window()->isVisible();
        }));
    }

    void arrangedNotesTileSaveTheirFramesAndGoBack()
    {
        m_app->launch();
        const QList<SNStickyNoteWindowController *> all = notes();
        const auto frames = [&all] {
            QList<QRect> result;
            for (SNStickyNoteWindowController *controller : all)
                result.append(controller->window()->geometry());
            return result;
        };
        const QList<QRect> before = frames();
        QVERIFY(m_app->triggerTrayItem(QStringLiteral("Arrange Notes")));
        QTRY_VERIFY(std::none_of(all.cbegin(), all.cend(), [](SNStickyNoteWindowController *note) {
            return note->window()->findChild<QPropertyAnimation *>();
        }));
        // Where the tiles go is the masonry's own test.
        QVERIFY(frames() != before);
        m_app->scheduler.advanceBy(SNStickyNoteWindowController::saveDelay);
        for (SNStickyNoteWindowController *controller : all)
            QCOMPARE(controller->note()->windowFrame(), controller->frameString());

        QVERIFY(m_app->triggerTrayItem(QStringLiteral("Put Notes Back")));
        QTRY_COMPARE(frames(), before);
    }

private:
    QList<SNStickyNoteWindowController *> notes() const
    {
        return m_app->notes.windows.controllers();
    }
    qsizetype visibleNotes() const { return m_app->notes.visibleCount(); }

    std::unique_ptr<TestApplication> m_app;
};

QTEST_MAIN(TestAppDelegate)
#include "TestAppDelegate.moc"
