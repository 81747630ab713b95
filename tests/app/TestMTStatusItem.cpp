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
    bool menuShouldShow() override
    {
        ++questions;
        return allowsMenu;
    }

    int clicks = 0;
    int questions = 0;
    bool allowsMenu = true;
};

QPalette paletteWithWindow(const QColor &window)
{
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, window);
    return palette;
}

bool hasVisiblePixels(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0)
                return true;
        }
    }
    return false;
}

} // namespace

class TestMTStatusItem final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void iconNamesFollowTheStateRules();
    void bothImagesAreResources();
    void badgeWidensTheItemAndAnnouncesEachChange();
    void leftClickGoesToTheDelegateUnlessControlAloneIsHeld();
    void menuOpensOnlyWhenTheDelegateAllows();
    void destroyAndMakeKeepTheSameObject();

private:
    QPalette m_originalPalette;
};

void TestMTStatusItem::init()
{
    m_originalPalette = QApplication::palette();
    QApplication::setPalette(paletteWithWindow(Qt::white));
}

void TestMTStatusItem::cleanup()
{
    QApplication::setPalette(m_originalPalette);
}

void TestMTStatusItem::iconNamesFollowTheStateRules()
{
    MTStatusItem item;
    const QString normal = QStringLiteral("icon-statusitem-normal");
    const QString normalDark = QStringLiteral("icon-statusitem-normal-dark");
    QCOMPARE(item.iconName(), QStringLiteral("icon-statusitem"));

    // Inactive on a light panel.
    QVERIFY(!item.isDarkMode());
    item.updateDarkModeState();
    QCOMPARE(item.iconState(), 0);
    QCOMPARE(item.iconImageName(), normal);

    // Inactive on a dark panel: the state learns it at the next drawing.
    QApplication::setPalette(paletteWithWindow(QColor(0x20, 0x20, 0x20)));
    QVERIFY(item.isDarkMode());
    item.renderedImage(1);
    QCOMPARE(item.iconState(), MTStatusItem::darkMenuBarIconState);
    QCOMPARE(item.iconImageName(), normalDark);

    // Active on a dark panel, then on a light one: the light image on the highlight.
    item.setActive(true);
    QCOMPARE(item.iconState(), MTStatusItem::darkMenuBarIconState | MTStatusItem::activeIconState);
    QCOMPARE(item.iconImageName(), normalDark);
    QApplication::setPalette(paletteWithWindow(Qt::white));
    item.updateDarkModeState();
    QCOMPARE(item.iconState(), MTStatusItem::activeIconState);
    QCOMPARE(item.iconImageName(), normalDark);

    // Toggling flips only the active bit.
    item.toggleActive();
    QCOMPARE(item.iconState(), 0);
    QCOMPARE(item.iconImageName(), normal);

    // Menu open on a light panel.
    item.setClicked(true);
    QCOMPARE(item.iconImageName(), normalDark);
    item.setClicked(false);
    QCOMPARE(item.iconImageName(), normal);
}

void TestMTStatusItem::bothImagesAreResources()
{
    MTStatusItem item;
    const QImage normal = item.iconImage();
    QVERIFY(!normal.isNull());
    QCOMPARE(normal.deviceIndependentSize(), QSizeF(18, 18));
    item.setClicked(true);
    const QImage dark = item.iconImage();
    QVERIFY(!dark.isNull());
    QVERIFY(dark != normal);

    // Centred in the 24 by 22 item.
    item.setClicked(false);
    QCOMPARE(item.imageDrawingRect(), QRectF(3, 2, 18, 18));
    const QImage drawn = item.renderedImage(2);
    QCOMPARE(drawn.size(), QSize(48, 44));
    QVERIFY(hasVisiblePixels(drawn));
}

