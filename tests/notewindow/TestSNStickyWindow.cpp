#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNStickyWindowDelegate.h"
#include "notewindow/SNWindowEdgeGrip.h"

#include <QMouseEvent>
#include <QTest>
#include <QVBoxLayout>

namespace {

// Answers the close question as told and counts what it hears.
class RecordingDelegate final : public SNStickyWindowDelegate
{
public:
    bool answer = true;
    int questions = 0;
    int closes = 0;

    bool windowShouldClose(SNStickyWindow *) override
    {
        ++questions;
        return answer;
    }
    void windowWillClose(SNStickyWindow *) override { ++closes; }
};

void sendMouse(QWidget *target, QEvent::Type type, const QPoint &local, Qt::MouseButtons buttons)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, local, target->mapToGlobal(local), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

} // namespace

// The borderless note window: closing through its delegate, Ctrl+W and the live edges. Moving
// it by its background is the integration test's, with a window manager.
class TestSNStickyWindow final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCloseAsksTheDelegateOnce()
    {
        SNStickyWindow window;
        RecordingDelegate delegate;
        window.setDelegate(&delegate);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        delegate.answer = false;
        window.performClose();
        QVERIFY(!window.close()); // as the window manager asks
        QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
        QCOMPARE(delegate.questions, 3);
        QCOMPARE(delegate.closes, 0);
        QVERIFY(window.isVisible());

        delegate.answer = true;
        QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
        // Asked once, not again on the way out.
        QCOMPARE(delegate.questions, 4);
        QCOMPARE(delegate.closes, 1);
        QVERIFY(!window.isVisible());
    }

    void edgesAndCornersResize()
    {
        SNStickyWindow window;
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        auto *content = new QWidget(&window);
        layout->addWidget(content);
        window.setMinimumSize(120, 30);
        window.setGeometry(50, 60, 300, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        // Each edge and corner answers to a press at it, above the content.
        const std::pair<QPoint, Qt::Edges> spots[] = { { QPoint(150, 1), Qt::TopEdge },
            { QPoint(150, 198), Qt::BottomEdge }, { QPoint(1, 100), Qt::LeftEdge },
            { QPoint(298, 100), Qt::RightEdge }, { QPoint(1, 1), Qt::TopEdge | Qt::LeftEdge },
            { QPoint(298, 198), Qt::BottomEdge | Qt::RightEdge } };
        for (const auto &[spot, edges] : spots) {
            auto *grip = qobject_cast<SNWindowEdgeGrip *>(window.childAt(spot));
            QVERIFY2(grip, qPrintable(QStringLiteral("%1, %2").arg(spot.x()).arg(spot.y())));
            QCOMPARE(grip->edges(), edges);
        }
        QCOMPARE(window.childAt(QPoint(150, 100)), content);

        // Without a window manager to do it, the grip resizes the window itself.
        auto *right = window.childAt(QPoint(298, 100));
        sendMouse(right, QEvent::MouseButtonPress, QPoint(1, 50), Qt::LeftButton);
        sendMouse(right, QEvent::MouseMove, QPoint(41, 70), Qt::LeftButton);
        sendMouse(right, QEvent::MouseButtonRelease, QPoint(41, 70), Qt::NoButton);
        QCOMPARE(window.geometry(), QRect(50, 60, 340, 200));
    }
};

QTEST_MAIN(TestSNStickyWindow)
#include "TestSNStickyWindow.moc"
