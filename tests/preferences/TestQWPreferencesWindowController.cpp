#include "app/AppDelegate.h"
#include "kit/QWNotificationCenter.h"
#include "notewindow/SNNoteWindowTestSupport.h"
#include "preferences/GeneralPreferencesViewController.h"
#include "preferences/QWAboutViewController.h"
#include "preferences/QWPreferencesWindowController.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SNPreferencesTestSupport.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"

#include <QApplication>
#include <QListWidget>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

// Remembers how the preferences window looked at the moment it was first shown.
class ShowWatcher final : public QObject
{
public:
    QStringList titles;
    QList<QSize> sizes;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *widget = qobject_cast<QWidget *>(watched);
        if (event->type() == QEvent::Show && widget && widget->isWindow()
            && widget->objectName() == QLatin1String("QWPreferencesWindowController")) {
            titles.append(widget->windowTitle());
            sizes.append(widget->size());
        }
        return false;
    }
};

// Runs the alert for real, ticks its box and ends it as a person would.
class GesturePresenter final : public SNModalPresenter
{
public:
    enum Gesture { ClickOkay, PressEscape, CloseWindow };
    Gesture gesture = ClickOkay;

    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        QTimer::singleShot(0, &alert, [this, &alert] {
            alert.checkBox()->setChecked(true);
            if (gesture == ClickOkay)
                QTest::mouseClick(alert.buttons().constFirst(), Qt::LeftButton);
            else if (gesture == PressEscape)
                QTest::keyClick(&alert, Qt::Key_Escape);
            else
                alert.close();
        });
        return SNModalPresenter::runAlert(alert);
    }
};

} // namespace

Q_DECLARE_METATYPE(GesturePresenter::Gesture)

class TestQWPreferencesWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void opensOnTheGeneralModuleWithItsSidebar();
    void switchingModulesTellsBothAndOnlyOnce();
    void modulesDecideWhetherTheWindowResizes();
    void closingAsksOnceUnlessSuppressed();
    void onlyTheTickedBoxAndOkaySuppressTheAlert();
    void escapeAndTheCloseButtonStoreNothing_data();
    void escapeAndTheCloseButtonStoreNothing();
    void aboutOpenedHiddenIsSelectedBeforeShowing();
    void closedPreferencesAreDroppedAfterTheDelay();
    void notesOpenThePreferencesWithCtrlComma();

private:
    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::shared_ptr<AnsweringPresenter> m_presenter;
};

void TestQWPreferencesWindowController::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    QWScheduler::setCurrent(m_scheduler.get());
    m_presenter = std::make_shared<AnsweringPresenter>();
    SNUserDefaults::setSuppressQuitAlert(false);
}

void TestQWPreferencesWindowController::cleanup()
{
    QWScheduler::setCurrent(nullptr);
    m_scheduler.reset();
}

void TestQWPreferencesWindowController::opensOnTheGeneralModuleWithItsSidebar()
{
    auto controller = QWPreferencesWindowController::controller();
    QWidget *window = controller->window();
    QVERIFY(window);
    QVERIFY(controller->canHide());

    QListWidget *sidebar = controller->tableView();
    QCOMPARE(sidebar->count(), 3);
    QCOMPARE(sidebar->item(0)->text(), QStringLiteral("Preferences"));
    QCOMPARE(sidebar->item(1)->text(), QStringLiteral("Themes"));
    QCOMPARE(sidebar->item(2)->text(), QStringLiteral("About"));

    QCOMPARE(controller->currentModule(), controller->generalViewController());
    QVERIFY(controller->generalViewController()->moduleIsVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("Preferences"));
    QCOMPARE(controller->generalViewController()->parentWindow(), window);
    QCOMPARE(window->palette().color(QPalette::Window).redF(), 0.949999988079071f);
}