void TestMTStatusItem::badgeWidensTheItemAndAnnouncesEachChange()
{
    MTStatusItem item;
    int announcements = 0;
    const void *announcedObject = nullptr;
    const QWNotificationCenter::Observation observation
        = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            MTStatusItem::lengthDidChangeNotification, nullptr,
            [&](const QWNotification &notification) {
                ++announcements;
                announcedObject = notification.object;
            });
    QCOMPARE(item.length(), 24);

    item.setBadge(QStringLiteral("3"));
    QCOMPARE(announcements, 1);
    QCOMPARE(announcedObject, static_cast<const void *>(item.statusItem()));
    // The image moves to the left edge and the badge starts 5 points right of it.
    QCOMPARE(item.imageDrawingRect().x(), 5.0);
    const QRectF badge = item.badgeDrawingRect();
    QCOMPARE(badge.x(), 28.0);
    QCOMPARE(item.length(), qMax(24, qRound(badge.x() + badge.width() + 5)));
    QVERIFY(item.length() > 24);
    QCOMPARE(item.renderedImage(1).width(), item.length());

    // Same width again: nothing to announce.
    item.setBadge(QStringLiteral("4"));
    QCOMPARE(announcements, 1);

    item.setBadge(QString());
    QCOMPARE(item.length(), 24);
    QCOMPARE(announcements, 2);
    QVERIFY(item.badgeDrawingRect().isNull());
}

void TestMTStatusItem::leftClickGoesToTheDelegateUnlessControlAloneIsHeld()
{
    MTStatusItem item;
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"));
    item.setContextMenu(&menu);
    RecordingDelegate delegate;
    item.setDelegate(&delegate);

    item.mouseDown(Qt::NoModifier);
    QCOMPARE(delegate.clicks, 1);
    QVERIFY(!menu.isVisible());

    // Control and Shift together is still a left click.
    item.mouseDown(Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(delegate.clicks, 2);
    QVERIFY(!menu.isVisible());

    // Control alone is a right click.
    item.mouseDown(Qt::ControlModifier);
    QCOMPARE(delegate.clicks, 2);
    QTRY_VERIFY(menu.isVisible());
    QVERIFY(item.isClicked());
    menu.close();
    QVERIFY(!item.isClicked());

    // Without a delegate a click opens the menu.
    item.setDelegate(nullptr);
    item.mouseDown(Qt::NoModifier);
    QTRY_VERIFY(menu.isVisible());
    menu.close();
}

void TestMTStatusItem::menuOpensOnlyWhenTheDelegateAllows()
{
    MTStatusItem item;
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"));
    item.setContextMenu(&menu);
    RecordingDelegate delegate;
    delegate.allowsMenu = false;
    item.setDelegate(&delegate);

    item.rightMouseDown();
    QCOMPARE(delegate.questions, 1);
    QVERIFY(!menu.isVisible());
    QVERIFY(!item.isClicked());

    // A tray that opens the menu by itself is refused too: it closes again at once.
    menu.popup(QPoint(10, 10));
    QTRY_VERIFY(!menu.isVisible());
    QVERIFY(!item.isClicked());

    delegate.allowsMenu = true;
    item.rightMouseDown();
    QTRY_VERIFY(menu.isVisible());
    QVERIFY(item.isClicked());
    QCOMPARE(item.iconImageName(), QStringLiteral("icon-statusitem-normal-dark"));
    menu.close();
    QVERIFY(!item.isClicked());
}

void TestMTStatusItem::destroyAndMakeKeepTheSameObject()
{
    MTStatusItem item;
    QMenu menu;
    item.setContextMenu(&menu);
    QSystemTrayIcon *first = item.statusItem();
    QVERIFY(first);
    QCOMPARE(first->contextMenu(), &menu);
    QVERIFY(!first->icon().isNull());

    item.destroy();
    QVERIFY(!item.statusItem());
    item.destroy(); // twice is harmless

    item.setBadge(QStringLiteral("7"));
    item.makeStatusItem();
    QVERIFY(item.statusItem());
    QCOMPARE(item.statusItem()->contextMenu(), &menu);
    // The new slot shows the present picture, badge included.
    const QList<QSize> sizes = item.statusItem()->icon().availableSizes();
    QVERIFY(!sizes.isEmpty());
    QCOMPARE(sizes.constFirst().width(), item.length());
}

QTEST_MAIN(TestMTStatusItem)
#include "TestMTStatusItem.moc"
