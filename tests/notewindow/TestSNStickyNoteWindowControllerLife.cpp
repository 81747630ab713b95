#include "SNNoteWindowTestSupport.h"
#include "kit/QWNotificationCenter.h"
#include "notewindow/SNTextView.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"

#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>
#include <QToolButton>

// A note window's life: opening, the save delay, closing, deleting and quitting.
class TestSNStickyNoteWindowControllerLife final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void emptyNoteClosesWithoutQuestionAndLeavesTheStore();
    void deleteNoteRemovesItFromTheArchive();
    void editsInABurstSaveOnceAfterTheLast();
    void openingANoteSavesNothing();
    void quitKeepsEveryNoteWithItsLatestTextAndFrame();
    void commandsPostTheirNotifications();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;

    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::shared_ptr<ScriptedPresenter> m_presenter;
};

void TestSNStickyNoteWindowControllerLife::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    m_presenter = std::make_shared<ScriptedPresenter>();
}

void TestSNStickyNoteWindowControllerLife::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNStickyNoteWindowControllerLife::emptyNoteClosesWithoutQuestionAndLeavesTheStore()
{
    auto note = SNStickyNote::note();
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note, m_presenter);
    QVERIFY(!controller->wasEdited());
    QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);

    controller->close();

    QVERIFY(m_presenter->alerts.isEmpty());
    QVERIFY(!controller->window()->isVisible());
    QVERIFY(!storeHolds(note));
    QCOMPARE(willClose.count(), 1);
}

void TestSNStickyNoteWindowControllerLife::deleteNoteRemovesItFromTheArchive()
{
    const QString text = QStringLiteral("Old phone numbers");
    auto note = noteWithText(text);
    SNStickyNoteManager::sharedManager().addNote(note);
    QVERIFY(archivedNoteWithText(text));
    auto controller = openNote(note, m_presenter);
    QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);

    m_presenter->alertAnswers = { QStringLiteral("Delete Note") };
    controller->close();

    QCOMPARE(m_presenter->alerts.size(), 1);
    QVERIFY(!controller->window()->isVisible());
    QVERIFY(!storeHolds(note));
    QVERIFY(!archivedNoteWithText(text));
    QCOMPARE(willClose.count(), 1);
    QVERIFY(!controller->stickyWindow()->delegate());
}

void TestSNStickyNoteWindowControllerLife::editsInABurstSaveOnceAfterTheLast()
{
    auto note = SNStickyNote::note();
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note, m_presenter);
    const std::optional<QDateTime> opened = note->dateModified();
    const QDateTime burstStart = m_scheduler->currentDateTime();

    const QString typed = QStringLiteral("tenletters");
    for (qsizetype i = 0; i < typed.size(); ++i) {
        if (i > 0)
            m_scheduler->advanceBy(0.04);
        QTest::keyClicks(controller->textView(), typed.sliced(i, 1));
    }
    QVERIFY(controller->wasEdited());
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay - 0.01);
    // Nothing was copied into the note yet: no save has run.
    QCOMPARE(note->dateModified(), opened);
    QCOMPARE(plainText(note), QString());

    m_scheduler->advanceBy(0.01);
    const QDateTime savedAt = burstStart.addMSecs(360 + 500);
    QCOMPARE(note->dateModified(), std::optional<QDateTime>(savedAt));
    QCOMPARE(plainText(note), typed);
    QVERIFY(archivedNoteWithText(typed));

    // And only once.
    m_scheduler->advanceBy(10);
    QCOMPARE(note->dateModified(), std::optional<QDateTime>(savedAt));
    QCOMPARE(m_scheduler->scheduledCount(), 0);
}

void TestSNStickyNoteWindowControllerLife::openingANoteSavesNothing()
{
    auto note = noteWithText(QStringLiteral("Just looking"));
    note->setWindowFrame(QStringLiteral("{{40, 50}, {260, 220}}"));
    SNStickyNoteManager::sharedManager().addNote(note);
    SNStickyNoteManager::sharedManager().save();
    auto controller = openNote(note, m_presenter);
    QCoreApplication::processEvents();

    QCOMPARE(m_scheduler->scheduledCount(), 0);
    QCOMPARE(note->windowFrame(), QStringLiteral("{{40, 50}, {260, 220}}"));

    // Moving the window is a change worth saving.
    controller->window()->move(70, 90);
    QCOMPARE(m_scheduler->scheduledCount(), 1);
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    QCOMPARE(note->windowFrame(), QStringLiteral("{{70, 90}, {260, 220}}"));
}

