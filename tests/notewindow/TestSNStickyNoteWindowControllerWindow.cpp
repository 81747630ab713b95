#include "SNNoteWindowTestSupport.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/QWX11WindowState.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNWindowFrameString.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QMenu>
#include <QScreen>
#include <QSlider>
#include <QTest>
#include <QWidgetAction>

// What a note window does with its window: frames, pin states, transparency and the tag filter.
class TestSNStickyNoteWindowControllerWindow final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void opensAtItsStoredFrame();
    void frameBeyondEveryScreenOpensOnOne();
    void transparencyZeroOpensOpaque();
    void sliderSetsTransparency();
    void unknownPinStateShowsNormalAndIsKept();
    void pinMenuChoosesTheLevel();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNStickyNoteWindowControllerWindow::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
}

void TestSNStickyNoteWindowControllerWindow::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNStickyNoteWindowControllerWindow::opensAtItsStoredFrame()
{
    auto note = noteWithText(QStringLiteral("Where I was"));
    note->setWindowFrame(QStringLiteral("{{120, 90}, {270, 230}}"));
    auto controller = openNote(note);
    QCOMPARE(controller->window()->geometry(), QRect(120, 90, 270, 230));
    QCOMPARE(controller->frameString(), QStringLiteral("{{120, 90}, {270, 230}}"));

    // A new note has no frame: it takes the window's at once.
    auto fresh = SNStickyNote::note();
    QVERIFY(fresh->windowFrame().isEmpty());
    std::unique_ptr<SNStickyNoteWindowController> freshController(
        SNStickyNoteWindowController::controllerWithNote(
            fresh, SNStickyNoteManager::sharedManager()));
    freshController->window();
    QCOMPARE(fresh->windowFrame(), freshController->frameString());
    QVERIFY(!fresh->windowFrame().isEmpty());
}

void TestSNStickyNoteWindowControllerWindow::frameBeyondEveryScreenOpensOnOne()
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    auto note = noteWithText(QStringLiteral("Lost"));
    note->setWindowFrame(SNWindowFrameString::stringFromRect(
        QRect(screen.right() + 2000, screen.bottom() + 1500, 260, 200)));
    auto controller = openNote(note);

    const QRect frame = controller->window()->geometry();
    QCOMPARE(frame.size(), QSize(260, 200));
    QVERIFY(screen.contains(frame));
}

void TestSNStickyNoteWindowControllerWindow::transparencyZeroOpensOpaque()
{
    auto note = noteWithText(QStringLiteral("See-through?"));
    note->setWindowAlpha(0.0);
    auto controller = openNote(note);

    QCOMPARE(controller->window()->windowOpacity(), 1.0);
    QCOMPARE(controller->alphaSlider()->value(), controller->alphaSlider()->maximum());
    QCOMPARE(note->windowAlpha(), 1.0);
    // The slider sits inside the settings menu.
    QCOMPARE(controller->menus()->alphaMenuItem()->defaultWidget(),
        controller->alphaSlider()->parentWidget());
    QVERIFY(controller->settingsMenu()->actions().contains(controller->menus()->alphaMenuItem()));
    QVERIFY(controller->menus()->alphaMenuItem()->isVisible());
}

void TestSNStickyNoteWindowControllerWindow::sliderSetsTransparency()
{
    auto note = noteWithText(QStringLiteral("Faded"));
    SNStickyNoteManager::sharedManager().addNote(note);
    SNStickyNoteManager::sharedManager().save();
    auto controller = openNote(note);
    QCOMPARE(m_scheduler->scheduledCount(), 0);

    controller->alphaSlider()->setValue(40);

    QCOMPARE(controller->window()->windowOpacity(), 0.4);
    QCOMPARE(note->windowAlpha(), 0.4);
    QCOMPARE(m_scheduler->scheduledCount(), 1);
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    const auto archived = archivedNoteWithText(QStringLiteral("Faded"));
    QVERIFY(archived);
    QCOMPARE(archived->windowAlpha(), double(0.4f));
    SNStickyNoteManager::sharedManager().removeNote(note);
}

void TestSNStickyNoteWindowControllerWindow::unknownPinStateShowsNormalAndIsKept()
{
    auto note = noteWithText(QStringLiteral("Pinned oddly"));
    note->setPinState(7);
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note);

    const QList<QAction *> items = controller->menus()->pinMenu()->actions();
    QCOMPARE(items.size(), 3);
    QVERIFY(items[0]->isChecked());
    QVERIFY(!items[1]->isChecked());
    QVERIFY(!items[2]->isChecked());
    QCOMPARE(QWX11WindowState::level(controller->window()), QWX11WindowState::Level::Normal);
    QVERIFY(!controller->window()->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(!controller->window()->windowFlags().testFlag(Qt::WindowStaysOnBottomHint));

    controller->save();
    QCOMPARE(note->pinState(), qint64(7));
    const QWArchiveValue archived
        = archivedValueForKey(QStringLiteral("Pinned oddly"), QStringLiteral("pinState"));
    QCOMPARE(archived.kind(), QWArchiveValue::Kind::Integer);
    QCOMPARE(archived.toInteger(), qint64(7));
    SNStickyNoteManager::sharedManager().removeNote(note);
}

void TestSNStickyNoteWindowControllerWindow::pinMenuChoosesTheLevel()
{
    auto note = noteWithText(QStringLiteral("Pins"));
    auto controller = openNote(note);
    const QList<QAction *> items = controller->menus()->pinMenu()->actions();
    const auto checkedItems = [&] {
        QList<int> checked;
        for (int i = 0; i < items.size(); ++i) {
            if (items[i]->isChecked())
                checked.append(i);
        }
        return checked;
    };

    items[2]->trigger();
    QCOMPARE(note->pinState(), qint64(2));
    QCOMPARE(checkedItems(), QList<int>({ 2 }));
    QCOMPARE(QWX11WindowState::level(controller->window()), QWX11WindowState::Level::KeepBelow);
    QVERIFY(controller->window()->isVisible());
    QCOMPARE(m_scheduler->scheduledCount(), 1);

    items[1]->trigger();
    QCOMPARE(note->pinState(), qint64(1));
    QCOMPARE(checkedItems(), QList<int>({ 1 }));
    QCOMPARE(QWX11WindowState::level(controller->window()), QWX11WindowState::Level::KeepAbove);

    items[0]->trigger();
    QCOMPARE(note->pinState(), qint64(0));
    QCOMPARE(checkedItems(), QList<int>({ 0 }));
    QCOMPARE(QWX11WindowState::level(controller->window()), QWX11WindowState::Level::Normal);
    QVERIFY(controller->window()->isVisible());
}

QTEST_MAIN(TestSNStickyNoteWindowControllerWindow)
#include "TestSNStickyNoteWindowControllerWindow.moc"
