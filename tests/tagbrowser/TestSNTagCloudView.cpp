#include "kit/QWColor.h"
#include "tagbrowser/SNTagButton.h"
#include "tagbrowser/SNTagCloudView.h"
#include "tagbrowser/SNTagCloudViewDataSource.h"
#include "tagbrowser/SNTagCloudViewDelegate.h"
#include "tagbrowser/SNTagTextFieldCell.h"
#include "tags/SNTag.h"

#include <QImage>
#include <QPainter>
#include <QTest>

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

std::shared_ptr<SNTag> tagNamed(const QString &name, const QWColor &color = QWColor(0.2, 0.5, 0.8))
{
    return SNTag::tagWithNameColor(name, color);
}

QList<int> lefts(const SNTagCloudView &cloud)
{
    QList<int> result;
    for (const SNTagButton *button : cloud.buttonArray())
        result.append(button->x());
    return result;
}

QList<int> tops(const SNTagCloudView &cloud)
{
    QList<int> result;
    for (const SNTagButton *button : cloud.buttonArray())
        result.append(button->y());
    return result;
}

QRgb pixel(QWidget &widget, const QPoint &point)
{
    QImage image(widget.size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    // Only what the widget draws itself, not the window background behind it.
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image.pixel(point);
}

} // namespace

// How the cloud turns tags into buttons and lays them out in lines.
class TestSNTagCloudView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void layout_data();
    void layout();
    void countOfZeroRemovesButtonsAndKeepsTheFrame();
    void nullTagsAreSkippedAndIndicesKept();
    void buttonShowsTheTag();
    void titleColourFollowsLuminosity();
    void pressedButtonIsDarker();
    void goneDelegateIsNotAsked();
    void textFieldCellDrawsACapsule();

private:
    void reloadWithWidths(const QList<int> &widths);

    std::unique_ptr<CloudItems> m_items;
    std::unique_ptr<SNTagCloudView> m_cloud;
};

void TestSNTagCloudView::init()
{
    m_items = std::make_unique<CloudItems>();
    m_cloud = std::make_unique<SNTagCloudView>();
    m_cloud->setDataSource(m_items.get());
    m_cloud->setDelegate(m_items.get());
}

void TestSNTagCloudView::cleanup()
{
    m_cloud.reset();
    m_items.reset();
}

// Buttons of the given widths, laid out again as they are.
void TestSNTagCloudView::reloadWithWidths(const QList<int> &widths)
{
    m_items->tags.clear();
    for (int i = 0; i < widths.size(); ++i)
        m_items->tags.append(tagNamed(QStringLiteral("#t%1").arg(i)));
    m_cloud->reloadData();
    QCOMPARE(m_cloud->buttonArray().size(), widths.size());
    for (int i = 0; i < widths.size(); ++i)
        m_cloud->buttonArray().at(i)->resize(widths.at(i), SNTagCloudView::buttonHeight);
    m_cloud->positionButtons(true);
}

void TestSNTagCloudView::layout_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QList<int>>("widths");
    QTest::addColumn<QList<int>>("lefts");
    QTest::addColumn<QList<int>>("tops");
    QTest::addColumn<int>("height");

    // Line 0 holds 10 and 80 (right edge 140), shifted by 100 - 70; the third would end at
    // 210 and starts line 1 at 10, shifted by 100 - 35.
    QTest::newRow("wrap and centre") << 200 << QList<int> { 60, 60, 60 }
                                     << QList<int> { 40, 110, 75 } << QList<int> { 0, 0, 30 } << 60;
    // The wide one stands alone on line 1, sticking out on the right; the next follows on 2.
    QTest::newRow("over-wide first")
        << 200 << QList<int> { 250, 40 } << QList<int> { 10 + 100 - 130, 10 + 100 - 25 }
        << QList<int> { 30, 60 } << 90;
    QTest::newRow("over-wide alone")
        << 200 << QList<int> { 250 } << QList<int> { -20 } << QList<int> { 30 } << 60;
    // An odd shift is rounded outward: the button grows rather than losing a point.
    QTest::newRow("odd shift") << 201 << QList<int> { 60 } << QList<int> { 75 } << QList<int> { 0 }
                               << 30;
}

void TestSNTagCloudView::layout()
{
    QFETCH(int, width);
    QFETCH(QList<int>, widths);
    m_cloud->setGeometry(0, 0, width, 100);
    reloadWithWidths(widths);
    QTEST(lefts(*m_cloud), "lefts");
    QTEST(tops(*m_cloud), "tops");
    QTEST(m_cloud->height(), "height");
    QCOMPARE(m_cloud->width(), width);
}

