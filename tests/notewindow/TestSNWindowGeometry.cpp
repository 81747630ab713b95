#include "notes/SNWindowFrameString.h"
#include "notewindow/SNWindowEdgeGrip.h"
#include "notewindow/SNWindowPlacement.h"

#include <QTest>

using namespace Qt::StringLiterals;

// Window frames as notes store them, frames kept on a screen, and frames that edges resize.
class TestSNWindowGeometry final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frameStrings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QRect>("frame"); // null: no frame
        QTest::newRow("stored") << u"{{100, 200}, {240, 180}}"_s << QRect(100, 200, 240, 180);
        QTest::newRow("left of the first screen")
            << u"{{-1280, -5}, {300, 40}}"_s << QRect(-1280, -5, 300, 40);
        // Written by other versions with fractions and without spaces.
        QTest::newRow("fractions") << u"{{10.6,20.4},{300.5,199.5}}"_s << QRect(11, 20, 301, 200);
        for (const QString &text : { QString(), u"{{1, 2}, {3}}"_s, u"{{a, 2}, {3, 4}}"_s,
                 u"{{1, 2}, {0, 40}}"_s, u"{{1, 2}, {30, -4}}"_s, u"{{1e300, 2}, {30, 40}}"_s,
                 u"{{1, 2}, {30, 40}} trailing"_s })
            QTest::newRow(qPrintable(u"unreadable "_s + text)) << text << QRect();
    }

    void frameStrings()
    {
        QFETCH(QString, text);
        QFETCH(QRect, frame);
        const std::optional<QRect> read = SNWindowFrameString::rectFromString(text);
        QCOMPARE(read.value_or(QRect()), frame);
        if (frame.isValid() && !text.contains(u'.'))
            QCOMPARE(SNWindowFrameString::stringFromRect(frame), text);
    }

    void framesStayOnAScreen_data()
    {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QRect>("placed");
        for (const QRect &frame : { QRect(100, 100, 300, 200), QRect(1500, 900, 300, 200),
                 // Mostly off screen, but the title bar can still be grabbed.
                 QRect(-250, 10, 300, 200), QRect(3150, 500, 300, 200) })
            QTest::addRow("reachable %d, %d", frame.x(), frame.y()) << frame << frame;
        // Onto the nearest screen, below its top panel, shrunk when larger than it.
        QTest::newRow("left of everything")
            << QRect(-2000, -400, 300, 200) << QRect(0, 30, 300, 200);
        QTest::newRow("beyond the corner")
            << QRect(5000, 3000, 300, 200) << QRect(2900, 880, 300, 200);
        QTest::newRow("title bar above") << QRect(200, -180, 300, 200) << QRect(200, 30, 300, 200);
        QTest::newRow("too large") << QRect(-5000, 100, 1600, 900) << QRect(0, 30, 1280, 770);
    }

    void framesStayOnAScreen()
    {
        QFETCH(QRect, frame);
        QFETCH(QRect, placed);
        const QList<SNWindowPlacement::Screen> screens
            = { { QRect(0, 0, 1280, 800), QRect(0, 30, 1280, 770) },
                  { QRect(1280, 0, 1920, 1080), QRect(1280, 0, 1920, 1080) } };
        QCOMPARE(SNWindowPlacement::isFrameReachable(frame, screens), frame == placed);
        QCOMPARE(SNWindowPlacement::frameOnScreens(frame, screens), placed);
        // Without any screen there is nowhere better to put it.
        QCOMPARE(SNWindowPlacement::frameOnScreens(frame, {}), frame);
    }

    void edgesResizeWithinTheSizeLimits()
    {
        const QRect start(100, 100, 300, 200);
        const QSize minimum(120, 30);
        const QSize none(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        // A single edge is TestSNStickyWindow's, dragged through its grip.
        QCOMPARE(SNWindowEdgeGrip::resizedFrame(
                     start, Qt::TopEdge | Qt::LeftEdge, QPoint(-20, 30), minimum, none),
            QRect(80, 130, 320, 170));
        // The edge that is not dragged stays put when a limit stops the drag.
        QCOMPARE(SNWindowEdgeGrip::resizedFrame(start, Qt::LeftEdge, QPoint(250, 0), minimum, none),
            QRect(280, 100, 120, 200));
        QCOMPARE(SNWindowEdgeGrip::resizedFrame(
                     start, Qt::BottomEdge, QPoint(0, 300), minimum, QSize(QWIDGETSIZE_MAX, 30)),
            QRect(100, 100, 300, 30));
    }
};

QTEST_MAIN(TestSNWindowGeometry)
#include "TestSNWindowGeometry.moc"
