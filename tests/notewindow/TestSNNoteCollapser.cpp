#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNElidingLabel.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNTitleBarView.h"
#include "notewindow/SNWindowFrameString.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"

#include <QLabel>
#include <QScreen>
#include <QTest>

// Folding a note up to its title bar and back, at once and animated.
class TestSNNoteCollapser final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_scheduler = std::make_unique<QWManualScheduler>(); }
    void cleanup();

    void collapseKeepsTheTopEdgeAndLocksTheHeight();
    void animatedCollapseAndExpand();
    void animatedExpandStaysAboveTheScreenBottom();
    void storedCollapsedNoteOpensCollapsed();
    void titleBarDoubleClickTogglesCollapse();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNNoteCollapser::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNNoteCollapser::collapseKeepsTheTopEdgeAndLocksTheHeight()
{
    auto note = noteWithText(QStringLiteral("Tall note"));
    note->setWindowFrame(QStringLiteral("{{100, 120}, {260, 300}}"));
    auto controller = openNote(note);
    QWidget *window = controller->window();
    QCOMPARE(controller->collapser()->collapsedHeight(), 30);
    QCOMPARE(
        part<QAction>(*controller, "collapseMenuItem")->text(), QStringLiteral("Collapse Window"));
    QCOMPARE(window->minimumHeight(), SNNoteCollapser::minimumExpandedHeight);

    controller->collapser()->collapseWindowAnimated(false);

    QCOMPARE(window->geometry(), QRect(100, 120, 260, 30));
    QVERIFY(controller->collapser()->isCollapsed());
    QVERIFY(note->isCollapsed());
    QCOMPARE(
        part<QAction>(*controller, "collapseMenuItem")->text(), QStringLiteral("Expand Window"));
    QVERIFY(controller->textView()->isReadOnly());
    QVERIFY(part<QWidget>(*controller, "wordCountContainerView")->isHidden());
    QVERIFY(!part<QLabel>(*controller, "collapsedTitleLabel")->isHidden());
    // Only the width can change while collapsed.
    QCOMPARE(window->minimumHeight(), 30);
    QCOMPARE(window->maximumHeight(), 30);
    QCOMPARE(controller->windowWillResizeToSize(controller->stickyWindow(), QSize(320, 200)),
        QSize(320, 30));
    window->resize(300, 200);
    QCOMPARE(window->size(), QSize(300, 30));
    window->resize(260, 30);

    // The delayed save files the frame under the collapsed one and keeps the full one.
    QVERIFY(note->collapsedWindowFrame().isEmpty());
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    QCOMPARE(note->collapsedWindowFrame(), QStringLiteral("{{100, 120}, {260, 30}}"));
    QCOMPARE(note->windowFrame(), QStringLiteral("{{100, 120}, {260, 300}}"));

    // Back exactly as stored.
    window->move(140, 150);
    controller->collapser()->uncollapseWindowAnimated(false);
    QCOMPARE(window->geometry(), QRect(100, 120, 260, 300));
    QVERIFY(!controller->collapser()->isCollapsed());
    QVERIFY(!note->isCollapsed());
    QCOMPARE(
        part<QAction>(*controller, "collapseMenuItem")->text(), QStringLiteral("Collapse Window"));
    QVERIFY(!controller->textView()->isReadOnly());
    QVERIFY(!part<QWidget>(*controller, "wordCountContainerView")->isHidden());
    QVERIFY(part<QLabel>(*controller, "collapsedTitleLabel")->isHidden());
    QCOMPARE(window->maximumHeight(), QWIDGETSIZE_MAX);
}

void TestSNNoteCollapser::animatedCollapseAndExpand()
{
    auto note = noteWithText(QStringLiteral("Animated"));
    note->setWindowFrame(QStringLiteral("{{80, 100}, {250, 280}}"));
    auto controller = openNote(note);
    QWidget *window = controller->window();

    controller->collapser()->toggleCollapsedWindow();
    QVERIFY(controller->collapser()->isCollapsed());
    QTRY_COMPARE(window->geometry(), QRect(80, 100, 250, 30));
    // Stored as soon as the animation ends; the save itself follows the delay.
    QTRY_COMPARE(note->collapsedWindowFrame(), QStringLiteral("{{80, 100}, {250, 30}}"));
    QCOMPARE(m_scheduler->scheduledCount(), 1);
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);

    // An animated expand grows from where the collapsed note stands now and keeps its width,
    // and saves at once.
    window->setGeometry(90, 140, 230, 30);
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    controller->collapser()->toggleCollapsedWindow();
    QVERIFY(!controller->collapser()->isCollapsed());
    QTRY_COMPARE(window->geometry(), QRect(90, 140, 230, 280));
    QTRY_COMPARE(note->windowFrame(), QStringLiteral("{{90, 140}, {230, 280}}"));
    QCOMPARE(window->minimumHeight(), SNNoteCollapser::minimumExpandedHeight);
}

