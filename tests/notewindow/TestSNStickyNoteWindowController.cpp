#include "SNNoteWindowTestSupport.h"
#include "kit/QWNotificationCenter.h"
#include "notewindow/SNNoteMenus.h"

#include <QSignalSpy>
#include <QToolButton>

using namespace Qt::StringLiterals;

// What the controller wires: closing, the save half a second after the last edit, the commands
// of the toolbar and menus, and a click on a tag. Quitting is the application's test.
class TestSNStickyNoteWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void closedNotesLeaveTheStoreWithTheirLastTyping();
    void editsInABurstSaveOnceAfterTheLast();
    void commandsPostTheirNotifications();
    void clickOnATagOpensTheTagMenuForIt();

private:
    NoteWindowFixture f;
};

void TestSNStickyNoteWindowController::closedNotesLeaveTheStoreWithTheirLastTyping()
{
    auto controller = openWithText(QString());
    controller->setModalPresenter(f.presenter);
    QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);

    controller->close();

    QVERIFY(f.presenter->alerts.isEmpty());
    QVERIFY(!controller->window()->isVisible());
    QVERIFY(!storeHolds(controller->note()));
    QCOMPARE(willClose.count(), 1);
    QVERIFY(!controller->stickyWindow()->delegate());

    // A note deleted right after typing, before its save was due, keeps that typing in
    // Recently Deleted.
    auto typed = openWithText(QString());
    typed->setModalPresenter(f.presenter);
    f.presenter->alertAnswers = { u"Delete Note"_s };
    QTest::keyClicks(typed->textView(), u"milk"_s);
    typed->close();
    QCOMPARE(SNStickyNoteManager::sharedManager().recentlyDeletedNotes().value(0).title, u"milk"_s);
}

void TestSNStickyNoteWindowController::editsInABurstSaveOnceAfterTheLast()
{
    auto controller = openWithText(QString());
    const std::shared_ptr<SNStickyNote> &note = controller->note();
    const std::optional<QDateTime> opened = note->dateModified();

    // A key every 40 ms: the last at 0.36 s, its save due at 0.86 s.
    for (const QChar key : u"tenletters"_s) {
        QTest::keyClicks(controller->textView(), QString(key));
        f.scheduler->advanceBy(0.04);
    }
    f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay - 0.05);
    QCOMPARE(note->dateModified(), opened);
    f.scheduler->advanceBy(0.01);
    const QDateTime savedAt = f.scheduler->currentDateTime();
    QCOMPARE(note->dateModified(), std::optional<QDateTime>(savedAt));
    QVERIFY(archivedNoteWithText(u"tenletters"_s));
    // And only once.
    f.scheduler->advanceBy(10);
    QCOMPARE(note->dateModified(), std::optional<QDateTime>(savedAt));
    // Nothing waits but the store's compaction after a quiet minute.
    f.scheduler->advanceBy(SNStickyNoteManager::idleSecondsBeforeCompaction);
    QCOMPARE(f.scheduler->scheduledCount(), 0);
}

void TestSNStickyNoteWindowController::commandsPostTheirNotifications()
{
    auto controller = openNote(noteWithText(u"Menus"_s));
    QStringList posted;
    std::vector<QWNotificationCenter::Observation> observations;
    // Ctrl+, for the preferences is the preferences' test.
    const std::pair<const char *, QString> commands[]
        = { { "showTagsItem", SNStickyNoteWindowController::showTagManagerNotification },
              { "helpItem", SNStickyNoteWindowController::showHelpNotification },
              { "rateAppItem", SNStickyNoteWindowController::rateAppNotification },
              { "mailingListItem", SNStickyNoteWindowController::joinMailingListNotification } };
    for (const auto &[item, name] : commands) {
        observations.push_back(QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            name, nullptr, [&posted](const QWNotification &notification) {
                // For the application controller: no sender.
                posted.append(notification.object ? QString() : notification.name);
            }));
        part<QAction>(*controller, item)->trigger();
        QCOMPARE(posted.value(posted.size() - 1), name);
    }
    part<QToolButton>(*controller, "tagButton")->click();
    QCOMPARE(posted.size(), 5);
    QCOMPARE(posted.last(), SNStickyNoteWindowController::showTagManagerNotification);
}

void TestSNStickyNoteWindowController::clickOnATagOpensTheTagMenuForIt()
{
    auto controller = openWithText(u"see #work"_s);
    SNTextView *text = controller->textView();
    QMenu *tagsMenu = controller->menus()->tagsMenu();
    QVERIFY(!controller->textViewClickedOnLinkAtIndex(text, u"see"_s, 1));
    QVERIFY(!tagsMenu->isVisible());

    QTest::mouseClick(text->viewport(), Qt::LeftButton, {}, pointOfCharacter(text, 6));
    QTRY_VERIFY(tagsMenu->isVisible());
    QCOMPARE(part<QAction>(*controller, "filterTagsMenuItem")->data().toString(), u"#work"_s);
    tagsMenu->hide();
}

QTEST_MAIN(TestSNStickyNoteWindowController)
#include "TestSNStickyNoteWindowController.moc"
