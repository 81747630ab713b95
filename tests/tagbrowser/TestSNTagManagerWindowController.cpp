#include "../notewindow/SNNoteWindowTestSupport.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/QWX11WindowState.h"
#include "notewindow/SNNoteWindowSet.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tagbrowser/SNTagButton.h"
#include "tagbrowser/SNTagCloudView.h"
#include "tagbrowser/SNTagManagerWindowController.h"
#include "tagbrowser/SNTagSearchField.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>

namespace {

const QWColor red(0.9, 0.1, 0.1);
const QWColor green(0.1, 0.7, 0.2);
const QWColor blue(0.1, 0.2, 0.9);

// The colour the search field shows at a position of its text.
QColor colourAt(SNTagSearchField *field, int position)
{
    QTextCursor cursor(field->document());
    cursor.setPosition(position + 1);
    return cursor.charFormat().foreground().color();
}

QStringList buttonTitles(SNTagCloudView *cloud)
{
    QStringList titles;
    for (const SNTagButton *button : cloud->buttonArray())
        titles.append(button->text());
    return titles;
}

SNTagButton *buttonTitled(SNTagCloudView *cloud, const QString &title)
{
    for (SNTagButton *button : cloud->buttonArray()) {
        if (button->text() == title)
            return button;
    }
    return nullptr;
}

} // namespace

// The tag browser over real note windows: which notes it hides and shows, what the search field
// and the cloud show, and when it closes.
class TestSNTagManagerWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void closingWithoutTypingRestoresVisibility();
    void typedTagsShowTheirNotesUnderTheBrowser();
    void unknownHashtagIsBlackAndSelectsNothing();
    void clearingTheSearchHidesTheShownNotesAgain();
    void closingAfterAMatchKeepsTheMatchingNotes();
    void clickReplacesAndShiftClickAppends();
    void withoutTagsTheLabelShowsInsteadOfTheCloud();
    void heightGrowsByLinesUpToTheCap();
    void updatedTagsReloadTheCloud();
    void escapeClosesOnReleaseAndCancelIsSwallowed();
    void returnAndLosingTheFocusClose();

private:
    // Three notes, each with its window shown: #a on the first, #b on the first two, #c on
    // the third.
    void makeNotes(bool withTags = true);
    void open();
    void waitUntilClosed();
    SNTagSearchField *field() { return m_browser->searchField(); }
    QList<bool> visibility() const;

    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    QList<std::shared_ptr<SNStickyNote>> m_notes;
    std::unique_ptr<SNNoteWindowSet> m_set;
    QList<SNStickyNoteWindowController *> m_controllers; // owned by the window manager
    std::shared_ptr<SNTag> m_a, m_b, m_c;
    std::unique_ptr<SNTagManagerWindowController> m_browser;
};

void TestSNTagManagerWindowController::initTestCase()
{
    // No welcome notes, and so none of their tags.
    SNStickyNoteManager &store = SNStickyNoteManager::sharedManager();
    for (const auto &note : store.notesArray())
        store.removeNote(note);
    QCOMPARE(SNTagManager::sharedManager().count(), 0);
}

void TestSNTagManagerWindowController::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    m_set = std::make_unique<SNNoteWindowSet>(
        SNStickyNoteManager::sharedManager(), QWWindowManager::sharedManager());
}

