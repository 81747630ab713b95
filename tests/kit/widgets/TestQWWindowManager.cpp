#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWWindowController.h"
#include "kit/widgets/QWWindowManager.h"

#include <QApplication>
#include <QPointer>
#include <QTest>

#include <algorithm>

// Announces its window's closing from the close itself, as a real controller does.
class TestWindowController : public QWWindowController
{
    Q_OBJECT

protected:
    std::unique_ptr<QWidget> loadWindow() override
    {
        auto window = std::make_unique<QWidget>();
        window->installEventFilter(this);
        return window;
    }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == window() && event->type() == QEvent::Close)
            announceWindowWillClose();
        return false;
    }
};

class TestDerivedWindowController final : public TestWindowController
{
    Q_OBJECT
};

using Controllers = QList<QWWindowController *>;
using Windows = QList<QWidget *>;

static void waitForActive(QWidget *window)
{
    QTRY_COMPARE(QApplication::activeWindow(), window);
}

class TestQWWindowManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void adding()
    {
        QWWindowManager manager;
        auto *first = new TestWindowController;
        manager.addWindowWithController(first);
        QVERIFY(first->window()->isVisible());
        QCOMPARE(first->parent(), &manager);
        // Once in the list, shown again each time.
        first->window()->hide();
        manager.addWindowWithControllerShouldShow(first, true);
        manager.addWindowWithController(nullptr);
        QCOMPARE(manager.windowControllers(), Controllers { first });
        QVERIFY(first->window()->isVisible());

        // Without showing: loaded, so that closing and activation are seen, but hidden.
        auto *hidden = new TestWindowController;
        manager.addWindowControllersShouldShow({ hidden }, false);
        QVERIFY(hidden->isWindowLoaded() && !hidden->window()->isVisible());

        // Several: each shown and put in front in turn, the last one ends in front and active.
        auto *second = new TestWindowController;
        auto *third = new TestWindowController;
        manager.addWindowControllers({ second, third });
        QCOMPARE(manager.windowControllers(), (Controllers { first, hidden, second, third }));
        QVERIFY(hidden->window()->isVisible());
        waitForActive(third->window());
        QCOMPARE(manager.orderedWindows().first(), third->window());
    }

    // The window manager gets each window while the next ones are still to be built.
    void eachWindowIsPreparedOnceAndShownBeforeTheNextIsLoaded()
    {
        QWWindowManager manager;
        const Controllers all { new TestWindowController, new TestWindowController,
            new TestWindowController };
        // Per controller when prepared: whether it was visible, how many were loaded and shown.
        QList<std::tuple<QWWindowController *, bool, qsizetype, qsizetype>> prepared;
        manager.setWindowPreparation([&](QWWindowController *controller) {
            prepared.append({ controller, controller->window()->isVisible(),
                std::count_if(
                    all.cbegin(), all.cend(), [](auto *c) { return c->isWindowLoaded(); }),
                std::count_if(all.cbegin(), all.cend(),
                    [](auto *c) { return c->isWindowLoaded() && c->window()->isVisible(); }) });
        });
        manager.addWindowControllers(all);
        QCOMPARE(prepared,
            (QList<std::tuple<QWWindowController *, bool, qsizetype, qsizetype>> {
                { all[0], false, 1, 0 }, { all[1], false, 2, 1 }, { all[2], false, 3, 2 } }));

        // Prepared once: showing a managed window again does not prepare it again.
        all[1]->window()->hide();
        manager.addWindowWithController(all[1]);
        manager.addWindowControllersShouldShow({ all[2] }, true);
        QCOMPARE(prepared.size(), 3);
        auto *hidden = new TestWindowController;
        manager.addWindowWithControllerShouldShow(hidden, false);
        QCOMPARE(std::get<0>(prepared.last()), hidden);
    }

    void controllersForClassFollowInheritance()
    {
        QWWindowManager manager;
        auto *base = new TestWindowController;
        auto *derived = new TestDerivedWindowController;
        manager.addWindowControllersShouldShow({ base, derived }, false);
        QCOMPARE(manager.windowControllersForClass(TestWindowController::staticMetaObject),
            (Controllers { base, derived }));
        QCOMPARE(manager.windowControllersForClass<TestDerivedWindowController>(),
            QList<TestDerivedWindowController *> { derived });
        QVERIFY(manager.windowControllersForClass(QWidget::staticMetaObject).isEmpty());
    }

    void closing()
    {
        QStringList posted;
        QList<qsizetype> heldWhenPosted;
        QPointer<QWWindowManager> held;
        std::vector<QWNotificationCenter::Observation> observations;
        for (const QString &name : { QWWindowManager::willCloseAllWindowsNotification,
                 QWWindowManager::didCloseAllWindowsNotification }) {
            observations.push_back(QWNotificationCenter::defaultCenter().observeNameObjectHandler(
                name, nullptr, [&](const QWNotification &notification) {
                    posted.append(notification.name);
                    heldWhenPosted.append(held ? held->windowControllers().size() : -1);
                }));
        }
        QPointer<TestWindowController> kept = new TestWindowController;
        {
            QWWindowManager manager;
            held = &manager;
            QPointer<TestWindowController> first = new TestWindowController;
            auto *second = new TestWindowController;
            manager.addWindowControllers({ first, second, kept });

            first->window()->close();
            QCOMPARE(manager.windowControllers(), (Controllers { second, kept }));
            // Deleted, but not while it is still closing its window.
            QVERIFY(first);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(!first);
            // Deleted elsewhere: its window went with it.
            delete second;
            QCOMPARE(manager.windowControllers(), Controllers { kept });
            QVERIFY(posted.isEmpty());

            // The last one: "will" while it is still held, then "did" once the list is empty.
            kept->window()->close();
            QCOMPARE(posted,
                (QStringList { QWWindowManager::willCloseAllWindowsNotification,
                    QWWindowManager::didCloseAllWindowsNotification }));
            QCOMPARE(heldWhenPosted, (QList<qsizetype> { 1, 0 }));
            // Closing again before it is gone is not counted twice.
            kept->window()->show();
            kept->window()->close();
            QCOMPARE(posted.size(), 2);

            // Controllers still held go with the manager, which is no close.
            kept = new TestWindowController;
            manager.addWindowWithController(kept);
        }
        QVERIFY(!kept);
        QCOMPARE(posted.size(), 2);
    }

    void hidingAndBringingToTheFront()
    {
        QWWindowManager manager;
        auto *a = new TestWindowController;
        auto *b = new TestWindowController;
        auto *c = new TestWindowController;
        manager.addWindowControllers({ a, b, c });
        waitForActive(c->window());
        a->window()->activateWindow(); // the user clicks a: a, c, b from the front
        waitForActive(a->window());
        const Windows beforeHiding { a->window(), c->window(), b->window() };
        QCOMPARE(manager.orderedWindows(), beforeHiding);

        manager.hideAllWindowControllers();
        QCOMPARE(manager.windowControllers(), (Controllers { a, b, c }));
        QVERIFY(
            !a->window()->isVisible() && !b->window()->isVisible() && !c->window()->isVisible());
        // Meanwhile one note is brought forward on its own, from the notes menu.
        manager.showWindow(b->window());
        waitForActive(b->window());
        manager.bringWindowControllersToTheFront();
        QCOMPARE(manager.orderedWindows(), beforeHiding);
        waitForActive(a->window());

        // The captured order is used once: then the present one.
        c->window()->activateWindow();
        waitForActive(c->window());
        manager.bringWindowControllersToTheFront();
        QCOMPARE(manager.orderedWindows(), (Windows { c->window(), a->window(), b->window() }));
        QCOMPARE(QApplication::activeWindow(), c->window());

        // A window closed since the capture is left out, and one added since is not in it.
        manager.hideAllWindowControllers();
        c->window()->close();
        auto *neverShown = new TestWindowController;
        manager.addWindowWithControllerShouldShow(neverShown, false);
        manager.bringWindowControllersToTheFront();
        QVERIFY(a->window()->isVisible() && b->window()->isVisible());
        QVERIFY(!neverShown->window()->isVisible());
        waitForActive(a->window());
        // In the present order a window never shown has a place at the back (a start at login
        // with the notes hidden must not leave them hidden for good).
        manager.bringWindowControllersToTheFront();
        QCOMPARE(
            manager.orderedWindows(), (Windows { a->window(), b->window(), neverShown->window() }));
        QVERIFY(neverShown->window()->isVisible());

        // Without windows of its own, bringing to the front changes no other window.
        QWidget other;
        other.setGeometry(50, 60, 120, 90);
        QWWindowManager().bringWindowControllersToTheFront();
        QVERIFY(!other.isVisible());
        QCOMPARE(other.geometry(), QRect(50, 60, 120, 90));
    }
};

QTEST_MAIN(TestQWWindowManager)
#include "TestQWWindowManager.moc"
