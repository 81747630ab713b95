#include "QWTestWindowController.h"
#include "kit/widgets/QWWindowMasonry.h"

#include <QTest>

#include <memory>
#include <vector>

using Frames = QList<QRect>;

static const QRect plain(0, 0, 1280, 800);
// The grid as the user sees it: 20 below the free area's top edge and 20 before its right
// edge, 10 from the screen's left and bottom edges (under a dock or a bottom panel), 10 between
// the cells, as many rows as the square root of the count allows.
class TestQWWindowMasonry final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { m_controllers.clear(); }

    void layoutAndRestore_data()
    {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QRect>("free");
        QTest::addColumn<Frames>("laidOut");
        QTest::newRow("none") << plain << plain << Frames {};
        QTest::newRow("one under a top panel") << QRect(0, 0, 1440, 900) << QRect(0, 23, 1440, 877)
                                               << Frames { { 10, 43, 1410, 847 } };
        QTest::newRow("one of three gone keeps its cell")
            << plain << plain << Frames { { 10, 20, 410, 770 }, {}, { 850, 20, 410, 770 } };
        QTest::newRow("five: three over two, a dock and a bottom panel")
            << plain << QRect(48, 0, 1232, 770)
            << Frames { { 10, 20, 410, 380 }, { 430, 20, 410, 380 }, { 850, 20, 410, 380 },
                   { 10, 410, 410, 380 }, { 430, 410, 410, 380 } };
        // Cells 1004 / 3 wide: edges rounded, gaps kept.
        QTest::newRow("away from the origin")
            << QRect(1920, 100, 1024, 768) << QRect(1920, 128, 1024, 740)
            << Frames { { 1930, 148, 325, 710 }, { 2265, 148, 324, 710 }, { 2599, 148, 325, 710 } };
    }

    void layoutAndRestore()
    {
        QFETCH(QRect, screen);
        QFETCH(QRect, free);
        QFETCH(Frames, laidOut);
        QWWindowMasonry masonry(makeControllers(laidOut));
        const Frames before = frames();
        masonry.setScreenGeometry(screen, free);
        masonry.layout();
        QCOMPARE(frames(), before); // animated: it starts where they were
        // A layout takes over from a restore still moving the windows back (it runs longer).
        masonry.restore();
        masonry.layout();
        QTRY_COMPARE(frames(), laidOut);
        QTest::qWait(200);
        QCOMPARE(frames(), laidOut);
        masonry.restore();
        QTRY_COMPARE(frames(), before);
    }

private:
    // Shown windows apart from where the grid puts them; a null frame for a controller gone.
    QList<QWWindowController *> makeControllers(const Frames &laidOut)
    {
        QList<QWWindowController *> result;
        for (int i = 0; i < laidOut.size(); ++i) {
            const auto &controller = m_controllers.emplace_back(laidOut[i].isNull()
                    ? nullptr
                    : std::make_unique<QWTestWindowController>(
                        QRect(100 + 7 * i, 200, 240 + i, 180)));
            if (controller)
                controller->window()->show();
            result.append(controller.get());
        }
        return result;
    }
    Frames frames() const
    {
        Frames result;
        for (const auto &controller : m_controllers)
            result.append(controller ? controller->window()->geometry() : QRect());
        return result;
    }

    std::vector<std::unique_ptr<QWTestWindowController>> m_controllers;
};

QTEST_MAIN(TestQWWindowMasonry)
#include "TestQWWindowMasonry.moc"