void TestSNNoteCollapser::animatedExpandStaysAboveTheScreenBottom()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    auto note = noteWithText(QStringLiteral("Low"));
    note->setWindowFrame(QStringLiteral("{{60, 60}, {240, 300}}"));
    note->setIsCollapsed(true);
    note->setCollapsedWindowFrame(
        SNWindowFrameString::stringFromRect(QRect(60, screen.bottom() - 60, 240, 30)));
    auto controller = openNote(note);
    QCOMPARE(controller->window()->geometry(), QRect(60, screen.bottom() - 60, 240, 30));

    controller->collapser()->uncollapseWindowAnimated(true);

    QTRY_COMPARE(controller->window()->geometry().height(), 300);
    QCOMPARE(controller->window()->geometry().bottom(), screen.bottom());
    QCOMPARE(controller->window()->geometry().x(), 60);
}

void TestSNNoteCollapser::storedCollapsedNoteOpensCollapsed()
{
    auto note = noteWithText(QStringLiteral("Folded"));
    note->setWindowFrame(QStringLiteral("{{50, 60}, {280, 240}}"));
    note->setIsCollapsed(true);
    note->setCollapsedWindowFrame(QStringLiteral("{{70, 80}, {280, 30}}"));
    auto controller = openNote(note);

    QVERIFY(controller->collapser()->isCollapsed());
    QCOMPARE(controller->window()->geometry(), QRect(70, 80, 280, 30));
    QCOMPARE(
        part<QAction>(*controller, "collapseMenuItem")->text(), QStringLiteral("Expand Window"));
    QVERIFY(part<QLabel>(*controller, "collapsedTitleLabel")->isVisible());
    QVERIFY(!part<QWidget>(*controller, "wordCountContainerView")->isVisible());

    // A long title ends in an ellipsis and leaves the note as wide as it was.
    auto *title = qobject_cast<SNElidingLabel *>(part<QLabel>(*controller, "collapsedTitleLabel"));
    QVERIFY(title);
    title->setText(
        QStringLiteral("A very long first line that could never fit into the title bar of a note"));
    QCoreApplication::processEvents();
    QCOMPARE(controller->window()->geometry(), QRect(70, 80, 280, 30));
    QVERIFY(title->shownText().endsWith(QChar(0x2026)));
    QVERIFY(title->fontMetrics().horizontalAdvance(title->shownText())
        <= title->contentsRect().width());
    title->setText(QStringLiteral("Short"));
    QCOMPARE(title->shownText(), QStringLiteral("Short"));

    controller->collapser()->uncollapseWindowAnimated(false);
    QCOMPARE(controller->window()->geometry(), QRect(50, 60, 280, 240));
}

void TestSNNoteCollapser::titleBarDoubleClickTogglesCollapse()
{
    auto note = noteWithText(QStringLiteral("Double"));
    note->setWindowFrame(QStringLiteral("{{30, 40}, {250, 220}}"));
    auto controller = openNote(note);
    auto other = openNote(noteWithText(QStringLiteral("Other")));

    // Only this note's own title bar counts.
    QTest::mouseDClick(part<QWidget>(*other, "titleBarView"), Qt::LeftButton, {}, QPoint(100, 15));
    QVERIFY(!controller->collapser()->isCollapsed());
    QVERIFY(other->collapser()->isCollapsed());

    QTest::mouseDClick(
        part<QWidget>(*controller, "titleBarView"), Qt::LeftButton, {}, QPoint(100, 15));
    QVERIFY(controller->collapser()->isCollapsed());
    QTRY_COMPARE(controller->window()->height(), controller->collapser()->collapsedHeight());
    QTest::mouseDClick(
        part<QWidget>(*controller, "titleBarView"), Qt::LeftButton, {}, QPoint(100, 15));
    QVERIFY(!controller->collapser()->isCollapsed());
    QTRY_COMPARE(controller->window()->height(), 220);
}

QTEST_MAIN(TestSNNoteCollapser)
#include "TestSNNoteCollapser.moc"