void TestSNTagManagerWindowController::cleanup()
{
    m_browser.reset();
    for (SNStickyNoteWindowController *controller : std::as_const(m_controllers))
        controller->window()->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_controllers.clear();
    m_set.reset();
    for (const auto &note : std::as_const(m_notes)) {
        note->setTags({});
        SNStickyNoteManager::sharedManager().removeNote(note);
    }
    m_notes.clear();
    m_a.reset();
    m_b.reset();
    m_c.reset();
    for (const auto &tag : SNTagManager::sharedManager().tags())
        SNTagManager::sharedManager().removeTag(tag);
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNTagManagerWindowController::makeNotes(bool withTags)
{
    const QStringList texts = { QStringLiteral("#a #b first"), QStringLiteral("#b second"),
        QStringLiteral("#c third") };
    // In the index before the notes open, so that each note finds these tags by name as it
    // reads its text.
    if (withTags) {
        m_a = SNTag::tagWithNameColor(QStringLiteral("#a"), red);
        m_b = SNTag::tagWithNameColor(QStringLiteral("#b"), green);
        m_c = SNTag::tagWithNameColor(QStringLiteral("#c"), blue);
        SNTagManager::sharedManager().addTags({ m_a, m_b, m_c });
    }
    auto presenter = std::make_shared<ScriptedPresenter>();
    for (int i = 0; i < texts.size(); ++i) {
        auto note = noteWithText(withTags ? texts.at(i) : QStringLiteral("plain"));
        note->setWindowFrame(QStringLiteral("{{%1, 40}, {200, 160}}").arg(20 + 220 * i));
        SNStickyNoteWindowController *controller = m_set->openNote(note, true);
        controller->setModalPresenter(presenter);
        // Closing at the end of a test only flushes the note.
        controller->setIsTerminating(true);
        QVERIFY(QTest::qWaitForWindowExposed(controller->window()));
        m_notes.append(note);
        m_controllers.append(controller);
    }
    if (!withTags)
        return;
    QCOMPARE(m_notes[0]->tags(), (QList<std::shared_ptr<SNTag>> { m_a, m_b }));
    QCOMPARE(m_notes[1]->tags(), (QList<std::shared_ptr<SNTag>> { m_b }));
    QCOMPARE(m_notes[2]->tags(), (QList<std::shared_ptr<SNTag>> { m_c }));
}

void TestSNTagManagerWindowController::open()
{
    m_browser = SNTagManagerWindowController::controller();
    // As the application wires them.
    connect(m_browser.get(), &SNTagManagerWindowController::notesWillBeBrowsed, m_set.get(),
        &SNNoteWindowSet::beginTagBrowsing);
    connect(m_browser.get(), &SNTagManagerWindowController::tagsWerePicked, m_set.get(),
        &SNNoteWindowSet::showOnlyNotesWithTags);
    connect(m_browser.get(), &SNTagManagerWindowController::notesShouldBePutBack, m_set.get(),
        &SNNoteWindowSet::endTagBrowsing);
    m_browser->showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(m_browser->window()));
    QVERIFY(QTest::qWaitForWindowActive(m_browser->window()));
    QVERIFY(m_browser->isOpen());
}

void TestSNTagManagerWindowController::waitUntilClosed()
{
    QTRY_VERIFY(!m_browser->window()->isVisible());
    QVERIFY(!m_browser->isOpen());
}

QList<bool> TestSNTagManagerWindowController::visibility() const
{
    QList<bool> visible;
    for (SNStickyNoteWindowController *controller : m_controllers)
        visible.append(controller->window()->isVisible());
    return visible;
}

void TestSNTagManagerWindowController::closingWithoutTypingRestoresVisibility()
{
    makeNotes();
    m_controllers[1]->window()->hide();
    open();
    QCOMPARE(visibility(), (QList<bool> { false, false, false }));
    for (SNStickyNoteWindowController *controller : std::as_const(m_controllers))
        QVERIFY(controller->window()->testAttribute(Qt::WA_ShowWithoutActivating));
    // The cloud lists every tag, sorted.
    QCOMPARE(buttonTitles(m_browser->tagCloudView()),
        (QStringList { QStringLiteral("#a"), QStringLiteral("#b"), QStringLiteral("#c") }));

    QSignalSpy willClose(m_browser.get(), &QWWindowController::windowWillClose);
    m_browser->close(nullptr);
    // The notes come back at once; the browser goes on the next turn of the event loop.
    QCOMPARE(visibility(), (QList<bool> { true, false, true }));
    QVERIFY(m_browser->window()->isVisible());
    waitUntilClosed();
    QCOMPARE(willClose.size(), 1);
    QCOMPARE(visibility(), (QList<bool> { true, false, true }));
    // Closing twice does nothing more.
    m_browser->close(nullptr);
    QCOMPARE(visibility(), (QList<bool> { true, false, true }));
}

