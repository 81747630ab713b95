#include "kit/QWColor.h"
#include "notes/SNStickyNote.h"
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
#include <QTextCursor>

using namespace Qt::Literals::StringLiterals;

namespace {

QColor colourAt(SNTagSearchField *field, int position)
{
    QTextCursor cursor(field->document());
    cursor.setPosition(position + 1);
    return cursor.charFormat().foreground().color();
}

QStringList names(const QList<std::shared_ptr<SNTag>> &tags)
{
    QStringList result;
    for (const std::shared_ptr<SNTag> &tag : tags)
        result.append(tag->name());
    return result;
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

// The tag browser: which tags the search field and the cloud pick, what it announces to the
// owner of the note windows, how it grows, and when it closes. The notes it makes show are the
// note window set's (TestSNNoteWindowSet) and, together, TestSNTagManagerIntegration's.
class TestSNTagManagerWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void searchPicksTheTagsOfItsHashtags_data();
    void searchPicksTheTagsOfItsHashtags();
    void openingAndClosingAnnounceTheNotes();
    void clickReplacesAndShiftClickAppends();
    void labelShowsWhenTheCloudIsEmpty();
    void heightGrowsByLinesUpToTheCap();
    void escapeClosesOnReleaseAndCancelIsSwallowed();
    void returnAndLosingTheFocusClose();

private:
    // #a red, #b green and #c blue, each on a note of its own.
    void addTag(const QString &name, const QWColor &colour);
    void open();
    void waitUntilClosed();
    SNTagSearchField *field() { return m_browser->searchField(); }

    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    QList<std::shared_ptr<SNStickyNote>> m_notes;
    std::unique_ptr<SNTagManagerWindowController> m_browser;
};

void TestSNTagManagerWindowController::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    addTag(QStringLiteral("#a"), QWColor(0.9, 0.1, 0.1));
    addTag(QStringLiteral("#b"), QWColor(0.1, 0.7, 0.2));
    addTag(QStringLiteral("#c"), QWColor(0.1, 0.2, 0.9));
}

void TestSNTagManagerWindowController::cleanup()
{
    m_browser.reset();
    for (const auto &tag : SNTagManager::sharedManager().tags())
        SNTagManager::sharedManager().removeTag(tag);
    m_notes.clear();
    m_scheduler.reset();
}

void TestSNTagManagerWindowController::addTag(const QString &name, const QWColor &colour)
{
    auto tag = SNTag::tagWithNameColor(name, colour);
    SNTagManager::sharedManager().addTag(tag);
    m_notes.append(SNStickyNote::note());
    tag->addNote(m_notes.constLast());
}

void TestSNTagManagerWindowController::open()
{
    m_browser = SNTagManagerWindowController::controller();
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

void TestSNTagManagerWindowController::searchPicksTheTagsOfItsHashtags_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("picked");
    QTest::addColumn<QList<int>>("black"); // positions of hashtags of no tag

    QTest::newRow("two tags") << QStringLiteral("#a #b") << QStringList { u"#a"_s, u"#b"_s }
                              << QList<int> {};
    QTest::newRow("named exactly")
        << QStringLiteral("#A #nosuch #c") << QStringList { u"#c"_s } << QList<int> { 0, 5 };
    QTest::newRow("twice") << QStringLiteral("#a #b #a")
                           << QStringList { u"#a"_s, u"#b"_s, u"#a"_s } << QList<int> {};
    QTest::newRow("no hashtag") << QStringLiteral("b") << QStringList {} << QList<int> {};
}

void TestSNTagManagerWindowController::searchPicksTheTagsOfItsHashtags()
{
    QFETCH(QString, text);
    QFETCH(QStringList, picked);
    QFETCH(QList<int>, black);
    open();
    QSignalSpy picks(m_browser.get(), &SNTagManagerWindowController::tagsWerePicked);
    QTest::keyClicks(field(), text);

    QCOMPARE(field()->text(), text); // colouring leaves the text and the typing alone
    QCOMPARE(names(m_browser->selectedTags()), picked);
    QCOMPARE(picks.size(), text.size());
    QCOMPARE(names(picks.constLast().at(0).value<QList<std::shared_ptr<SNTag>>>()), picked);
    QCOMPARE(picks.constLast().at(1).value<QWidget *>(), m_browser->window());
    for (const std::shared_ptr<SNTag> &tag : m_browser->selectedTags())
        QCOMPARE(colourAt(field(), int(text.indexOf(tag->name()))), tag->tagColor().toQColor());
    for (int position : black)
        QCOMPARE(colourAt(field(), position), QColor(Qt::black));
    // The cloud offers what is left to pick, sorted.
    QStringList left = { u"#a"_s, u"#b"_s, u"#c"_s };
    for (const QString &name : picked)
        left.removeAll(name);
    QCOMPARE(buttonTitles(m_browser->tagCloudView()), left);

    // Cleared, the search picks nothing again.
    field()->selectAll();
    QTest::keyClick(field(), Qt::Key_Backspace);
    QVERIFY(m_browser->selectedTags().isEmpty());
    QVERIFY(picks.constLast().at(0).value<QList<std::shared_ptr<SNTag>>>().isEmpty());
}

