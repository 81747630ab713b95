#include "notewindow/SNWindowEdgeGrip.h"
#include "notewindow/SNWindowFrameString.h"
#include "notewindow/SNWindowPlacement.h"

#include <QTest>

// Window frames as notes store them, frames kept on a screen, and frames that edges resize.
class TestSNWindowGeometry final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frameStringsRoundTrip();
    void unreadableFrameStringsAreNoFrame();
    void reachableFramesStayWhereTheyAre();
    void lostFramesMoveOntoTheNearestScreen();
    void edgesResizeWithinTheSizeLimits();
};

void TestSNWindowGeometry::frameStringsRoundTrip()
{
    QCOMPARE(SNWindowFrameString::stringFromRect(QRect(100, 200, 240, 180)),
        QStringLiteral("{{100, 200}, {240, 180}}"));
    QCOMPARE(SNWindowFrameString::rectFromString(QStringLiteral("{{100, 200}, {240, 180}}")),
        std::optional<QRect>(QRect(100, 200, 240, 180)));
    QCOMPARE(SNWindowFrameString::rectFromString(QStringLiteral("{{-1280, -5}, {300, 40}}")),
        std::optional<QRect>(QRect(-1280, -5, 300, 40)));
    // Written by other versions with fractions and without spaces.
    QCOMPARE(SNWindowFrameString::rectFromString(QStringLiteral("{{10.6,20.4},{300.5,199.5}}")),
        std::optional<QRect>(QRect(11, 20, 301, 200)));
}

void TestSNWindowGeometry::unreadableFrameStringsAreNoFrame()
{
    for (const QString &text : { QString(), QStringLiteral(""), QStringLiteral("{{1, 2}, {3}}"),
             QStringLiteral("{{a, 2}, {3, 4}}"), QStringLiteral("{{1, 2}, {0, 40}}"),
             QStringLiteral("{{1, 2}, {30, -4}}"), QStringLiteral("{{1e300, 2}, {30, 40}}"),
             QStringLiteral("{{1, 2}, {30, 40}} trailing") }) {
        QVERIFY2(!SNWindowFrameString::rectFromString(text), qPrintable(text));
    }
}

void TestSNWindowGeometry::reachableFramesStayWhereTheyAre()
{
    const QList<SNWindowPlacement::Screen> screens
        = { { QRect(0, 0, 1280, 800), QRect(0, 30, 1280, 770) },
              { QRect(1280, 0, 1920, 1080), QRect(1280, 0, 1920, 1080) } };
    for (const QRect &frame : { QRect(100, 100, 300, 200), QRect(1500, 900, 300, 200),
             // Mostly off screen, but the title bar can still be grabbed.
             QRect(-250, 10, 300, 200), QRect(3150, 500, 300, 200) }) {
        QVERIFY(SNWindowPlacement::isFrameReachable(frame, screens));
        QCOMPARE(SNWindowPlacement::frameOnScreens(frame, screens), frame);
    }
    // Without any screen there is nowhere better to put it.
    QCOMPARE(SNWindowPlacement::frameOnScreens(QRect(9000, 9000, 10, 10), {}),
        QRect(9000, 9000, 10, 10));
}

void TestSNWindowGeometry::lostFramesMoveOntoTheNearestScreen()
{
    const QList<SNWindowPlacement::Screen> screens
        = { { QRect(0, 0, 1280, 800), QRect(0, 30, 1280, 770) },
              { QRect(1280, 0, 1920, 1080), QRect(1280, 0, 1920, 1080) } };
    // Left of everything: onto the first screen, below its top panel.
    QCOMPARE(SNWindowPlacement::frameOnScreens(QRect(-2000, -400, 300, 200), screens),
        QRect(0, 30, 300, 200));
    // Beyond the second screen's lower right corner.
    QCOMPARE(SNWindowPlacement::frameOnScreens(QRect(5000, 3000, 300, 200), screens),
        QRect(2900, 880, 300, 200));
    // Only the body shows: the title bar is above the top of every screen.
    QCOMPARE(SNWindowPlacement::frameOnScreens(QRect(200, -180, 300, 200), screens),
        QRect(200, 30, 300, 200));
    // Larger than the screen it lands on: shrunk to fit.
    QCOMPARE(SNWindowPlacement::frameOnScreens(QRect(-5000, 100, 1600, 900), screens),
        QRect(0, 30, 1280, 770));
}

void TestSNWindowGeometry::edgesResizeWithinTheSizeLimits()
{
    const QRect start(100, 100, 300, 200);
    const QSize minimum(120, 30);
    const QSize maximum(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    QCOMPARE(SNWindowEdgeGrip::resizedFrame(start, Qt::RightEdge, QPoint(50, 70), minimum, maximum),
        QRect(100, 100, 350, 200));
    QCOMPARE(SNWindowEdgeGrip::resizedFrame(
                 start, Qt::TopEdge | Qt::LeftEdge, QPoint(-20, 30), minimum, maximum),
        QRect(80, 130, 320, 170));
    // The edge that is not dragged stays put when a limit stops the drag.
    QCOMPARE(SNWindowEdgeGrip::resizedFrame(start, Qt::LeftEdge, QPoint(250, 0), minimum, maximum),
        QRect(280, 100, 120, 200));
    QCOMPARE(SNWindowEdgeGrip::resizedFrame(
                 start, Qt::BottomEdge, QPoint(0, 300), minimum, QSize(QWIDGETSIZE_MAX, 30)),
        QRect(100, 100, 300, 30));

    QCOMPARE(
        SNWindowEdgeGrip::cursorShapeForEdges(Qt::TopEdge | Qt::LeftEdge), Qt::SizeFDiagCursor);
    QCOMPARE(
        SNWindowEdgeGrip::cursorShapeForEdges(Qt::BottomEdge | Qt::LeftEdge), Qt::SizeBDiagCursor);
    QCOMPARE(SNWindowEdgeGrip::cursorShapeForEdges(Qt::RightEdge), Qt::SizeHorCursor);
    QCOMPARE(SNWindowEdgeGrip::cursorShapeForEdges(Qt::BottomEdge), Qt::SizeVerCursor);
}

QTEST_MAIN(TestSNWindowGeometry)
#include "TestSNWindowGeometry.moc"