void TestSNTagManagerWindowController::typedTagsShowTheirNotesUnderTheBrowser()
{
    makeNotes();
    // With #c on no note there are no tags left over once #a and #b are picked.
    m_notes[2]->setTags({});
    QCOMPARE(SNTagManager::sharedManager().count(), 2);
    open();
    QTest::keyClicks(field(), QStringLiteral("#a #b"));

    QCOMPARE(visibility(), (QList<bool> { true, true, false }));
    QCOMPARE(m_browser->selectedTags(), (QList<std::shared_ptr<SNTag>> { m_a, m_b }));
    QCOMPARE(m_set->notesShownForTags(),
        (QList<SNStickyNoteWindowController *> { m_controllers[0], m_controllers[1] }));
    // On the browser's level, and the browser is still the active window.
    QCOMPARE(QWX11WindowState::level(m_controllers[0]->window()),
        QWX11WindowState::level(m_browser->window()));
    QVERIFY(m_browser->isOpen());
    QTRY_VERIFY(m_browser->window()->isActiveWindow());

    QVERIFY(m_browser->tagsArray().isEmpty());
    QVERIFY(m_browser->tagCloudView()->buttonArray().isEmpty());
    QCOMPARE(m_browser->emptyLabel()->text(), QStringLiteral("All notes are currently shown"));
    QVERIFY(m_browser->emptyLabel()->isVisible());
    QVERIFY(!m_browser->scrollView()->isVisible());

    // Each hashtag in its tag's colour; the blank between them not.
    QCOMPARE(colourAt(field(), 0), red.toQColor());
    QCOMPARE(colourAt(field(), 1), red.toQColor());
    QCOMPARE(colourAt(field(), 3), green.toQColor());
    QCOMPARE(colourAt(field(), 4), green.toQColor());
    QVERIFY(colourAt(field(), 2) != red.toQColor());
    QCOMPARE(field()->text(), QStringLiteral("#a #b"));

    // The same tag twice is picked twice, and still shows its notes once.
    QTest::keyClicks(field(), QStringLiteral(" #a"));
    QCOMPARE(m_browser->selectedTags(), (QList<std::shared_ptr<SNTag>> { m_a, m_b, m_a }));
    QCOMPARE(m_set->notesShownForTags().size(), 2);
}

void TestSNTagManagerWindowController::unknownHashtagIsBlackAndSelectsNothing()
{
    makeNotes();
    open();
    // Tags are named exactly: #A is not #a.
    QTest::keyClicks(field(), QStringLiteral("#A #nosuch"));
    QVERIFY(m_browser->selectedTags().isEmpty());
    QCOMPARE(visibility(), (QList<bool> { false, false, false }));
    QCOMPARE(colourAt(field(), 0), QColor(Qt::black));
    QCOMPARE(colourAt(field(), 5), QColor(Qt::black));
    QCOMPARE(m_browser->tagsArray().size(), 3);
    QCOMPARE(m_browser->emptyLabel()->isVisible(), false);

    // A known tag after them takes its colour; the unknown ones stay black.
    QTest::keyClicks(field(), QStringLiteral(" #c"));
    QCOMPARE(colourAt(field(), 11), blue.toQColor());
    QCOMPARE(colourAt(field(), 5), QColor(Qt::black));
    QCOMPARE(visibility(), (QList<bool> { false, false, true }));
}

