#include "kit/QWColor.h"
#include "notes/SNStickyNote.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tagbrowser/SNTagButton.h"
#include "tagbrowser/SNTagCloudView.h"
#include "tagbrowser/SNTagManagerWindowController.h"
#include "tagbrowser/SNTagSearchField.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>

using namespace Qt::Literals::StringLiterals;
using Tags = QList<std::shared_ptr<SNTag>>;

namespace {

QStringList names(const Tags &tags)
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

} // namespace

// The tag browser: what the search field and the cloud pick, what it announces, how it grows,
// when it closes. The notes it shows are TestSNNoteWindowSet's and the integration test's.
class TestSNTagManagerWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // #a red, #b green and #c blue, each on a note of its own.
    void init()
    {
        m_scheduler = std::make_unique<QWManualScheduler>();
        addTag(u"#a"_s, QWColor(0.9, 0.1, 0.1));
        addTag(u"#b"_s, QWColor(0.1, 0.7, 0.2));
        addTag(u"#c"_s, QWColor(0.1, 0.2, 0.9));
    }
    void cleanup()
    {
        m_browser.reset();
        for (const auto &tag : SNTagManager::sharedManager().tags())
            SNTagManager::sharedManager().removeTag(tag);
        m_notes.clear();
        m_scheduler.reset();
    }

    void searchPicksTheTagsOfItsHashtags_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("picked");
        QTest::newRow("two tags") << u"#a #b"_s << QStringList { u"#a"_s, u"#b"_s };
        QTest::newRow("named exactly") << u"#A #nosuch #c"_s << QStringList { u"#c"_s };
        QTest::newRow("twice") << u"#a #b #a"_s << QStringList { u"#a"_s, u"#b"_s, u"#a"_s };
        QTest::newRow("no hashtag") << u"b"_s << QStringList {};
        QTest::newRow("all") << u"#c #b #a"_s << QStringList { u"#c"_s, u"#b"_s, u"#a"_s };
    }

    void searchPicksTheTagsOfItsHashtags()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, picked);
        open();
        QSignalSpy picks(m_browser.get(), &SNTagManagerWindowController::tagsWerePicked);
        QTest::keyClicks(field(), text);

        QCOMPARE(field()->text(), text); // colouring leaves the text and the typing alone
        QCOMPARE(names(m_browser->selectedTags()), picked);
        QCOMPARE(names(picks.constLast().at(0).value<Tags>()), picked);
        QCOMPARE(picks.constLast().at(1).value<QWidget *>(), m_browser->window());
        // Each hashtag in its tag's colour, black where no tag has its exact name.
        for (const SNHashtagScanner::Occurrence &hashtag :
            SNHashtagScanner::occurrencesInString(text)) {
            const auto tag = SNTagManager::sharedManager().tagWithName(hashtag.name);
            QCOMPARE(
                colourAt(int(hashtag.start)), tag ? tag->tagColor().toQColor() : QColor(Qt::black));
        }
        // The cloud offers what is left to pick, sorted.
        QStringList left = { u"#a"_s, u"#b"_s, u"#c"_s };
        for (const QString &name : picked)
            left.removeAll(name);
        QCOMPARE(buttonTitles(m_browser->tagCloudView()), left);
    }

    void openingAndClosingAnnounceTheNotes()
    {
        cleanup(); // no tag yet
        m_scheduler = std::make_unique<QWManualScheduler>();
        m_browser = SNTagManagerWindowController::controller();
        QSignalSpy browsing(m_browser.get(), &SNTagManagerWindowController::notesWillBeBrowsed);
        QSignalSpy putBack(m_browser.get(), &SNTagManagerWindowController::notesShouldBePutBack);
        m_browser->showWindow();
        QCOMPARE(browsing.size(), 1);
        QCOMPARE(m_browser->emptyLabel()->text(), SNTagManagerWindowController::addTagsText());
        QVERIFY(m_browser->emptyLabel()->isVisible());
        // A tag made while the browser is open joins the cloud once the index says so.
        addTag(u"#late"_s, QWColor(0.9, 0.1, 0.1));
        QVERIFY(m_browser->tagCloudView()->buttonArray().isEmpty());
        m_scheduler->advanceBy(SNTagManager::notificationDelay);
        QCOMPARE(buttonTitles(m_browser->tagCloudView()), QStringList { u"#late"_s });
        QVERIFY(!m_browser->emptyLabel()->isVisible());

        m_browser->close(nullptr);
        // The notes come back at once, and once only; the browser goes on the next turn.
        QCOMPARE(putBack.size(), 1);
        QVERIFY(m_browser->window()->isVisible());
        waitUntilClosed();
        m_browser->close(nullptr);
        QCOMPARE(putBack.size(), 1);
    }

    // A click replaces the search, a shift-click appends; the browser stays, typing in the field.
    void clickReplacesAndShiftClickAppends()
    {
        open();
        const auto click = [this](const QString &title, Qt::KeyboardModifiers modifiers = {}) {
            for (SNTagButton *button : m_browser->tagCloudView()->buttonArray()) {
                if (button->text() == title)
                    QTest::mouseClick(button, Qt::LeftButton, modifiers);
            }
        };
        click(u"#c"_s);
        QCOMPARE(field()->text(), u"#c "_s);
        QCOMPARE(field()->textCursor().position(), 3);
        click(u"#b"_s, Qt::ShiftModifier);
        QCOMPARE(field()->text(), u"#c #b "_s);
        QCOMPARE(names(m_browser->selectedTags()), (QStringList { u"#c"_s, u"#b"_s }));
        click(u"#a"_s);
        QCOMPARE(field()->text(), u"#a "_s);
        QVERIFY(m_browser->isOpen() && field()->hasFocus());
    }

    // By lines of the cloud, up to a cap; then the cloud scrolls, each button fitting across.
    void heightGrowsByLinesUpToTheCap()
    {
        open();
        QWidget *browser = m_browser->window();
        const int oneLine = browser->height();
        const auto addTags = [this](int count) {
            for (int i = 0; i < count; ++i)
                addTag(u"#tag%1"_s.arg(i, 3, 10, QLatin1Char('0')), QWColor::black());
            m_browser->reloadData();
        };
        addTags(12);
        QCOMPARE(browser->height() - oneLine,
            m_browser->tagCloudView()->height() - SNTagCloudView::lineHeight);
        QVERIFY(browser->height() > oneLine);
        addTags(200);
        QCOMPARE(browser->height(), SNTagManagerWindowController::maximumContentHeight);
        QCOMPARE(m_browser->scrollView()->verticalScrollBar()->value(), 0);
        for (const SNTagButton *button : m_browser->tagCloudView()->buttonArray())
            QVERIFY(button->geometry().right() < m_browser->scrollView()->viewport()->width());
    }

    // Escape closes on its release, its press changes nothing; another window of the program
    // taking the focus closes it too.
    void escapeAndLosingTheFocusClose()
    {
        open();
        QTest::keyClicks(field(), u"#zz"_s);
        QTest::keyPress(field(), Qt::Key_Escape);
        QCOMPARE(field()->text(), u"#zz"_s);
        QCoreApplication::processEvents();
        QVERIFY(m_browser->isOpen());
        QTest::keyRelease(field(), Qt::Key_Escape);
        waitUntilClosed();

        open();
        QWidget other;
        other.show();
        other.activateWindow();
        waitUntilClosed();
    }

private:
    void addTag(const QString &name, const QWColor &colour)
    {
        auto tag = SNTag::tagWithNameColor(name, colour);
        SNTagManager::sharedManager().addTag(tag);
        m_notes.append(SNStickyNote::note());
        tag->addNote(m_notes.constLast());
    }
    void open()
    {
        m_browser = SNTagManagerWindowController::controller();
        m_browser->showWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_browser->window()));
        QVERIFY(m_browser->isOpen());
    }
    void waitUntilClosed()
    {
        QTRY_VERIFY(!m_browser->window()->isVisible());
        QVERIFY(!m_browser->isOpen());
    }
    SNTagSearchField *field() { return m_browser->searchField(); }
    QColor colourAt(int position)
    {
        QTextCursor cursor(field()->document());
        cursor.setPosition(position + 1);
        return cursor.charFormat().foreground().color();
    }

    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    QList<std::shared_ptr<SNStickyNote>> m_notes;
    std::unique_ptr<SNTagManagerWindowController> m_browser;
};

QTEST_MAIN(TestSNTagManagerWindowController)
#include "TestSNTagManagerWindowController.moc"
