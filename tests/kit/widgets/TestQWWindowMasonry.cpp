#include "kit/widgets/QWWindowController.h"
#include "kit/widgets/QWWindowMasonry.h"

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

    void oneWindowFillsTheFreeAreaLessTheMargins()
    {
        QWWindowMasonry masonry(makeControllers(1));
        const QList<QRect> before = frames();
        masonry.setScreenGeometry(laptop, laptopFree);
        masonry.layout();
        QCOMPARE(frames(), before); // animated: it starts where it was
        // 10 from the screen's left and bottom edges, 20 from the panel and the right edge.
        QTRY_COMPARE(frames(), QList<QRect> { QRect(10, 43, 1410, 847) });
        QWWindowMasonry empty({});
        empty.layout();
        empty.restore();
        QVERIFY(empty.originalWindowRects().isEmpty());
    }

    void gridShapes_data()
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

    void gridShapes()
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
        QSet<int> lefts, tops;
        int lastRow = 0;
        for (const QRect &frame : frames()) {
            lefts.insert(frame.left());
            tops.insert(frame.top());
            lastRow += frame.top() == frames().last().top();
            QCOMPARE(frame.size(), QSize(1260 / columns - 10, 780 / rows - 10));
        }
        QCOMPARE(lefts.size(), columns);
        QCOMPARE(tops.size(), rows);
        QCOMPARE(lastRow, inLastRow);
    }

    // A dock at the left and a panel at the bottom: only the free area's top and right edges
    // count. Away from the origin, with cells 1004 / 3 wide: edges rounded, gaps kept.
    void panelsAndUnevenCells()
    {
        QWWindowMasonry masonry(makeControllers(5));
        masonry.setScreenGeometry(plain, QRect(48, 0, 1232, 770));
        masonry.layout();
        QTRY_COMPARE(frames(),
            (QList<QRect> { QRect(10, 20, 410, 380), QRect(430, 20, 410, 380),
                QRect(850, 20, 410, 380), QRect(10, 410, 410, 380), QRect(430, 410, 410, 380) }));
        m_controllers.clear();

        QWWindowMasonry away(makeControllers(3));
        away.setScreenGeometry(QRect(1920, 100, 1024, 768), QRect(1920, 128, 1024, 740));
        away.layout();
        QTRY_COMPARE(frames(),
            (QList<QRect> { QRect(1930, 148, 325, 710), QRect(2265, 148, 324, 710),
                QRect(2599, 148, 325, 710) }));
    }

    // A controller without a window keeps its cell. A layout takes over from a restore still
    // moving the windows back (which would run longer).
    void layoutTakesOverFromARestore()
    {
        QWWindowMasonry masonry(makeControllers(3, 1));
        const QList<QRect> atCreation = frames();
        masonry.setScreenGeometry(plain, plain);
        masonry.layout();
        const QList<QRect> laidOut { QRect(10, 20, 410, 770), QRect(), QRect(850, 20, 410, 770) };
        QTRY_COMPARE(frames(), laidOut);
        masonry.restore();
        QTRY_COMPARE(frames(), atCreation);
        masonry.layout();
        masonry.restore();
        masonry.layout();
        QTRY_COMPARE(frames(), laidOut);
        QTest::qWait(400);
        QCOMPARE(frames(), laidOut);
    }

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

QTEST_MAIN(TestQWWindowMasonry)
#include "TestQWWindowMasonry.moc"
