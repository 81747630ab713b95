#include "SNAppTestSupport.h"
#include "app/MTStatusItem.h"
#include "app/SNDesktopPresence.h"
#include "kit/widgets/QWX11WindowState.h"
#include "settings/SNUserDefaults.h"

#include <QMenu>
#include <QSettings>
#include <QSystemTrayIcon>
#include <QTest>

class TestSNDesktopPresence final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void bothOffTurnsTheTrayIconOnAndItIsKeptAcrossTheSetting();
    void withoutATrayNotesStayInTheTaskbar();

private:
    std::unique_ptr<SNUserDefaults> m_defaults;
    std::unique_ptr<TestNotes> m_notes;
    QMenu m_menu;
    std::unique_ptr<SNDesktopPresence> m_presence;
};

void TestSNDesktopPresence::init()
{
    m_defaults = GVUserDefaults::make<SNUserDefaults>();
    m_defaults->userDefaults().clear();
    m_notes = std::make_unique<TestNotes>();
    m_presence
        = std::make_unique<SNDesktopPresence>(*m_defaults, m_notes->windows, &m_menu, nullptr);
}

void TestSNDesktopPresence::cleanup()
{
    m_presence.reset();
    m_notes.reset();
    m_defaults->userDefaults().clear();
    m_defaults.reset();
}

void TestSNDesktopPresence::bothOffTurnsTheTrayIconOnAndItIsKeptAcrossTheSetting()
{
    m_defaults->setShowMenuIcon(false);
    m_defaults->setShowIconInDock(false);
    m_presence->applicationDidFinishLaunching();
    QVERIFY(m_defaults->showMenuIcon());
    MTStatusItem *item = m_presence->statusItem();
    QVERIFY(item && item->statusItem());
    QCOMPARE(item->statusItem()->contextMenu(), &m_menu);

    // Off and on again: the same icon leaves the tray and comes back, its menu with it.
    m_defaults->setShowIconInDock(true);
    m_defaults->setShowMenuIcon(false);
    m_presence->toggleMenuBarIconVisible();
    QCOMPARE(m_presence->statusItem(), item);
    QVERIFY(!item->statusItem());
    m_defaults->setShowMenuIcon(true);
    m_presence->toggleMenuBarIconVisible();
    QCOMPARE(m_presence->statusItem(), item);
    QCOMPARE(item->statusItem()->contextMenu(), &m_menu);
}

void TestSNDesktopPresence::withoutATrayNotesStayInTheTaskbar()
{
    QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
    m_defaults->setShowIconInDock(false);
    m_notes->windows.showAllNotes(true);
    m_presence->applicationDidFinishLaunching();
    QVERIFY(m_presence->showsNotesInTaskbar());
    for (SNStickyNoteWindowController *controller : m_notes->windows.controllers())
        QVERIFY(!QWX11WindowState::skipsTaskbar(controller->window()));
}

QTEST_MAIN(TestSNDesktopPresence)
#include "TestSNDesktopPresence.moc"
