#include "app/AppDelegate.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tagbrowser/SNTagManagerWindowController.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The application controller opens the tag browser and closes it again, from every place the
// user asks for it, and lets it go once its window has closed.
class TestSNTagManagerToggle final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondRequestClosesAndTheBrowserIsDropped()
    {
        AppDelegate delegate;
        delegate.showTagManagerIfNeeded();
        QPointer<SNTagManagerWindowController> browser = delegate.tagManagerWindowController();
        QVERIFY(browser && browser->isOpen());
        QVERIFY(QTest::qWaitForWindowExposed(browser->window()));
        delegate.showTagManagerIfNeeded();
        // Gone once its window has closed, on a later turn of the event loop.
        QTRY_VERIFY(!delegate.tagManagerWindowController());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!browser);
        // And a new one next time, from the tray menu too.
        const QList<QAction *> items = delegate.statusItemMenu()->actions();
        const auto item = std::find_if(items.cbegin(), items.cend(),
            [](QAction *action) { return action->text() == u"Show Tag Browser"; });
        QVERIFY(item != items.cend());
        (*item)->trigger();
        QVERIFY(delegate.tagManagerWindowController()->isOpen());
        (*item)->trigger();
        QTRY_VERIFY(!delegate.tagManagerWindowController());
    }

private:
    QWTestEnvironment m_environment;
    QWManualScheduler m_scheduler;
};

QTEST_MAIN(TestSNTagManagerToggle)
#include "TestSNTagManagerToggle.moc"