void TestSNTagManagerWindowController::openingAndClosingAnnounceTheNotes()
{
    m_browser = SNTagManagerWindowController::controller();
    QSignalSpy browsing(m_browser.get(), &SNTagManagerWindowController::notesWillBeBrowsed);
    QSignalSpy putBack(m_browser.get(), &SNTagManagerWindowController::notesShouldBePutBack);
    QSignalSpy willClose(m_browser.get(), &QWWindowController::windowWillClose);
    m_browser->showWindow();
    QCOMPARE(browsing.size(), 1);

    // A tag made while the browser is open joins the cloud once the index says so.
    auto late = SNTag::tagWithNameColor(QStringLiteral("#late"), QWColor(0.9, 0.1, 0.1));
    SNTagManager::sharedManager().addTag(late);
    late->addNote(m_notes.constFirst());
    QCOMPARE(m_browser->tagCloudView()->buttonArray().size(), 3);
    m_scheduler->advanceBy(SNTagManager::notificationDelay);
    QCOMPARE(buttonTitles(m_browser->tagCloudView()),
        (QStringList { u"#a"_s, u"#b"_s, u"#c"_s, u"#late"_s }));

    m_browser->close(nullptr);
    // The notes come back at once; the browser goes on the next turn of the event loop.
    QCOMPARE(putBack.size(), 1);
    QVERIFY(m_browser->window()->isVisible());
    waitUntilClosed();
    QCOMPARE(willClose.size(), 1);
    m_browser->close(nullptr);
    QCOMPARE(putBack.size(), 1);
}

void TestSNTagManagerWindowController::clickReplacesAndShiftClickAppends()
{
    open();
    SNTagCloudView *cloud = m_browser->tagCloudView();
    QTest::mouseClick(buttonTitled(cloud, QStringLiteral("#c")), Qt::LeftButton);
    QCOMPARE(field()->text(), QStringLiteral("#c "));
    QCOMPARE(field()->textCursor().position(), 3);

    QTest::mouseClick(buttonTitled(cloud, QStringLiteral("#b")), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(field()->text(), QStringLiteral("#c #b "));
    QCOMPARE(names(m_browser->selectedTags()), (QStringList { u"#c"_s, u"#b"_s }));

    QTest::mouseClick(buttonTitled(cloud, QStringLiteral("#a")), Qt::LeftButton);
    QCOMPARE(field()->text(), QStringLiteral("#a "));
    // Clicking in the cloud keeps the browser open and the typing in the field.
    QVERIFY(m_browser->isOpen());
    QVERIFY(field()->hasFocus());
}

void TestSNTagManagerWindowController::labelShowsWhenTheCloudIsEmpty()
{
    open();
    QTest::keyClicks(field(), QStringLiteral("#a #b #c"));
    QCOMPARE(m_browser->emptyLabel()->text(), QStringLiteral("All notes are currently shown"));
    QVERIFY(m_browser->emptyLabel()->isVisible());
    QVERIFY(!m_browser->scrollView()->isVisible());

    m_browser.reset();
    cleanup();
    open();
    QCOMPARE(m_browser->emptyLabel()->text(),
        QStringLiteral("Add #tags to your #notes by using the #hashtag"));
    QVERIFY(m_browser->emptyLabel()->isVisible());
    QVERIFY(m_browser->tagCloudView()->buttonArray().isEmpty());
}

void TestSNTagManagerWindowController::heightGrowsByLinesUpToTheCap()
{
    open();
    QWidget *browser = m_browser->window();
    const int minimum = browser->minimumHeight();
    QCOMPARE(m_browser->tagCloudView()->height(), 30); // one line
    QCOMPARE(browser->height(), minimum);

    auto addTags = [this](int count) {
        for (int i = 0; i < count; ++i)
            addTag(QStringLiteral("#tag%1").arg(i, 3, 10, QLatin1Char('0')), QWColor::black());
        m_browser->reloadData();
    };
    addTags(12);
    const int cloud = m_browser->tagCloudView()->height();
    QVERIFY(cloud > 30);
    QCOMPARE(browser->height(), cloud - 30 + minimum);

    addTags(200);
    QCOMPARE(browser->height(), SNTagManagerWindowController::maximumContentHeight);
    // Scrolled to the top, and every button still fits across.
    QCOMPARE(m_browser->scrollView()->verticalScrollBar()->value(), 0);
    for (const SNTagButton *button : m_browser->tagCloudView()->buttonArray())
        QVERIFY(button->geometry().right() < m_browser->scrollView()->viewport()->width());
}

void TestSNTagManagerWindowController::escapeClosesOnReleaseAndCancelIsSwallowed()
{
    open();
    QTest::keyClicks(field(), QStringLiteral("#zz"));
    QTest::keyPress(field(), Qt::Key_Escape);
    // The press does nothing: the field keeps its text, the browser stays.
    QCOMPARE(field()->text(), QStringLiteral("#zz"));
    QCoreApplication::processEvents();
    QVERIFY(m_browser->isOpen());

    QTest::keyRelease(field(), Qt::Key_Escape);
    waitUntilClosed();
}

void TestSNTagManagerWindowController::returnAndLosingTheFocusClose()
{
    open();
    QTest::keyClick(field(), Qt::Key_Return);
    waitUntilClosed();

    // Another window of the program taking the focus closes it.
    open();
    QWidget other;
    other.resize(100, 100);
    other.show();
    other.activateWindow();
    waitUntilClosed();
}

QTEST_MAIN(TestSNTagManagerWindowController)
#include "TestSNTagManagerWindowController.moc"
