#include "SNNoteWindowTestSupport.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

// What the controller wires: closing, and the save half a second after the last edit. Quitting
// is the application's test.
class TestSNStickyNoteWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void closedNotesLeaveTheStoreWithTheirLastTyping()
    {
        auto controller = openWithText(QString());
        controller->setModalPresenter(f.presenter);
        QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);

        controller->close();

        QVERIFY(f.presenter->alerts.isEmpty());
        QVERIFY(!controller->window()->isVisible());
        QVERIFY(!SNStickyNoteManager::sharedManager().notesArray().contains(controller->note()));
        QCOMPARE(willClose.count(), 1);
        QVERIFY(!controller->stickyWindow()->delegate());

        // A note deleted right after typing, before its save was due, keeps that typing in
        // Recently Deleted.
        auto typed = openWithText(QString());
        typed->setModalPresenter(f.presenter);
        f.presenter->alertAnswers = { u"Delete Note"_s };
        QTest::keyClicks(typed->textView(), u"milk"_s);
        typed->close();
        QCOMPARE(
            SNStickyNoteManager::sharedManager().recentlyDeletedNotes().value(0).title, u"milk"_s);
    }

    void editsInABurstSaveOnceAfterTheLast()
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

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNStickyNoteWindowController)
#include "TestSNStickyNoteWindowController.moc"
