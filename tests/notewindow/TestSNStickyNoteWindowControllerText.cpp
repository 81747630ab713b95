#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteMenus.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themeview/SNLinkHighlighter.h"

#include <QLabel>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

namespace {

// The underline of the spelling marks drawn over the block, whatever else is drawn there.
int spellingMarks(const QTextBlock &block)
{
    int marks = 0;
    const QList<QTextLayout::FormatRange> ranges = block.layout()->formats();
    for (const QTextLayout::FormatRange &range : ranges) {
        if (range.format.underlineStyle() == QTextCharFormat::SpellCheckUnderline)
            ++marks;
    }
    return marks;
}

} // namespace

// What a note does with its text: tags, title, counter, the tag menu and spelling.
class TestSNStickyNoteWindowControllerText final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void tagsAreReadHalfASecondAfterTheLastKey();
    void tagsNeverTouchTheUndoHistory();
    void clickOnATagOpensTheTagMenuForIt();
    void titleFollowsTheFirstParagraph();
    void counterCountsAndCyclesOnAClick();
    void spellingMarksFollowTheSetting();
    void autoCorrectionIsOneUndoStep();

private:
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNStickyNoteWindowControllerText::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
    defaults.setCheckSpelling(false);
    defaults.setAutoCorrectSpelling(false);
}