void TestSNTagManagerWindowController::clearingTheSearchHidesTheShownNotesAgain()
{
    makeNotes();
    m_notes[1]->setPinState(2);
    open();
    QTest::keyClicks(field(), QStringLiteral("#b"));
    QCOMPARE(visibility(), (QList<bool> { true, true, false }));
    QCOMPARE(buttonTitles(m_browser->tagCloudView()),
        (QStringList { QStringLiteral("#a"), QStringLiteral("#c") }));

    field()->selectAll();
    QTest::keyClick(field(), Qt::Key_Backspace);
    QVERIFY(field()->text().isEmpty());
    QVERIFY(m_browser->selectedTags().isEmpty());
    QCOMPARE(visibility(), (QList<bool> { false, false, false }));
    QVERIFY(m_set->notesShownForTags().isEmpty());
    QCOMPARE(buttonTitles(m_browser->tagCloudView()),
        (QStringList { QStringLiteral("#a"), QStringLiteral("#b"), QStringLiteral("#c") }));
    // Hidden again at their own levels.
    QCOMPARE(QWX11WindowState::level(m_controllers[0]->window()), QWX11WindowState::Level::Normal);
    QCOMPARE(
        QWX11WindowState::level(m_controllers[1]->window()), QWX11WindowState::Level::KeepBelow);

    // Text without a hashtag picks nothing either.
    QTest::keyClicks(field(), QStringLiteral("b"));
    QVERIFY(m_browser->selectedTags().isEmpty());
    QCOMPARE(visibility(), (QList<bool> { false, false, false }));
}

void TestSNTagManagerWindowController::closingAfterAMatchKeepsTheMatchingNotes()
{
    makeNotes();
    m_controllers[0]->window()->hide();
    open();
    QTest::keyClicks(field(), QStringLiteral("#a"));
    QCOMPARE(visibility(), (QList<bool> { true, false, false }));

    m_browser->close(nullptr);
    waitUntilClosed();
    // The match stays on screen, the others hidden, whatever they were before.
    QCOMPARE(visibility(), (QList<bool> { true, false, false }));
    QCOMPARE(QWX11WindowState::level(m_controllers[0]->window()), QWX11WindowState::Level::Normal);
}

