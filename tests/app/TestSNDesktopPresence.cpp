#include "SNAppTestSupport.h"
#include "app/MTStatusItem.h"
#include "app/SNDesktopPresence.h"
#include "kit/widgets/QWX11WindowState.h"

#include <QMenu>
#include <QSystemTrayIcon>
#include <QTest>

class TestSNDesktopPresence final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneWayToTheProgramStaysOn()
    {
        const auto defaults = clearedDefaults();
        TestNotes notes;
        notes.windows.showAllNotes(true);
        QMenu menu;
        SNDesktopPresence presence(*defaults, notes.windows, &menu, nullptr);
        // Both off: the tray icon comes on.
        defaults->setShowMenuIcon(false);
        defaults->setShowIconInDock(false);
        presence.applicationDidFinishLaunching();
        QVERIFY(defaults->showMenuIcon());
        QVERIFY(presence.statusItem()->statusItem());
        // Without a tray the notes stay in the taskbar whatever the settings say.
        QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
        for (SNStickyNoteWindowController *controller : notes.windows.controllers())
            QVERIFY(!QWX11WindowState::skipsTaskbar(controller->window()));
    }
};

QTEST_MAIN(TestSNDesktopPresence)
#include "TestSNDesktopPresence.moc"
