#include "kit/widgets/QWWindowController.h"
#include "kit/widgets/QWWindowMasonry.h"
#include "support/QWTestEnvironment.h"

#include <QSet>
#include <QTest>
#include <QWidget>

#include <memory>
#include <vector>

class TestWindowController final : public QWWindowController
{
    Q_OBJECT

public:
    explicit TestWindowController(const QRect &frame) : m_frame(frame) { }

protected:
    // An empty frame stands for a controller without a window.
    std::unique_ptr<QWidget> loadWindow() override
    {
        if (m_frame.isEmpty())
            return nullptr;
        auto window = std::make_unique<QWidget>();
        window->setGeometry(m_frame);
        window->show();
        return window;
    }

private:
    QRect m_frame;
};

// 1440 by 900 with a 23-high panel at the top: counted from the bottom left, as the grid is
// reckoned, the free area reaches (1440, 877).
const QRect laptop(0, 0, 1440, 900);
const QRect laptopFree(0, 23, 1440, 877);
const QRect plain(0, 0, 1280, 800); // 1260 by 780 inside the margins: whole cells below

class TestQWWindowMasonry final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { m_controllers.clear(); }

    void oneWindowFillsTheFreeAreaLessTheMargins();
    void gridShapes_data();
    void gridShapes();
    void rowsFillFromTheTopLeftAndReachUnderLeftAndBottomPanels();
    void screenAwayFromTheOriginWithUnevenCells();
    void recordsAndRestoresTheFramesAtCreation();

private:
    QList<QWWindowController *> makeControllers(int count, int withoutWindow = -1)
    {
        QList<QWWindowController *> result;
        for (int i = 0; i < count; ++i) {
            const QRect frame
                = i == withoutWindow ? QRect() : QRect(100 + 7 * i, 200, 240 + i, 180);
            m_controllers.push_back(std::make_unique<TestWindowController>(frame));
            result.append(m_controllers.back().get());
        }
        return result;
    }
    QList<QRect> frames() const
    {
        QList<QRect> result;
        for (const auto &controller : m_controllers)
            result.append(controller->window() ? controller->window()->geometry() : QRect());
        return result;
    }

    std::vector<std::unique_ptr<TestWindowController>> m_controllers;
};

void TestQWWindowMasonry::oneWindowFillsTheFreeAreaLessTheMargins()
{
    QWTestEnvironment environment;
    QWWindowMasonry masonry(makeControllers(1));
    const QRect before = frames().first();
    masonry.setScreenGeometry(laptop, laptopFree);
    environment.clearMessages();
    masonry.layout();
    QCOMPARE(environment.messages(),
        (QStringList { QStringLiteral("Count: 1"), QStringLiteral("Done") }));
    QCOMPARE(frames().first(), before); // animated: it starts where it was
    // x 10, y 10, 1410 by 847 from the bottom left: 10 from the screen's left and bottom
    // edges, 20 from the panel and the right edge.
    QTRY_COMPARE(frames(), QList<QRect> { QRect(10, 43, 1410, 847) });

    // No windows: the two lines, nothing else.
    QWWindowMasonry empty({});
    environment.clearMessages();
    empty.layout();
    empty.restore();
    QCOMPARE(environment.messages(),
        (QStringList { QStringLiteral("Count: 0"), QStringLiteral("Done") }));
    QVERIFY(empty.originalWindowRects().isEmpty());
}

void TestQWWindowMasonry::gridShapes_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("inLastRow");
    QTest::newRow("2: side by side") << 2 << 1 << 2 << 2;
    QTest::newRow("3: one row") << 3 << 1 << 3 << 3;
    QTest::newRow("4: two by two") << 4 << 2 << 2 << 2;
    QTest::newRow("5: three over two") << 5 << 2 << 3 << 2;
    QTest::newRow("10: three rows of four") << 10 << 3 << 4 << 2;
}

