#include "app/AppDelegate.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tagbrowser/SNTagManagerWindowController.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QTest>

// The application controller opens the tag browser and closes it again, from every place the
// user asks for it, and lets it go once its window has closed.
class TestSNTagManagerToggle final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondRequestClosesAndTheBrowserIsDropped();
    void trayMenuHasTheCommand();

private:
    QWTestEnvironment m_environment;
    QWManualScheduler m_scheduler;
};

void TestSNTagManagerToggle::secondRequestClosesAndTheBrowserIsDropped()
{
    AppDelegate delegate;
    QVERIFY(!delegate.tagManagerWindowController());
    delegate.showTagManagerIfNeeded();
    QPointer<SNTagManagerWindowController> browser = delegate.tagManagerWindowController();
    QVERIFY(browser);
    QVERIFY(browser->isOpen());
    QVERIFY(QTest::qWaitForWindowExposed(browser->window()));

    delegate.showTagManagerIfNeeded();
    // Gone once its window has closed, on a later turn of the event loop.
    QTRY_VERIFY(!delegate.tagManagerWindowController());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!browser);

    // And a new one next time.
    delegate.showTagManagerIfNeeded();
    QVERIFY(delegate.tagManagerWindowController());
    QVERIFY(delegate.tagManagerWindowController()->isOpen());
}

void TestSNTagManagerToggle::trayMenuHasTheCommand()
{
    AppDelegate delegate;
    QAction *item = nullptr;
    for (QAction *action : delegate.statusItemMenu()->actions()) {
        if (action->text() == QStringLiteral("Show Tag Browser"))
            item = action;
    }
    QVERIFY(item);
    item->trigger();
    QVERIFY(delegate.tagManagerWindowController());
    item->trigger();
    QTRY_VERIFY(!delegate.tagManagerWindowController());
}

QTEST_MAIN(TestSNTagManagerToggle)
#include "TestSNTagManagerToggle.moc"
