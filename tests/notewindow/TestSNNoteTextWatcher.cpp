#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteTextWatcher.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTextBlock>
#include <QTextLayout>

using namespace Qt::StringLiterals;

namespace {

// The spelling marks drawn over the block, whatever else is drawn there.
int spellingMarks(const QTextBlock &block)
{
    int marks = 0;
    const QList<QTextLayout::FormatRange> ranges = block.layout()->formats();
    for (const QTextLayout::FormatRange &range : ranges)
        marks += range.format.underlineStyle() == QTextCharFormat::SpellCheckUnderline ? 1 : 0;
    return marks;
}

} // namespace

// What follows a note's text: its tags and spelling. How the text is counted and titled is
// TestSNTextCounter's.
class TestSNNoteTextWatcher final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void tagsFollowTheWordsOutsideTheUndoHistory()
    {
        // Stored with the markers of its tags, as a save leaves it.
        auto stored = SNStickyNote::note();
        stored->setAttributedString(SNHashtagScanner::taggedString(QWAttributedString(u"#tea"_s)));
        SNStickyNoteManager::sharedManager().addNote(stored);
        auto controller = openNote(stored);
        SNTextView *text = controller->textView();
        QTextDocument *document = text->document();
        const std::shared_ptr<SNStickyNote> &note = controller->note();
        // The stored markers are gone from the editor; loading left nothing to undo.
        QVERIFY(!formatAt(*document, 1).isAnchor());
        QCOMPARE(document->availableUndoSteps(), 0);
        QCOMPARE(note->tags().size(), 1);
        QCOMPARE(text->linkAtPosition(pointOfCharacter(text, 1)), u"#tea"_s);

        // Typing on, a key every 0.3 s, keeps the scan waiting.
        QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
        for (const QString &word : { u" #milk"_s, u" and"_s, u" #eggs,"_s, u" #milk"_s }) {
            QTest::keyClicks(text, word);
            f.scheduler->advanceBy(0.3);
            QCOMPARE(note->tags().size(), 1);
        }
        const int steps = document->availableUndoSteps();
        f.scheduler->advanceBy(SNNoteTextWatcher::tokenizeDelay - 0.3);
        QCOMPARE(note->tags().size(), 3);
        QCOMPARE(note->tags().at(1)->name(), u"#milk"_s);
        QVERIFY(note->tags().at(1)->containsNote(note.get()));
        QCOMPARE(SNTagManager::sharedManager().tagWithName(u"#eggs"_s), note->tags().last());
        // Read from the words, never written into them: no undo step, the caret where it was.
        QCOMPARE(document->availableUndoSteps(), steps);
        QCOMPARE(text->textCursor().position(), document->characterCount() - 1);
        // Only the stored text marks them.
        f.scheduler->advanceBy(1.0);
        QCOMPARE(note->attributedString()->attributesAtIndex(16).link(), u"#eggs"_s);

        // One undo takes the typing back, and its tags with it at the next scan.
        text->undo();
        QCOMPARE(text->toPlainText(), u"#tea"_s);
        f.scheduler->advanceBy(SNNoteTextWatcher::tokenizeDelay);
        QVERIFY(document->isRedoAvailable());
        QCOMPARE(note->tags().size(), 1);
    }

    void spellingMarksAreDrawnNeverStored()
    {
        auto controller = openWithText(u"Ths wrld #tpyo"_s);
        SNTextView *text = controller->textView();
        QCOMPARE(spellingMarks(text->document()->firstBlock()), 0);
        const int scheduled = f.scheduler->scheduledCount();

        SNUserDefaults::standardUserDefaults().setCheckSpelling(true);
        QTRY_VERIFY(text->isContinuousSpellCheckingEnabled());
        // Two words; the tag is the user's own name and is never marked.
        QCOMPARE(spellingMarks(text->document()->firstBlock()), 2);
        // Marks are drawn, never stored: no format, no undo step, no save.
        QVERIFY(!text->document()->isUndoAvailable());
        QCOMPARE(formatAt(*text->document(), 1).underlineStyle(), QTextCharFormat::NoUnderline);
        QCOMPARE(f.scheduler->scheduledCount(), scheduled);
    }

    void autoCorrectionIsOneUndoStep()
    {
        auto controller = openWithText(QString());
        SNTextView *text = controller->textView();
        QTest::keyClicks(text, u"teh "_s);
        QCOMPARE(text->toPlainText(), u"teh "_s);

        SNUserDefaults::standardUserDefaults().setAutoCorrectSpelling(true);
        QTRY_VERIFY(text->isAutomaticSpellingCorrectionEnabled());
        // What was typed before is left as it is; the finished word is corrected; a tag is left as
        // written.
        QTest::keyClicks(text, u"teh cat, #teh "_s);
        QCOMPARE(text->toPlainText(), u"teh the cat, #teh "_s);
        QTest::keyClicks(text, u"adn."_s);
        QCOMPARE(text->toPlainText(), u"teh the cat, #teh and."_s);
        QTest::keyClick(text, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(text->toPlainText(), u"teh the cat, #teh adn."_s);

        // Nor are the parts of an address.
        QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(text, u"see www.exampel.org now"_s);
        QCOMPARE(text->toPlainText(), u"see www.exampel.org now"_s);
    }

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNNoteTextWatcher)
#include "TestSNNoteTextWatcher.moc"