void TestSNTagManagerWindowController::clickReplacesAndShiftClickAppends()
{
    makeNotes();
    open();
    SNTagCloudView *cloud = m_browser->tagCloudView();
    QTest::mouseClick(buttonTitled(cloud, QStringLiteral("#c")), Qt::LeftButton);
    QCOMPARE(field()->text(), QStringLiteral("#c "));
    QCOMPARE(field()->textCursor().position(), 3);
    QCOMPARE(visibility(), (QList<bool> { false, false, true }));
    QCOMPARE(buttonTitles(cloud), (QStringList { QStringLiteral("#a"), QStringLiteral("#b") }));

    QTest::mouseClick(buttonTitled(cloud, QStringLiteral("#b")), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(field()->text(), QStringLiteral("#c #b "));
    QCOMPARE(field()->textCursor().position(), 6);
    QCOMPARE(m_browser->selectedTags(), (QList<std::shared_ptr<SNTag>> { m_c, m_b }));
    QCOMPARE(visibility(), (QList<bool> { true, true, true }));

    QTest::mouseClick(buttonTitled(cloud, QStringLiteral("#a")), Qt::LeftButton);
    QCOMPARE(field()->text(), QStringLiteral("#a "));
    QCOMPARE(visibility(), (QList<bool> { true, false, false }));
    // Clicking in the cloud keeps the browser open and the typing in the field.
    QVERIFY(m_browser->isOpen());
    QVERIFY(field()->hasFocus());
}

void TestSNTagManagerWindowController::withoutTagsTheLabelShowsInsteadOfTheCloud()
{
    makeNotes(false);
    open();
    QCOMPARE(m_browser->emptyLabel()->text(),
        QStringLiteral("Add #tags to your #notes by using the #hashtag"));
    QVERIFY(m_browser->emptyLabel()->isVisible());
    QVERIFY(!m_browser->scrollView()->isVisible());
    QVERIFY(m_browser->tagCloudView()->buttonArray().isEmpty());

    // Typing into an empty index still works and shows nothing.
    QTest::keyClicks(field(), QStringLiteral("#a"));
    QCOMPARE(visibility(), (QList<bool> { false, false, false }));
    QCOMPARE(m_browser->emptyLabel()->text(),
        QStringLiteral("Add #tags to your #notes by using the #hashtag"));
}

void TestSNTagManagerWindowController::heightGrowsByLinesUpToTheCap()
{
    makeNotes(false);
    open();
    QWidget *browser = m_browser->window();
    const int minimum = browser->minimumHeight();
    auto addTags = [this](int count) {
        for (int i = 0; i < count; ++i) {
            auto tag = SNTag::tagWithNameColor(
                QStringLiteral("#tag%1").arg(i, 3, 10, QLatin1Char('0')), green);
            SNTagManager::sharedManager().addTag(tag);
            tag->addNote(m_notes[0]);
        }
        m_browser->reloadData();
    };

    addTags(1);
    QCOMPARE(m_browser->tagCloudView()->height(), 30);
    QCOMPARE(browser->height(), minimum);
    QVERIFY(m_browser->scrollView()->isVisible());
    QVERIFY(!m_browser->emptyLabel()->isVisible());

    addTags(12);
    const int cloud = m_browser->tagCloudView()->height();
    QVERIFY(cloud > 30);
    QCOMPARE(browser->height(), cloud - 30 + minimum);

    addTags(200);
    QVERIFY(m_browser->tagCloudView()->height() - 30 + minimum > 350);
    QCOMPARE(browser->height(), 350);
    // Scrolled to the top, and every button still fits across.
    QCOMPARE(m_browser->scrollView()->verticalScrollBar()->value(), 0);
    for (const SNTagButton *button : m_browser->tagCloudView()->buttonArray())
        QVERIFY(button->geometry().right() < m_browser->scrollView()->viewport()->width());
}

void TestSNTagManagerWindowController::updatedTagsReloadTheCloud()
{
    makeNotes();
    open();
    auto tag = SNTag::tagWithNameColor(QStringLiteral("#late"), red);
    SNTagManager::sharedManager().addTag(tag);
    tag->addNote(m_notes[2]);
    QCOMPARE(m_browser->tagCloudView()->buttonArray().size(), 3);
    m_scheduler->advanceBy(SNTagManager::notificationDelay);
    QCOMPARE(buttonTitles(m_browser->tagCloudView()),
        (QStringList { QStringLiteral("#a"), QStringLiteral("#b"), QStringLiteral("#c"),
            QStringLiteral("#late") }));
}

void TestSNTagManagerWindowController::escapeClosesOnReleaseAndCancelIsSwallowed()
{
    makeNotes();
    m_controllers[2]->window()->hide();
    open();
    QTest::keyClicks(field(), QStringLiteral("#zz"));
    QTest::keyPress(field(), Qt::Key_Escape);
    // The press does nothing: the field keeps its text, the browser stays.
    QCOMPARE(field()->text(), QStringLiteral("#zz"));
    QCoreApplication::processEvents();
    QVERIFY(m_browser->isOpen());
    QVERIFY(m_browser->window()->isVisible());

    QTest::keyRelease(field(), Qt::Key_Escape);
    waitUntilClosed();
    QCOMPARE(visibility(), (QList<bool> { true, true, false }));
}

void TestSNTagManagerWindowController::returnAndLosingTheFocusClose()
{
    makeNotes();
    open();
    QTest::keyClick(field(), Qt::Key_Return);
    waitUntilClosed();
    QCOMPARE(visibility(), (QList<bool> { true, true, true }));

    // Another window of the program taking the focus closes it.
    open();
    QWidget other;
    other.resize(100, 100);
    other.show();
    other.activateWindow();
    waitUntilClosed();
    QCOMPARE(visibility(), (QList<bool> { true, true, true }));
}

QTEST_MAIN(TestSNTagManagerWindowController)
#include "TestSNTagManagerWindowController.moc"
