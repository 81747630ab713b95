#include "SNNoteWindowTestSupport.h"
#include "notes/SNWindowFrameString.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNTitleBarView.h"

using namespace Qt::StringLiterals;

// Folding a note up to its title bar and back, at once and animated.
class TestSNNoteCollapser final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void titleBarDoubleClickTogglesAnimatedAndSaves()
    {
        auto note = noteWithText(u"Animated"_s);
        note->setWindowFrame(u"{{80, 100}, {250, 280}}"_s);
        auto controller = openNote(note);
        QWidget *window = controller->window();
        auto *titleBar = part<SNTitleBarView>(*controller, "titleBarView");

        // Folded up to the title bar, keeping the top edge.
        const int waiting = f.scheduler->scheduledCount();
        QTest::mouseDClick(titleBar, Qt::LeftButton, {}, QPoint(100, 15));
        QTRY_COMPARE(window->geometry(), QRect(80, 100, 250, 30));
        // Stored as soon as the animation ends; the save itself follows the delay.
        QTRY_COMPARE(note->collapsedWindowFrame(), u"{{80, 100}, {250, 30}}"_s);
        QCOMPARE(f.scheduler->scheduledCount(), waiting + 1);
        QVERIFY(note->isCollapsed() && controller->textView()->isReadOnly());
        // Only the width can change while collapsed.
        window->resize(300, 200);
        QCOMPARE(window->size(), QSize(300, 30));

        // Expanding grows from where the collapsed note stands now, keeps its width, takes the
        // stored height and saves at once.
        window->setGeometry(90, 140, 230, 30);
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        QTest::mouseDClick(titleBar, Qt::LeftButton, {}, QPoint(100, 15));
        QTRY_COMPARE(window->geometry(), QRect(90, 140, 230, 280));
        QTRY_COMPARE(note->windowFrame(), u"{{90, 140}, {230, 280}}"_s);
        QVERIFY(!note->isCollapsed() && !controller->textView()->isReadOnly());
    }

    void storedCollapsedNoteOpensCollapsedAndExpandsOnScreen()
    {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        auto note = noteWithText(u"Folded"_s);
        note->setWindowFrame(u"{{60, 60}, {280, 300}}"_s);
        note->setIsCollapsed(true);
        const QRect low(60, screen.bottom() - 60, 280, 30);
        note->setCollapsedWindowFrame(SNWindowFrameString::stringFromRect(low));
        auto controller = openNote(note);
        QVERIFY(controller->collapser()->isCollapsed());
        QCOMPARE(controller->window()->geometry(), low);

        // Grown from there, it stops at the bottom of the screen.
        controller->collapser()->uncollapseWindowAnimated(true);
        QTRY_COMPARE(controller->window()->geometry().height(), 300);
        QCOMPARE(controller->window()->geometry().bottom(), screen.bottom());
        QCOMPARE(controller->window()->geometry().x(), 60);
    }

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNNoteCollapser)
#include "TestSNNoteCollapser.moc"