void TestSNStickyNoteWindowControllerLife::quitKeepsEveryNoteWithItsLatestTextAndFrame()
{
    auto first = noteWithText(QStringLiteral("First"));
    auto second = noteWithText(QStringLiteral("Second"));
    SNStickyNoteManager::sharedManager().addNote(first);
    SNStickyNoteManager::sharedManager().addNote(second);
    auto firstController = openNote(first, m_presenter);
    auto secondController = openNote(second, m_presenter);

    // Typed and moved just before quitting, within the save delay.
    QTextCursor cursor(firstController->textView()->document());
    cursor.movePosition(QTextCursor::End);
    firstController->textView()->setTextCursor(cursor);
    QTest::keyClicks(firstController->textView(), QStringLiteral(" draft"));
    firstController->window()->setGeometry(110, 120, 250, 210);
    secondController->window()->setGeometry(400, 130, 240, 200);

    // What the application does at termination.
    for (SNStickyNoteWindowController *controller :
        { firstController.get(), secondController.get() })
        controller->setIsTerminating(true);
    firstController->window()->close();
    secondController->window()->close();
    SNStickyNoteManager::sharedManager().save();

    QVERIFY(m_presenter->alerts.isEmpty());
    QVERIFY(storeHolds(first));
    QVERIFY(storeHolds(second));
    const auto archivedFirst = archivedNoteWithText(QStringLiteral("First draft"));
    const auto archivedSecond = archivedNoteWithText(QStringLiteral("Second"));
    QVERIFY(archivedFirst);
    QVERIFY(archivedSecond);
    QCOMPARE(archivedFirst->windowFrame(), QStringLiteral("{{110, 120}, {250, 210}}"));
    QCOMPARE(archivedSecond->windowFrame(), QStringLiteral("{{400, 130}, {240, 200}}"));
}

void TestSNStickyNoteWindowControllerLife::commandsPostTheirNotifications()
{
    auto note = noteWithText(QStringLiteral("Menus"));
    auto controller = openNote(note, m_presenter);
    QStringList posted;
    int postedWithSender = 0;
    const QStringList names = { SNStickyNoteWindowController::showTagManagerNotification,
        SNStickyNoteWindowController::showHelpNotification,
        SNStickyNoteWindowController::rateAppNotification,
        SNStickyNoteWindowController::joinMailingListNotification,
        SNStickyNoteWindowController::openPreferencesNotification };
    std::vector<QWNotificationCenter::Observation> observations;
    for (const QString &name : names) {
        observations.push_back(QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            name, nullptr, [&](const QWNotification &notification) {
                posted.append(notification.name);
                postedWithSender += notification.object ? 1 : 0;
            }));
    }

    controller->tagButton()->click();
    const QList<QAction *> settingsItems = controller->settingsMenu()->actions();
    for (const QString &title : { QStringLiteral("Vellumo Help"), QStringLiteral("Rate Vellumo…"),
             QStringLiteral("Join the Mailing List…"), QStringLiteral("Preferences…") }) {
        auto item = std::find_if(settingsItems.cbegin(), settingsItems.cend(),
            [&](const QAction *action) { return action->text() == title; });
        QVERIFY2(item != settingsItems.cend(), qPrintable(title));
        (*item)->trigger();
    }

    QCOMPARE(posted,
        QStringList({ QStringLiteral("SNShowTagManager"), QStringLiteral("Notification.showHelp"),
            QStringLiteral("Notification.rateApp"), QStringLiteral("Notification.joinMailingList"),
            QStringLiteral("Notification.openPreferences") }));
    QCOMPARE(postedWithSender, 0);
}

QTEST_MAIN(TestSNStickyNoteWindowControllerLife)
#include "TestSNStickyNoteWindowControllerLife.moc"
