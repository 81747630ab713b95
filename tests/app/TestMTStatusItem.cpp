#include "app/MTStatusItem.h"
#include "app/MTStatusItemDelegate.h"

#include <QMenu>
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

} // namespace

class TestMTStatusItem final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        menu.close();

        delegate.allowsMenu = false;
        item.rightMouseDown();
        QVERIFY(!menu.isVisible());
        // A tray that opens the menu by itself is refused too: it closes again at once.
        menu.popup(QPoint(10, 10));
        QTRY_VERIFY(!menu.isVisible());
    }
};

QTEST_MAIN(TestMTStatusItem)
#include "TestMTStatusItem.moc"