void TestSNStickyNoteWindowControllerText::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNStickyNoteWindowControllerText::tagsAreReadHalfASecondAfterTheLastKey()
{
    auto controller = openWithText(QString());
    SNTextView *text = controller->textView();
    const auto &note = controller->note();

    // Typing on, a key every 0.3 s, keeps the scan waiting.
    for (const QString &word : { QStringLiteral("Buy "), QStringLiteral("#milk "),
             QStringLiteral("and "), QStringLiteral("#eggs, "), QStringLiteral("#milk") }) {
        QTest::keyClicks(text, word);
        m_scheduler->advanceBy(0.3);
        QVERIFY(note->tags().isEmpty());
    }
    m_scheduler->advanceBy(SNStickyNoteWindowController::tokenizeDelay - 0.3);
    const QList<std::shared_ptr<SNTag>> tags = note->tags();
    QCOMPARE(tags.size(), 2);
    QCOMPARE(tags.first()->name(), QStringLiteral("#milk"));
    QCOMPARE(tags.last()->name(), QStringLiteral("#eggs"));
    QVERIFY(tags.first()->containsNote(note.get()));
    QCOMPARE(SNTagManager::sharedManager().tagWithName(QStringLiteral("#eggs")), tags.last());

    // The stored text links every occurrence to its tag.
    m_scheduler->advanceBy(1.0);
    const QWAttributedString stored = *note->attributedString();
    for (const int index : { 4, 14, 21 }) {
        QVERIFY(!stored.attributesAtIndex(index).tagName().isEmpty());
        QCOMPARE(stored.attributesAtIndex(index).link(), stored.attributesAtIndex(index).tagName());
    }
    QVERIFY(stored.attributesAtIndex(0).tagName().isEmpty());

    // The letters after "#" deleted: the tag goes at the next scan.
    QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(text, Qt::Key_Backspace);
    QTest::keyClick(text, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(text, Qt::Key_Delete);
    QCOMPARE(text->toPlainText(), QStringLiteral("#milk and #eggs, #"));
    m_scheduler->advanceBy(SNStickyNoteWindowController::tokenizeDelay);
    QCOMPARE(note->tags().size(), 2);
    QTest::keyClick(text, Qt::Key_Delete);
    QTest::keyClicks(text, QStringLiteral(" "));
    m_scheduler->advanceBy(SNStickyNoteWindowController::tokenizeDelay);
    QCOMPARE(note->tags().size(), 1);
    QCOMPARE(note->tags().first()->name(), QStringLiteral("#eggs"));
    m_scheduler->advanceBy(1.0);
    QVERIFY(note->attributedString()->attributesAtIndex(1).link().isEmpty());
}

void TestSNStickyNoteWindowControllerText::tagsNeverTouchTheUndoHistory()
{
    auto controller = openWithText(QStringLiteral("#tea is ready"));
    SNTextView *text = controller->textView();
    QTextDocument *document = text->document();
    // The stored markers are gone from the editor; loading left nothing to undo.
    QVERIFY(!formatAt(*document, 1).isAnchor());
    QCOMPARE(document->availableUndoSteps(), 0);
    QCOMPARE(controller->note()->tags().size(), 1);

    QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(text, QStringLiteral(" #cake"));
    const int steps = document->availableUndoSteps();
    m_scheduler->advanceBy(SNStickyNoteWindowController::tokenizeDelay);
    QCOMPARE(controller->note()->tags().size(), 2);
    QCOMPARE(document->availableUndoSteps(), steps);
    QCOMPARE(text->textCursor().position(), document->characterCount() - 1);

    // One undo takes the typing back, and the tag with it at the next scan.
    text->undo();
    QCOMPARE(text->toPlainText(), QStringLiteral("#tea is ready"));
    QVERIFY(document->isRedoAvailable());
    m_scheduler->advanceBy(SNStickyNoteWindowController::tokenizeDelay);
    QVERIFY(document->isRedoAvailable());
    QCOMPARE(controller->note()->tags().size(), 1);

    // Tags show as links and the pointer turns into a hand over them.
    const QPoint overTag = pointOfCharacter(text, 1);
    QCOMPARE(text->linkAtPosition(overTag), QStringLiteral("#tea"));
    QVERIFY(text->linkAtPosition(pointOfCharacter(text, 6)).isEmpty());
}

void TestSNStickyNoteWindowControllerText::clickOnATagOpensTheTagMenuForIt()
{
    auto controller = openWithText(QStringLiteral("see #work"));
    SNTextView *text = controller->textView();
    QVERIFY(!controller->textViewClickedOnLinkAtIndex(text, QStringLiteral("see"), 1));
    QVERIFY(!controller->menus()->tagsMenu()->isVisible());

    QTest::mouseClick(text->viewport(), Qt::LeftButton, {}, pointOfCharacter(text, 6));
    QTRY_VERIFY(controller->menus()->tagsMenu()->isVisible());
    QCOMPARE(controller->filterTagsMenuItem()->data().toString(), QStringLiteral("#work"));
    controller->menus()->tagsMenu()->hide();
}

void TestSNStickyNoteWindowControllerText::titleFollowsTheFirstParagraph()
{
    const QString fifty = QString(50, QLatin1Char('x'));
    auto controller = openWithText(QStringLiteral("\n  \n") + fifty);
    QCOMPARE(controller->window()->windowTitle(), fifty);
    QCOMPARE(controller->collapsedTitleLabel()->text(), fifty);

    // Every edit retitles at once.
    SNTextView *text = controller->textView();
    QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(text, QStringLiteral("y"));
    QCOMPARE(controller->window()->windowTitle(), fifty + QStringLiteral("..."));
    QCOMPARE(controller->collapsedTitleLabel()->text(), fifty + QStringLiteral("y"));

    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(text, Qt::Key_Delete);
    QCOMPARE(controller->window()->windowTitle(), QStringLiteral("Untitled Sticky Note"));
    QCOMPARE(controller->collapsedTitleLabel()->text(), QStringLiteral("Untitled Sticky Note"));
}

void TestSNStickyNoteWindowControllerText::counterCountsAndCyclesOnAClick()
{
    auto controller = openWithText(QStringLiteral("a"));
    controller->note()->setCountState(2);
    controller->updateWordCount();
    QLabel *counter = controller->wordCountLabel();
    QCOMPARE(counter->text(), QStringLiteral("1 character"));
    QTest::keyClicks(controller->textView(), QStringLiteral("b"));
    QCOMPARE(counter->text(), QStringLiteral("1 character"));
    m_scheduler->advanceBy(SNStickyNoteWindowController::tokenizeDelay);
    QCOMPARE(counter->text(), QStringLiteral("2 characters"));

    // characters -> words -> paragraphs -> characters, each saved.
    QTest::mouseClick(counter, Qt::LeftButton);
    QCOMPARE(counter->text(), QStringLiteral("1 word"));
    QCOMPARE(controller->note()->countState(), 0);
    controller->toggleCount(nullptr);
    QCOMPARE(counter->text(), QStringLiteral("1 paragraph"));
    controller->toggleCount(nullptr);
    QCOMPARE(counter->text(), QStringLiteral("2 characters"));
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    QCOMPARE(archivedValueForKey(plainText(controller->note()), QStringLiteral("countState"))
                 .toInteger(),
        2);
}

void TestSNStickyNoteWindowControllerText::spellingMarksFollowTheSetting()
{
    auto controller = openWithText(QStringLiteral("Ths wrld #tpyo"));
    SNTextView *text = controller->textView();
    const QTextBlock block = text->document()->firstBlock();
    QCOMPARE(spellingMarks(block), 0);

    // The new tag's notice is due; nothing else may be.
    const int scheduled = m_scheduler->scheduledCount();
    SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
    defaults.setCheckSpelling(true);
    QTRY_VERIFY(text->isContinuousSpellCheckingEnabled());
    // Two words; the tag is the user's own name and is never marked.
    QCOMPARE(spellingMarks(block), 2);
    // Marks are drawn, never stored: no format, no undo step, no save.
    QVERIFY(!text->document()->isUndoAvailable());
    QCOMPARE(formatAt(*text->document(), 1).underlineStyle(), QTextCharFormat::NoUnderline);
    QCOMPARE(m_scheduler->scheduledCount(), scheduled);

    // Suggestions open the right-click menu over a misspelt word, and replace it.
    std::unique_ptr<QMenu> owner;
    QMenu *menu = text->menuForPosition(pointOfCharacter(text, 5), owner);
    QAction *world = itemTitled(menu, QStringLiteral("world"));
    QVERIFY(world);
    QVERIFY(titles(menu).contains(QStringLiteral("Ignore Spelling")));
    world->trigger();
    QCOMPARE(text->toPlainText(), QStringLiteral("Ths world #tpyo"));
    QCOMPARE(spellingMarks(text->document()->firstBlock()), 1);

    defaults.setCheckSpelling(false);
    QTRY_VERIFY(!text->isContinuousSpellCheckingEnabled());
    QCOMPARE(spellingMarks(text->document()->firstBlock()), 0);
}

void TestSNStickyNoteWindowControllerText::autoCorrectionIsOneUndoStep()
{
    auto controller = openWithText(QString());
    SNTextView *text = controller->textView();
    QTest::keyClicks(text, QStringLiteral("teh "));
    QCOMPARE(text->toPlainText(), QStringLiteral("teh "));

    SNUserDefaults::standardUserDefaults().setAutoCorrectSpelling(true);
    QTRY_VERIFY(text->isAutomaticSpellingCorrectionEnabled());
    QTest::keyClicks(text, QStringLiteral("teh cat, #teh"));
    QTest::keyClicks(text, QStringLiteral(" "));
    // The finished word is corrected; a tag is left as written.
    QCOMPARE(text->toPlainText(), QStringLiteral("teh the cat, #teh "));
    QTest::keyClicks(text, QStringLiteral("adn."));
    QCOMPARE(text->toPlainText(), QStringLiteral("teh the cat, #teh and."));

    QTest::keyClick(text, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(text->toPlainText(), QStringLiteral("teh the cat, #teh adn."));
    QTest::keyClick(text, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(!text->toPlainText().contains(QStringLiteral("adn")));

    // Nor are the parts of an address, or a change of case only.
    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(text, QStringLiteral("see www.exampel.org now"));
    QCOMPARE(text->toPlainText(), QStringLiteral("see www.exampel.org now"));
}

QTEST_MAIN(TestSNStickyNoteWindowControllerText)
#include "TestSNStickyNoteWindowControllerText.moc"