void TestQWWindowMasonry::gridShapes()
{
    QFETCH(int, count);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(int, inLastRow);
    QWWindowMasonry masonry(makeControllers(count));
    masonry.setScreenGeometry(plain, plain);
    masonry.layout();
    QTRY_COMPARE(frames().first().topLeft(), QPoint(10, 20));
    QTRY_COMPARE(frames().last().bottom() + 1, 790);

    QSet<int> lefts, tops, rights;
    for (const QRect &frame : frames()) {
        lefts.insert(frame.left());
        tops.insert(frame.top());
        rights.insert(frame.right() + 1);
        QCOMPARE(frame.size(), QSize(1260 / columns - 10, 780 / rows - 10));
    }
    QCOMPARE(lefts.size(), columns);
    QCOMPARE(tops.size(), rows);
    QVERIFY(rights.contains(1260));
    const QList<QRect> laidOut = frames();
    QCOMPARE(std::count_if(laidOut.cbegin(), laidOut.cend(),
                 [&](const QRect &frame) { return frame.top() == laidOut.last().top(); }),
        inLastRow);
}

void TestQWWindowMasonry::rowsFillFromTheTopLeftAndReachUnderLeftAndBottomPanels()
{
    // A dock 48 wide at the left and a panel 30 high at the bottom: only the free area's top
    // and right edges count.
    QWWindowMasonry masonry(makeControllers(10));
    masonry.setScreenGeometry(plain, QRect(48, 0, 1232, 770));
    masonry.layout();
    QTRY_COMPARE(frames(),
        (QList<QRect> { QRect(10, 20, 305, 250), QRect(325, 20, 305, 250), QRect(640, 20, 305, 250),
            QRect(955, 20, 305, 250), QRect(10, 280, 305, 250), QRect(325, 280, 305, 250),
            QRect(640, 280, 305, 250), QRect(955, 280, 305, 250), QRect(10, 540, 305, 250),
            QRect(325, 540, 305, 250) }));
}

void TestQWWindowMasonry::screenAwayFromTheOriginWithUnevenCells()
{
    // Cells 1004 / 3 wide: edges rounded, gaps kept.
    QWWindowMasonry masonry(makeControllers(3));
    masonry.setScreenGeometry(QRect(1920, 100, 1024, 768), QRect(1920, 128, 1024, 740));
    masonry.layout();
    QTRY_COMPARE(frames(),
        (QList<QRect> {
            QRect(1930, 148, 325, 710), QRect(2265, 148, 324, 710), QRect(2599, 148, 325, 710) }));
}

void TestQWWindowMasonry::recordsAndRestoresTheFramesAtCreation()
{
    // The second controller has no window: it keeps its cell, recorded as an empty frame.
    QWWindowMasonry masonry(makeControllers(3, 1));
    const QList<QRect> atCreation = frames();
    QCOMPARE(masonry.originalWindowRects(), atCreation);
    QCOMPARE(atCreation.at(1), QRect(0, 0, 0, 0));

    masonry.setScreenGeometry(laptop, laptopFree);
    masonry.layout();
    QTRY_COMPARE(frames().first().topLeft(), QPoint(10, 43));
    QCOMPARE(masonry.originalWindowRects(), atCreation + atCreation);
    const QList<QRect> firstLayout = frames();
    masonry.setScreenGeometry(plain, plain);
    masonry.layout();
    const QList<QRect> laidOut { QRect(10, 20, 410, 770), QRect(), QRect(850, 20, 410, 770) };
    QTRY_COMPARE(frames(), laidOut);
    QCOMPARE(masonry.originalWindowRects(), atCreation + atCreation + firstLayout);

    masonry.restore();
    QTRY_COMPARE(frames(), atCreation);
    masonry.updateNodeDimensions();
    QCOMPARE(masonry.originalWindowRects().size(), 12);

    // A layout takes over from a restore still moving the windows (which would run longer).
    masonry.restore();
    masonry.layout();
    QTRY_COMPARE(frames(), laidOut);
    QTest::qWait(400);
    QCOMPARE(frames(), laidOut);
}

QTEST_MAIN(TestQWWindowMasonry)
#include "TestQWWindowMasonry.moc"
