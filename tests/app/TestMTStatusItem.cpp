#include "app/MTStatusItem.h"
#include "app/MTStatusItemDelegate.h"
#include "kit/QWNotificationCenter.h"

#include <QApplication>
#include <QMenu>
#include <QPalette>
#include <QTest>

namespace {

class RecordingDelegate final : public MTStatusItemDelegate
{
public:
    void menuIconWasClicked() override { ++clicks; }
    bool menuShouldShow() override { return allowsMenu; }

    int clicks = 0;
    bool allowsMenu = true;
};

void setPanelColour(const QColor &window)
{
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, window);
    QApplication::setPalette(palette);
}

} // namespace

class TestMTStatusItem final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setPanelColour(Qt::white); }

    void aDarkPanelOrAHighlightTakesTheLightImage()
    {
        const QString dark = QStringLiteral("icon-statusitem-normal-dark");
        MTStatusItem item;
        QCOMPARE(item.iconImageName(), QStringLiteral("icon-statusitem-normal"));
        // The panel's colour is learnt at the next drawing.
        setPanelColour(QColor(0x20, 0x20, 0x20));
        item.renderedImage(1);
        QCOMPARE(item.iconImageName(), dark);
        QVERIFY(!item.iconImage().isNull());
        // Active, or with its menu open, the icon sits on a highlight.
        setPanelColour(Qt::white);
        item.setActive(true);
        item.renderedImage(1);
        QCOMPARE(item.iconImageName(), dark);
        item.setActive(false);
        item.setClicked(true);
        QCOMPARE(item.iconImageName(), dark);
    }

    void badgeWidensThePictureAndStaysThroughARemake()
    {
        MTStatusItem item;
        int announcements = 0;
        const QWNotificationCenter::Observation observation
            = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
                MTStatusItem::lengthDidChangeNotification, item.statusItem(),
                [&](const QWNotification &) { ++announcements; });
        const int plain = item.length();
        item.setBadge(QStringLiteral("3"));
        QVERIFY(item.length() > plain);
        QCOMPARE(item.renderedImage(1).width(), item.length());
        item.setBadge(QStringLiteral("4")); // same width: nothing to announce
        item.setBadge(QString());
        QCOMPARE(item.length(), plain);
        QCOMPARE(announcements, 2);

        // Out of the tray and back, the icon shows the present picture, badge included.
        item.destroy();
        item.destroy(); // twice is harmless
        item.setBadge(QStringLiteral("7"));
        item.makeStatusItem();
        QCOMPARE(item.statusItem()->icon().availableSizes().value(0).width(), item.length());
    }

    void clicksGoToTheDelegateAndTheMenuOpensOnlyWhenItAllows()
    {
        MTStatusItem item;
        QMenu menu;
        menu.addAction(QStringLiteral("Quit"));
        item.setContextMenu(&menu);
        RecordingDelegate delegate;
        item.setDelegate(&delegate);

        // Control with Shift is still a left click; Control alone is a right click.
        item.mouseDown(Qt::NoModifier);
        item.mouseDown(Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(delegate.clicks, 2);
        QVERIFY(!menu.isVisible());
        item.mouseDown(Qt::ControlModifier);
        QCOMPARE(delegate.clicks, 2);
        QTRY_VERIFY(menu.isVisible());
        QVERIFY(item.isClicked());
        menu.close();
        QVERIFY(!item.isClicked());

        delegate.allowsMenu = false;
        item.rightMouseDown();
        QVERIFY(!menu.isVisible());
        // A tray that opens the menu by itself is refused too: it closes again at once.
        menu.popup(QPoint(10, 10));
        QTRY_VERIFY(!menu.isVisible());
        QVERIFY(!item.isClicked());
    }
};

QTEST_MAIN(TestMTStatusItem)
#include "TestMTStatusItem.moc"
