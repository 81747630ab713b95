#include "SNNoteWindowTestSupport.h"
#include "kit/widgets/QWX11WindowState.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNNoteWindowState.h"

#include <QSlider>

using namespace Qt::StringLiterals;

// A note window's frame, pin state and transparency, from the note and back into it.
class TestSNNoteWindowState final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void openingAtTheStoredFrameSavesNothing()
    {
        auto note = noteWithText(u"Where I was"_s);
        note->setWindowFrame(u"{{120, 90}, {270, 230}}"_s);
        SNStickyNoteManager::sharedManager().addNote(note);
        SNStickyNoteManager::sharedManager().save();
        const std::optional<QDateTime> saved = note->dateModified();
        // Opening moved the window to where the note has it: nothing to save. That a move is saved
        // is the integration test's, by the pointer.
        auto controller = openNote(note);
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        QCOMPARE(note->dateModified(), saved);
    }

    // What the window cannot show opens usable: a stored transparency of 0 would be an invisible
    // window and opens opaque; a pin state this version does not know shows as a normal window, and
    // is kept. Each choice in the window is worth a save.
    void oddStoredStatesOpenUsableAndChoicesAreSaved()
    {
        auto note = noteWithText(u"Odd"_s);
        note->setWindowAlpha(0.0);
        note->setPinState(7);
        SNStickyNoteManager::sharedManager().addNote(note);
        auto controller = openNote(note);
        QCOMPARE(controller->window()->windowOpacity(), 1.0);
        QCOMPARE(note->windowAlpha(), 1.0);
        const QList<QAction *> items = controller->menus()->pinMenu()->actions();
        QVERIFY(items[0]->isChecked() && !items[1]->isChecked() && !items[2]->isChecked());
        QCOMPARE(QWX11WindowState::level(controller->window()), QWX11WindowState::Level::Normal);
        controller->save();
        QCOMPARE(archivedNoteWithText(u"Odd"_s)->pinState(), qint64(7));

        part<QSlider>(*controller, "alphaSlider")->setValue(40);
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        QCOMPARE(archivedNoteWithText(u"Odd"_s)->windowAlpha(), double(0.4f));
        // What each pin choice does to the window is the integration test's, with a window manager.
        items[2]->trigger();
        QVERIFY(items[2]->isChecked() && !items[0]->isChecked());
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        QCOMPARE(archivedNoteWithText(u"Odd"_s)->pinState(), qint64(2));
    }

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNNoteWindowState)
#include "TestSNNoteWindowState.moc"