void TestSNTagCloudView::countOfZeroRemovesButtonsAndKeepsTheFrame()
{
    m_cloud->setGeometry(3, 4, 200, 100);
    reloadWithWidths({ 60, 60, 60, 60 });
    QCOMPARE(m_cloud->height(), 60);
    const QList<QPointer<SNTagButton>> old(
        m_cloud->buttonArray().cbegin(), m_cloud->buttonArray().cend());
    m_cloud->setGeometry(3, 4, 200, 100);

    m_items->tags.clear();
    m_cloud->reloadData();
    QVERIFY(m_cloud->buttonArray().isEmpty());
    QCOMPARE(m_cloud->geometry(), QRect(3, 4, 200, 100));
    // Gone from the view, not only from the list.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (const QPointer<SNTagButton> &button : old)
        QVERIFY(!button);
    QVERIFY(m_cloud->findChildren<SNTagButton *>().isEmpty());

    // Laying out nothing leaves the frame too.
    m_cloud->positionButtons(true);
    QCOMPARE(m_cloud->geometry(), QRect(3, 4, 200, 100));
}

void TestSNTagCloudView::nullTagsAreSkippedAndIndicesKept()
{
    m_cloud->setGeometry(0, 0, 400, 30);
    m_items->tags = { nullptr, tagNamed(QStringLiteral("#one")), nullptr,
        tagNamed(QStringLiteral("#three")) };
    m_cloud->reloadData();
    const QList<SNTagButton *> &buttons = m_cloud->buttonArray();
    QCOMPARE(buttons.size(), 2);
    QCOMPARE(buttons.at(0)->text(), QStringLiteral("#one"));
    QCOMPARE(buttons.at(0)->tagNumber(), 1);
    QCOMPARE(buttons.at(1)->tagNumber(), 3);

    m_cloud->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_cloud.get()));
    QTest::mouseClick(buttons.at(1), Qt::LeftButton);
    QTest::mouseClick(buttons.at(0), Qt::LeftButton);
    QCOMPARE(m_items->clicked, (QList<qint64> { 3, 1 }));
}

void TestSNTagCloudView::buttonShowsTheTag()
{
    const QWColor color(0.9, 0.3, 0.1);
    const std::unique_ptr<SNTagButton> button
        = SNTagCloudView::buttonForTag(*tagNamed(QStringLiteral("#groceries"), color));
    QCOMPARE(button->text(), QStringLiteral("#groceries"));
    QCOMPARE(button->cell().backgroundColor(), color);
    QCOMPARE(button->height(), 24);
    // Fitted to its title, then 10 wider.
    const int fitted
        = button->fontMetrics().horizontalAdvance(button->text()) + 2 * SNTagButton::titleInset;
    QCOMPARE(button->width(), fitted + 10);
    // Drawn in the tag's colour.
    QCOMPARE(pixel(*button, QPoint(3, 12)), color.toQColor().rgba());
}

void TestSNTagCloudView::titleColourFollowsLuminosity()
{
    // Yellow is 0.886 light, blue 0.114; the border is at 0.5.
    const auto yellow
        = SNTagCloudView::buttonForTag(*tagNamed(QStringLiteral("#y"), QWColor(1, 1, 0)));
    QCOMPARE(yellow->titleColor(), QColor(Qt::black));
    QCOMPARE(SNTagCloudView::titleColorForTagColor(QWColor(0.5, 0.5, 0.5)), QColor(Qt::black));
    QCOMPARE(SNTagCloudView::titleColorForTagColor(QWColor(0.49, 0.49, 0.49)), QColor(Qt::white));
}

void TestSNTagCloudView::pressedButtonIsDarker()
{
    const QWColor color(0.2, 0.8, 0.4);
    const auto button = SNTagCloudView::buttonForTag(*tagNamed(QStringLiteral("#p"), color));
    const QWColor pressed = button->cell().bezelColor(true);
    QVERIFY(qAbs(pressed.hsb().brightness - 0.8 * color.hsb().brightness) < 1e-6);

    button->setDown(true);
    QCOMPARE(pixel(*button, QPoint(3, 12)), pressed.toQColor().rgba());
    button->setDown(false);
    QCOMPARE(pixel(*button, QPoint(3, 12)), color.toQColor().rgba());
}

void TestSNTagCloudView::goneDelegateIsNotAsked()
{
    m_items->tags = { tagNamed(QStringLiteral("#a")) };
    m_cloud->setGeometry(0, 0, 200, 30);
    m_cloud->reloadData();
    SNTagButton *button = m_cloud->buttonArray().constFirst();
    m_items.reset();
    QCOMPARE(m_cloud->delegate(), nullptr);
    QCOMPARE(m_cloud->dataSource(), nullptr);
    m_cloud->buttonWasClicked(button);
    m_cloud->reloadData();
    QVERIFY(m_cloud->buttonArray().isEmpty());
}

void TestSNTagCloudView::textFieldCellDrawsACapsule()
{
    SNTagTextFieldCell cell;
    cell.resize(80, 20);
    const QRgb red = QColor::fromRgbF(1.0f, 0.1569f, 0.3176f).rgba();
    QCOMPARE(pixel(cell, QPoint(40, 10)), red);
    // Corners are round, of half the height: the very corner stays clear.
    QCOMPARE(qAlpha(pixel(cell, QPoint(0, 0))), 0);
    QCOMPARE(pixel(cell, QPoint(10, 0)), red);
}

QTEST_MAIN(TestSNTagCloudView)
#include "TestSNTagCloudView.moc"