void TestQWPreferencesWindowController::switchingModulesTellsBothAndOnlyOnce()
{
    auto controller = QWPreferencesWindowController::controller();
    controller->window();
    GeneralPreferencesViewController *general = controller->generalViewController();
    SDApperancePreferencesViewController *themes = controller->appearanceViewController();

    QSignalSpy generalWillDisappear(general, &QWViewController::viewWillDisappear);
    QSignalSpy generalDidDisappear(general, &QWViewController::viewDidDisappear);
    QSignalSpy themesWillAppear(themes, &QWViewController::viewWillAppear);
    QSignalSpy themesDidAppear(themes, &QWViewController::viewDidAppear);

    controller->selectModuleAtRow(QWPreferencesWindowController::themesModuleRow);
    QCOMPARE(controller->currentModule(), themes);
    QCOMPARE(generalWillDisappear.count(), 1);
    QCOMPARE(generalDidDisappear.count(), 1);
    QCOMPARE(themesWillAppear.count(), 1);
    QCOMPARE(themesDidAppear.count(), 1);
    QVERIFY(themes->moduleIsVisible());
    QVERIFY(!general->moduleIsVisible());
    QCOMPARE(themes->parentWindowController(), controller.get());
    QCOMPARE(general->parentWindowController(), nullptr);
    QCOMPARE(themes->view()->parentWidget(), controller->moduleContentView());
    QVERIFY(!general->view()->parentWidget());
    QCOMPARE(controller->window()->windowTitle(), QStringLiteral("Themes"));
    QCOMPARE(controller->tableView()->selectedItems().count(), 1);

    // The module already shown: nothing at all.
    controller->selectModuleAtRow(QWPreferencesWindowController::themesModuleRow);
    controller->setCurrentModule(themes);
    QCOMPARE(themesWillAppear.count(), 1);
    QCOMPARE(themesDidAppear.count(), 1);
    QCOMPARE(generalWillDisappear.count(), 1);

    // About keeps a title of its own.
    controller->selectModuleAtRow(QWPreferencesWindowController::aboutModuleRow);
    QCOMPARE(controller->window()->windowTitle(),
        QStringLiteral("About %1").arg(SNApplicationInfo::applicationName()));
    QVERIFY(controller->aboutViewController()->creditsText().contains(QStringLiteral("LGPL-3.0")));
}

void TestQWPreferencesWindowController::modulesDecideWhetherTheWindowResizes()
{
    auto controller = QWPreferencesWindowController::controller();
    QWidget *window = controller->window();

    // General is not resizable: the window is fixed at the size that fits it.
    QCOMPARE(window->minimumSize(), window->maximumSize());
    const QSize generalSize = window->size();
    QCOMPARE(generalSize.width(),
        controller->windowSizeWithController(controller->generalViewController()).width());
    QCOMPARE(controller->windowWillResizeToSize(QSize(2000, 2000)),
        controller->windowSizeWithController(controller->generalViewController()));

    // The theme editor lets the window grow, never below what it needs.
    controller->selectModuleAtRow(QWPreferencesWindowController::themesModuleRow);
    QCOMPARE(window->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    QCOMPARE(window->minimumSize(),
        controller->windowSizeWithController(controller->appearanceViewController()));
    QCOMPARE(controller->windowWillResizeToSize(QSize(2000, 2000)), QSize(2000, 2000));

    // In full screen a module that cannot resize leaves the size alone.
    window->showFullScreen();
    const QSize fullScreen = window->size();
    controller->selectModuleAtRow(QWPreferencesWindowController::aboutModuleRow);
    QCOMPARE(window->size(), fullScreen);
    window->hide();
}

void TestQWPreferencesWindowController::closingAsksOnceUnlessSuppressed()
{
    auto controller = QWPreferencesWindowController::controller();
    controller->setModalPresenter(m_presenter);
    QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);
    controller->showWindow();

    m_presenter->answers = { { QStringLiteral("Okay"), true } };
    QVERIFY(controller->window()->close());
    QCOMPARE(willClose.count(), 1);
    QCOMPARE(m_presenter->asked.count(), 1);
    const AnsweringPresenter::Asked alert = m_presenter->asked.first();
    QCOMPARE(alert.text,
        QStringLiteral("%1 will continue to run in the background")
            .arg(SNApplicationInfo::applicationName()));
    QCOMPARE(alert.informativeText,
        QStringLiteral(
            "You can access the preferences by clicking on the icon located in the top menubar."));
    QCOMPARE(alert.buttons, QStringList { QStringLiteral("Okay") });
    QVERIFY(alert.hasCheckBox);
    QVERIFY(SNUserDefaults::suppressQuitAlert());

    controller->showWindow();
    QVERIFY(controller->window()->close());
    QCOMPARE(m_presenter->asked.count(), 1);
    QCOMPARE(willClose.count(), 2);
}

