#include "kit/QWColor.h"
#include "kit/QWFont.h"
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

    void linesWrapAndCentreHalfASpacingRight();
    void overWideFirstButtonLeavesTheFirstLineEmpty();
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

void TestSNTagCloudView::linesWrapAndCentreHalfASpacingRight()
{
    m_cloud->setGeometry(0, 0, 200, 100);
    reloadWithWidths({ 60, 60, 60 });
    // Line 0 holds 10 and 80 (right edge 140), shifted by 100 - 70; the third would end at 210
    // and starts line 1 at 10, shifted by 100 - 35.
    QCOMPARE(lefts(*m_cloud), (QList<int> { 40, 110, 75 }));
    QCOMPARE(tops(*m_cloud), (QList<int> { 0, 0, 30 }));
    QCOMPARE(m_cloud->height(), 60);
    QCOMPARE(m_cloud->width(), 200);

    // Without the resize flag the frame stays; a right edge exactly at the width still fits.
    m_cloud->setGeometry(0, 0, 200, 100);
    reloadWithWidths({ 60, 60 });
    m_cloud->resize(140, 100);
    m_cloud->positionButtons(false);
    QCOMPARE(lefts(*m_cloud), (QList<int> { 10, 80 }));
    QCOMPARE(m_cloud->size(), QSize(140, 100));

    // An odd shift is rounded outward: the frame grows rather than losing a point.
    m_cloud->setGeometry(0, 0, 201, 100);
    reloadWithWidths({ 60 });
    const SNTagButton *button = m_cloud->buttonArray().constFirst();
    QCOMPARE(button->x(), 75);
    QCOMPARE(button->width(), 61);
}

void TestSNTagCloudView::overWideFirstButtonLeavesTheFirstLineEmpty()
{
    m_cloud->setGeometry(0, 0, 200, 30);
    reloadWithWidths({ 250, 40 });
    // The wide one stands alone on line 1, sticking out on the right; the next one follows on
    // line 2.
    QCOMPARE(tops(*m_cloud), (QList<int> { 30, 60 }));
    QCOMPARE(lefts(*m_cloud), (QList<int> { 10 + 100 - 130, 10 + 100 - 25 }));
    QCOMPARE(m_cloud->height(), 90);

    m_cloud->setGeometry(0, 0, 200, 30);
    reloadWithWidths({ 250 });
    QCOMPARE(tops(*m_cloud), (QList<int> { 30 }));
    QCOMPARE(m_cloud->height(), 60);
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
    QCOMPARE(button->font().pointSizeF(), 13.0);
    QCOMPARE(button->font().weight(), QFont::Medium);
    // The named face first, then the look-alikes of the font table.
    QCOMPARE(button->font().families().constFirst(), QStringLiteral("HelveticaNeue-Medium"));
    QCOMPARE(button->font().families().mid(1),
        QWFont::substitutesForFamily(QStringLiteral("HelveticaNeue-Medium")));
    QVERIFY(!QWFont::substitutesForFamily(QStringLiteral("HelveticaNeue-Medium")).isEmpty());

    // Drawn in the tag's colour.
    QCOMPARE(pixel(*button, QPoint(3, 12)), color.toQColor().rgba());
}

void TestSNTagCloudView::titleColourFollowsLuminosity()
{
    // Yellow is 0.886 light, blue 0.114; the border is at 0.5.
    const auto yellow
        = SNTagCloudView::buttonForTag(*tagNamed(QStringLiteral("#y"), QWColor(1, 1, 0)));
    const auto blue
        = SNTagCloudView::buttonForTag(*tagNamed(QStringLiteral("#b"), QWColor(0, 0, 1)));
    QCOMPARE(yellow->titleColor(), QColor(Qt::black));
    QCOMPARE(blue->titleColor(), QColor(Qt::white));
    QCOMPARE(SNTagCloudView::titleColorForTagColor(QWColor(0.5, 0.5, 0.5)), QColor(Qt::black));
    QCOMPARE(SNTagCloudView::titleColorForTagColor(QWColor(0.49, 0.49, 0.49)), QColor(Qt::white));
}

void TestSNTagCloudView::pressedButtonIsDarker()
{
    const QWColor color(0.2, 0.8, 0.4);
    const auto button = SNTagCloudView::buttonForTag(*tagNamed(QStringLiteral("#p"), color));
    const QWColor pressed = button->cell().bezelColor(true);
    QCOMPARE(pressed, color.qw_darkenBy(0.2f));
    QVERIFY(qAbs(pressed.hsb().brightness - 0.8 * color.hsb().brightness) < 1e-6);
    QVERIFY(qAbs(pressed.hsb().hue - color.hsb().hue) < 1e-6);

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
