#include "app/AppDelegate.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tagbrowser/SNTagManagerWindowController.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The application controller opens the tag browser from the tray and closes it again from
// there, and lets it go once its window has closed.
class TestSNTagManagerToggle final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondRequestClosesAndTheBrowserIsDropped()
    {
        AppDelegate delegate;
        const QList<QAction *> items = delegate.statusItemMenu()->actions();
        const auto item = std::find_if(items.cbegin(), items.cend(),
            [](QAction *action) { return action->text() == u"Show Tag Browser"; });
        QVERIFY(item != items.cend());
        (*item)->trigger();
        QPointer<SNTagManagerWindowController> browser = delegate.tagManagerWindowController();
        QVERIFY(browser && browser->isOpen());
        QVERIFY(QTest::qWaitForWindowExposed(browser->window()));
        (*item)->trigger();
        // Gone once its window has closed, on a later turn of the event loop.
        QTRY_VERIFY(!delegate.tagManagerWindowController());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!browser);
    }

private:
    QWTestEnvironment m_environment;
    QWManualScheduler m_scheduler;
};

QTEST_MAIN(TestSNTagManagerToggle)
#include "TestSNTagManagerToggle.moc"
