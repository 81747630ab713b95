#include "SNNoteWindowTestSupport.h"
#include "kit/QWNotificationCenter.h"
#include "notewindow/SNNoteMenus.h"

#include <QSignalSpy>
#include <QToolButton>

using namespace Qt::StringLiterals;

// What the controller wires: closing, the save half a second after the last edit, quitting,
// the commands of the toolbar and menus, and a click on a tag.
class TestSNStickyNoteWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void emptyNoteClosesWithoutQuestionAndLeavesTheStore();
    void editsInABurstSaveOnceAfterTheLast();
    void quitKeepsTheNoteWithItsLatestTextAndFrame();
    void commandsPostTheirNotifications();
    void clickOnATagOpensTheTagMenuForIt();

private:
    NoteWindowFixture f;
};

void TestSNStickyNoteWindowController::emptyNoteClosesWithoutQuestionAndLeavesTheStore()
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
}

void TestSNStickyNoteWindowController::editsInABurstSaveOnceAfterTheLast()
{
    auto controller = openWithText(QString());
    const std::shared_ptr<SNStickyNote> &note = controller->note();
    const std::optional<QDateTime> opened = note->dateModified();
    const QDateTime burstStart = f.scheduler->currentDateTime();

    const QString typed = u"tenletters"_s;
    for (qsizetype i = 0; i < typed.size(); ++i) {
        if (i > 0)
            f.scheduler->advanceBy(0.04);
        QTest::keyClicks(controller->textView(), typed.sliced(i, 1));
    }
    QVERIFY(controller->wasEdited());
    f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay - 0.01);
    QCOMPARE(note->dateModified(), opened);
    QCOMPARE(plainText(note), QString());

    f.scheduler->advanceBy(0.01);
    const QDateTime savedAt = burstStart.addMSecs(360 + 500);
    QCOMPARE(note->dateModified(), std::optional<QDateTime>(savedAt));
    QVERIFY(archivedNoteWithText(typed));
    // And only once.
    f.scheduler->advanceBy(10);
    QCOMPARE(note->dateModified(), std::optional<QDateTime>(savedAt));
    QCOMPARE(f.scheduler->scheduledCount(), 0);
}

void TestSNStickyNoteWindowController::quitKeepsTheNoteWithItsLatestTextAndFrame()
{
    auto controller = openWithText(u"First"_s);
    controller->setModalPresenter(f.presenter);
    // Typed and moved just before quitting, within the save delay.
    QTest::keyClick(controller->textView(), Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(controller->textView(), u" draft"_s);
    controller->window()->setGeometry(110, 120, 250, 210);

    // What the application does at termination.
    controller->setIsTerminating(true);
    controller->window()->close();
    SNStickyNoteManager::sharedManager().save();

    QVERIFY(f.presenter->alerts.isEmpty());
    QVERIFY(storeHolds(controller->note()));
    QCOMPARE(archivedNoteWithText(u"First draft"_s)->windowFrame(), u"{{110, 120}, {250, 210}}"_s);
}

void TestSNStickyNoteWindowController::commandsPostTheirNotifications()
{
    auto controller = openNote(noteWithText(u"Menus"_s));
    QStringList posted;
    std::vector<QWNotificationCenter::Observation> observations;
    const std::pair<const char *, QString> commands[]
        = { { "showTagsItem", SNStickyNoteWindowController::showTagManagerNotification },
              { "helpItem", SNStickyNoteWindowController::showHelpNotification },
              { "rateAppItem", SNStickyNoteWindowController::rateAppNotification },
              { "mailingListItem", SNStickyNoteWindowController::joinMailingListNotification },
              { "preferencesItem", SNStickyNoteWindowController::openPreferencesNotification } };
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
    QCOMPARE(posted.size(), 6);
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
