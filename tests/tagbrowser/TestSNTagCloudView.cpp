#include "kit/QWColor.h"
#include "tagbrowser/SNTagButton.h"
#include "tagbrowser/SNTagCloudView.h"
#include "tagbrowser/SNTagCloudViewDataSource.h"
#include "tagbrowser/SNTagCloudViewDelegate.h"
#include "tags/SNTag.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using Points = QList<QPoint>;

namespace {

// Data source and delegate at once, as the tag browser is.
class CloudItems final : public QObject,
                         public SNTagCloudViewDataSource,
                         public SNTagCloudViewDelegate
{
public:
    QList<std::shared_ptr<SNTag>> tags; // null entries are left out
    QList<qint64> clicked;

    qint64 numberOfItemsInTagCloud(SNTagCloudView *) override { return tags.size(); }
    std::shared_ptr<SNTag> tagCloudViewTagForIndex(SNTagCloudView *, qint64 index) override
    {
        return tags.value(index);
    }
    void tagCloudViewItemWasClickedAtIndex(SNTagCloudView *, qint64 index) override
    {
        clicked.append(index);
    }
};

std::shared_ptr<SNTag> tagNamed(const QString &name)
{
    return SNTag::tagWithNameColor(name, QWColor(0.2, 0.5, 0.8));
}

} // namespace

// How the cloud turns tags into buttons and lays them out in lines.
class TestSNTagCloudView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_items = std::make_unique<CloudItems>();
        m_cloud = std::make_unique<SNTagCloudView>();
        m_cloud->setDataSource(m_items.get());
        m_cloud->setDelegate(m_items.get());
    }
    void cleanup()
    {
        m_cloud.reset();
        m_items.reset();
    }

    void layout_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<QList<int>>("widths");
        QTest::addColumn<Points>("positions");
        QTest::addColumn<int>("height");
        // Line 0 holds 10 and 80 (right edge 140), shifted by 100 - 70; the third would end at
        // 210 and starts line 1 at 10, shifted by 100 - 35.
        QTest::newRow("wrap and centre") << 200 << QList<int> { 60, 60, 60 }
                                         << Points { { 40, 0 }, { 110, 0 }, { 75, 30 } } << 60;
        // The wide one stands alone on line 1, sticking out on the right; the next follows on 2.
        QTest::newRow("over-wide first")
            << 200 << QList<int> { 250, 40 } << Points { { -20, 30 }, { 85, 60 } } << 90;
        // An odd shift is rounded outward: the button grows rather than losing a point.
        QTest::newRow("odd shift") << 201 << QList<int> { 60 } << Points { { 75, 0 } } << 30;
        QTest::newRow("none: the frame stays as it was") << 200 << QList<int> {} << Points {} << 60;
    }

    void layout()
    {
        QFETCH(int, width);
        m_cloud->setGeometry(0, 0, width, 100);
        QFETCH(QList<int>, widths);
        reloadWithWidths({ 60, 60, 60, 60 });
        reloadWithWidths(widths);
        // The buttons of before are gone, from the view too.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(m_cloud->findChildren<SNTagButton *>().size(), widths.size());
        Points positions;
        for (const SNTagButton *button : m_cloud->buttonArray())
            positions.append(button->pos());
        QTEST(positions, "positions");
        QTEST(m_cloud->height(), "height");
        QCOMPARE(m_cloud->width(), width);
    }

    // Clicks name the index of the tag; a delegate gone is not asked.
    void nullTagsAreSkippedAndIndicesKept()
    {
        m_cloud->setGeometry(0, 0, 400, 30);
        m_items->tags = { nullptr, tagNamed(u"#one"_s), nullptr, tagNamed(u"#three"_s) };
        m_cloud->reloadData();
        const QList<SNTagButton *> &buttons = m_cloud->buttonArray();
        QCOMPARE(buttons.size(), 2);
        QCOMPARE(buttons.at(0)->text(), u"#one"_s);
        m_cloud->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_cloud.get()));
        QTest::mouseClick(buttons.at(1), Qt::LeftButton);
        QTest::mouseClick(buttons.at(0), Qt::LeftButton);
        QCOMPARE(m_items->clicked, (QList<qint64> { 3, 1 }));

        m_items.reset();
        QVERIFY(!m_cloud->delegate() && !m_cloud->dataSource());
        QTest::mouseClick(buttons.at(0), Qt::LeftButton);
        m_cloud->reloadData();
        QVERIFY(m_cloud->buttonArray().isEmpty());
    }

private:
    // Buttons of the given widths, laid out again as they are.
    void reloadWithWidths(const QList<int> &widths)
    {
        m_items->tags.clear();
        for (int i = 0; i < widths.size(); ++i)
            m_items->tags.append(tagNamed(u"#t%1"_s.arg(i)));
        m_cloud->reloadData();
        QCOMPARE(m_cloud->buttonArray().size(), widths.size());
        for (int i = 0; i < widths.size(); ++i)
            m_cloud->buttonArray().at(i)->resize(widths.at(i), SNTagCloudView::buttonHeight);
        m_cloud->positionButtons(true);
    }

    std::unique_ptr<CloudItems> m_items;
    std::unique_ptr<SNTagCloudView> m_cloud;
};

QTEST_MAIN(TestSNTagCloudView)
#include "TestSNTagCloudView.moc"