void TestQWPreferencesWindowController::onlyTheTickedBoxAndOkaySuppressTheAlert()
{
    auto controller = QWPreferencesWindowController::controller();
    controller->setModalPresenter(m_presenter);

    // Ticked, but the alert went away otherwise; then Okay without the tick.
    m_presenter->answers = { { QString(), true }, { QStringLiteral("Okay"), false } };
    QVERIFY(controller->windowShouldClose());
    QVERIFY(!SNUserDefaults::suppressQuitAlert());
    QVERIFY(controller->windowShouldClose());
    QVERIFY(!SNUserDefaults::suppressQuitAlert());
    QCOMPARE(m_presenter->asked.count(), 2);

    // Quitting closes the window without a word.
    controller->setTerminating(true);
    QVERIFY(controller->windowShouldClose());
    QCOMPARE(m_presenter->asked.count(), 2);
}

void TestQWPreferencesWindowController::escapeAndTheCloseButtonStoreNothing_data()
{
    QTest::addColumn<GesturePresenter::Gesture>("gesture");
    QTest::addColumn<bool>("stored");
    QTest::newRow("Okay") << GesturePresenter::ClickOkay << true;
    QTest::newRow("Escape") << GesturePresenter::PressEscape << false;
    QTest::newRow("close button") << GesturePresenter::CloseWindow << false;
}

void TestQWPreferencesWindowController::escapeAndTheCloseButtonStoreNothing()
{
    QFETCH(GesturePresenter::Gesture, gesture);
    QFETCH(bool, stored);
    auto presenter = std::make_shared<GesturePresenter>();
    presenter->gesture = gesture;
    auto controller = QWPreferencesWindowController::controller();
    controller->setModalPresenter(presenter);
    controller->showWindow();
    QVERIFY(controller->window()->close());
    QCOMPARE(SNUserDefaults::suppressQuitAlert(), stored);
}

void TestQWPreferencesWindowController::aboutOpenedHiddenIsSelectedBeforeShowing()
{
    ShowWatcher watcher;
    qApp->installEventFilter(&watcher);
    AppDelegate::Services services;
    services.presenter = m_presenter;
    AppDelegate delegate(services);

    delegate.openAbout(nullptr);
    qApp->removeEventFilter(&watcher);
    QWPreferencesWindowController *controller = delegate.preferencesWindowController();
    QVERIFY(controller);
    QVERIFY(controller->window()->isVisible());
    QCOMPARE(controller->currentModule(), controller->aboutViewController());
    QCOMPARE(watcher.titles.value(0),
        QStringLiteral("About %1").arg(SNApplicationInfo::applicationName()));
    // Already at the About page's size when it first appeared.
    QCOMPARE(watcher.sizes.value(0).width(),
        controller->windowSizeWithController(controller->aboutViewController()).width());

    // Preferences, from there, go back to General.
    delegate.openPreferences(nullptr);
    QCOMPARE(controller->currentModule(), controller->generalViewController());
    QCOMPARE(delegate.preferencesWindowController(), controller);
}

void TestQWPreferencesWindowController::closedPreferencesAreDroppedAfterTheDelay()
{
    AppDelegate::Services services;
    services.presenter = m_presenter;
    AppDelegate delegate(services);
    SNUserDefaults::setSuppressQuitAlert(true);

    delegate.openPreferences(nullptr);
    QVERIFY(delegate.preferencesWindowController());
    delegate.preferencesWindowController()->window()->close();
    m_scheduler->advanceBy(0.1);
    QVERIFY(delegate.preferencesWindowController());
    m_scheduler->advanceBy(0.1);
    QVERIFY(!delegate.preferencesWindowController());

    // Opened again within the delay: the window stays.
    delegate.openPreferences(nullptr);
    delegate.preferencesWindowController()->window()->close();
    delegate.openPreferences(nullptr);
    m_scheduler->advanceBy(0.5);
    QVERIFY(delegate.preferencesWindowController());
    QVERIFY(delegate.preferencesWindowController()->window()->isVisible());
}

void TestQWPreferencesWindowController::notesOpenThePreferencesWithCtrlComma()
{
    const auto controller = openNote(noteWithText(QStringLiteral("Shortcuts")));
    const QList<QAction *> actions = controller->window()->actions();
    const auto item = std::find_if(actions.cbegin(), actions.cend(), [](const QAction *action) {
        return action->shortcut() == QKeySequence(QStringLiteral("Ctrl+,"));
    });
    QVERIFY(item != actions.cend());
    QVERIFY((*item)->isVisible());

    int posted = 0;
    const QWNotificationCenter::Observation observation
        = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            QStringLiteral("Notification.openPreferences"), nullptr,
            [&posted](const QWNotification &) { ++posted; });
    (*item)->trigger();
    QCOMPARE(posted, 1);
}

QTEST_MAIN(TestQWPreferencesWindowController)
#include "TestQWPreferencesWindowController.moc"
