#include "QWTestWindowController.h"
#include "kit/widgets/QWWindowManager.h"

#include <QApplication>
#include <QPointer>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using Controllers = QList<QWWindowController *>;
using Windows = QList<QWidget *>;

namespace {

Controllers make(int count)
{
    Controllers controllers;
    for (int i = 0; i < count; ++i)
        controllers.append(new QWTestWindowController);
    return controllers;
}

} // namespace

class TestQWWindowManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Each window is prepared once, before it is shown.
    void adding()
    {
        QWWindowManager manager;
        const Controllers c = make(4);
        Controllers prepared;
        manager.setWindowPreparation([&](QWWindowController *controller) {
            QVERIFY(!controller->window()->isVisible());
            prepared.append(controller);
        });
        // Without showing: loaded, so that closing and activation are seen, but hidden.
        manager.addWindowWithControllerShouldShow(c[0], false);
        QVERIFY(c[0]->isWindowLoaded() && !c[0]->window()->isVisible());
        manager.addWindowControllers(c);
        manager.addWindowWithController(nullptr);
        QCOMPARE(manager.windowControllers(), c);
        QCOMPARE(prepared, c);
        // The last one ends in front and active.
        QVERIFY(c[0]->window()->isVisible());
        QTRY_COMPARE(QApplication::activeWindow(), c[3]->window());
        QCOMPARE(manager.orderedWindows().first(), c[3]->window());
        // Once in the list, shown again each time and not prepared again.
        c[1]->window()->hide();
        manager.addWindowWithController(c[1]);
        QVERIFY(c[1]->window()->isVisible());
        QCOMPARE(prepared, c);
    }

    void closing()
    {
        QPointer<QWWindowController> kept;
        {
            QWWindowManager manager;
            const Controllers c = make(3);
            QPointer<QWWindowController> first = c[0];
            kept = c[2];
            manager.addWindowControllers(c);

            first->window()->close();
            QCOMPARE(manager.windowControllers(), c.mid(1));
            // Deleted, but not while it is still closing its window.
            QVERIFY(first);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(!first);
            // Deleted elsewhere: its window went with it.
            delete c[1];
            QCOMPARE(manager.windowControllers(), Controllers { kept });
        }
        // Controllers still held go with the manager.
        QVERIFY(!kept);
    }

    // Which windows come to the front, and in which order (the integration test has a window
    // manager tell the order the user sees).
    void hidingAndBringingToTheFront()
    {
        QWWindowManager manager;
        const Controllers c = make(4);
        const Windows w { c[0]->window(), c[1]->window(), c[2]->window(), c[3]->window() };
        manager.addWindowControllers(c.first(3));
        QTRY_COMPARE(QApplication::activeWindow(), w[2]);
        manager.hideAllWindowControllers();
        QVERIFY(!w[0]->isVisible() && !w[1]->isVisible() && !w[2]->isVisible());
        // Since hiding: one window closed, one added without showing, one brought forward.
        w[0]->close();
        manager.addWindowWithControllerShouldShow(c[3], false);
        manager.showWindow(w[1]);
        QTRY_COMPARE(QApplication::activeWindow(), w[1]);
        manager.bringWindowControllersToTheFront();
        QCOMPARE(manager.orderedWindows(), (Windows { w[2], w[1], w[3] }));
        QVERIFY(!w[3]->isVisible());
        QTRY_COMPARE(QApplication::activeWindow(), w[2]);

        // The order from before hiding is used once: then the present one, where a window never
        // shown has a place at the back (a start at login with the notes hidden must not leave
        // them hidden for good).
        w[1]->activateWindow(); // the user clicks it
        QTRY_COMPARE(QApplication::activeWindow(), w[1]);
        manager.bringWindowControllersToTheFront();
        QCOMPARE(manager.orderedWindows(), (Windows { w[1], w[2], w[3] }));
        QVERIFY(w[3]->isVisible());
        QCOMPARE(QApplication::activeWindow(), w[1]);
    }
};

QTEST_MAIN(TestQWWindowManager)
#include "TestQWWindowManager.moc"
