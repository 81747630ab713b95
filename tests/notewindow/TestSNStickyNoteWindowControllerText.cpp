#include "SNNoteWindowTestSupport.h"
#include "kit/QWTextAttributes.h"
#include "notewindow/SNTextView.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNTheme.h"
#include "themeview/SNLinkHighlighter.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QColorDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>

namespace {

QStringList titles(const QMenu *menu)
{
    QStringList result;
    const QList<QAction *> items = menu->actions();
    for (const QAction *item : items) {
        QString title = item->isSeparator() ? QStringLiteral("-") : item->text();
        title = title.left(title.indexOf(QLatin1Char('\t')));
        result.append(title.remove(QLatin1Char('&')));
    }
    return result;
}

QAction *itemTitled(const QMenu *menu, const QString &title)
{
    const QList<QAction *> items = menu->actions();
    for (QAction *item : items) {
        if (item->text() == title)
            return item;
    }
    return nullptr;
}

void select(SNTextView *view, int start, int end)
{
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
}

// A point of the viewport over the character at the index.
QPoint pointOfCharacter(SNTextView *view, int index)
{
    QTextCursor cursor(view->document());
    cursor.setPosition(index);
    const QRect before = view->cursorRect(cursor);
    return before.center() + QPoint(3, 0);
}

QTextCharFormat formatAt(const QTextDocument &document, int index)
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(index + 1);
    return cursor.charFormat();
}

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

// What a note does with its text: tags, title, counter, formatting, the right-click menu,
// typing formats and spelling.
class TestSNStickyNoteWindowControllerText final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void tagsAreReadHalfASecondAfterTheLastKey();
    void tagsNeverTouchTheUndoHistory();
    void emptiedNoteTypesInTheThemeAgain();
    void rightClickMenus();
    void clickOnATagOpensTheTagMenuForIt();
    void titleFollowsTheFirstParagraph();
    void counterCountsAndCyclesOnAClick();
    void strikethroughAndColourUndo();
    void colourPanelColoursTheSelection();
    void spellingMarksFollowTheSetting();
    void autoCorrectionIsOneUndoStep();

private:
    std::unique_ptr<SNStickyNoteWindowController> openWithText(const QString &text);

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

std::unique_ptr<SNStickyNoteWindowController> TestSNStickyNoteWindowControllerText::openWithText(
    const QString &text)
{
    auto note = text.isEmpty() ? SNStickyNote::note() : noteWithText(text);
    SNStickyNoteManager::sharedManager().addNote(note);
    return openNote(note);
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

void TestSNStickyNoteWindowControllerText::emptiedNoteTypesInTheThemeAgain()
{
    auto controller = openWithText(QString());
    SNTextView *text = controller->textView();
    const std::shared_ptr<SNTheme> theme = controller->note()->theme();
    QTest::keyClicks(text, QStringLiteral("loud"));
    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTextCharFormat redBold;
    redBold.setForeground(QColor(Qt::red));
    redBold.setFontWeight(QFont::Bold);
    text->mergeCurrentCharFormat(redBold);
    QVERIFY(formatAt(*text->document(), 0).fontWeight() >= QFont::Bold);

    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(text, Qt::Key_Delete);
    QTest::keyClicks(text, QStringLiteral("calm"));
    controller->flushNote();
    const QWTextAttributes typed = controller->note()->attributedString()->attributesAtIndex(0);
    QVERIFY(!typed.isBold());
    QCOMPARE(typed.foregroundColor(), std::optional<QWColor>(theme->defaultFontColor()));
    QCOMPARE(typed.fontFamily(), theme->defaultFont().family());

    // Typing right after a link does not run on into it.
    auto linked = openWithText(QString());
    SNTextView *other = linked->textView();
    QTextCharFormat link;
    link.setAnchor(true);
    link.setAnchorHref(QStringLiteral("https://example.org"));
    other->textCursor().insertText(QStringLiteral("site"), link);
    QTest::keyClick(other, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(other, QStringLiteral("s"));
    QVERIFY(formatAt(*other->document(), 3).isAnchor());
    QVERIFY(!formatAt(*other->document(), 4).isAnchor());
}

void TestSNStickyNoteWindowControllerText::rightClickMenus()
{
    auto controller = openWithText(QStringLiteral("Buy #milk now"));
    SNTextView *text = controller->textView();

    // An empty caret: the editor's own menu, "Paste Plain Text" right after "Paste", and like
    // it only when there is something to paste.
    QGuiApplication::clipboard()->clear();
    select(text, 2, 2);
    std::unique_ptr<QMenu> owner;
    QMenu *menu = text->menuForPosition(pointOfCharacter(text, 1), owner);
    QCOMPARE(menu, owner.get());
    QStringList items = titles(menu);
    const qsizetype paste = items.indexOf(QStringLiteral("Paste"));
    QVERIFY(paste >= 0);
    QCOMPARE(items.value(paste + 1), QStringLiteral("Paste Plain Text"));
    QVERIFY(!itemTitled(menu, QStringLiteral("Paste Plain Text"))->isEnabled());
    QVERIFY(!items.contains(QStringLiteral("Colors")));

    // Over a tag with a selection: the note's tag menu, for that tag.
    select(text, 0, 3);
    menu = text->menuForPosition(pointOfCharacter(text, 6), owner);
    QCOMPARE(menu, controller->tagsMenu());
    QCOMPARE(controller->filterTagsMenuItem()->data().toString(), QStringLiteral("#milk"));

    // Over bold text with a selection: colours and formatting first, with their states.
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    QTextCursor(text->document()).movePosition(QTextCursor::Start);
    QTextCursor boldCursor(text->document());
    boldCursor.setPosition(0);
    boldCursor.setPosition(3, QTextCursor::KeepAnchor);
    boldCursor.mergeCharFormat(bold);
    menu = text->menuForPosition(pointOfCharacter(text, 1), owner);
    QVERIFY(menu != owner.get());
    QVERIFY(menu != controller->tagsMenu());
    items = titles(menu);
    QCOMPARE(items.mid(0, 7),
        QStringList({ QStringLiteral("Colors"), QStringLiteral("-"), QStringLiteral("Bold"),
            QStringLiteral("Italic"), QStringLiteral("Underline"), QStringLiteral("Strikethrough"),
            QStringLiteral("-") }));
    QVERIFY(itemTitled(menu, QStringLiteral("Bold"))->isChecked());
    QVERIFY(!itemTitled(menu, QStringLiteral("Italic"))->isChecked());
    QCOMPARE(items.value(items.indexOf(QStringLiteral("Paste")) + 1),
        QStringLiteral("Paste Plain Text"));
    QVERIFY(owner->actions().isEmpty());

    const QMenu *colors = menu->actions().first()->menu();
    QVERIFY(colors);
    QCOMPARE(titles(colors),
        QStringList({ QStringLiteral("Red"), QStringLiteral("Orange"), QStringLiteral("Yellow"),
            QStringLiteral("Green"), QStringLiteral("Blue"), QStringLiteral("Purple"),
            QStringLiteral("Gray"), QStringLiteral("Black"), QStringLiteral("White"),
            QStringLiteral("-"), QStringLiteral("Show Colors") }));
    QVERIFY(!colors->actions().first()->icon().isNull());

    // The checked Bold item takes bold away; its state is what it showed.
    itemTitled(menu, QStringLiteral("Bold"))->trigger();
    QVERIFY(formatAt(*text->document(), 1).fontWeight() < QFont::DemiBold);

    // "Paste Plain Text" drops the clipboard's formats.
    auto *mime = new QMimeData;
    mime->setHtml(QStringLiteral("<b>strong</b>"));
    mime->setText(QStringLiteral("strong"));
    QGuiApplication::clipboard()->setMimeData(mime);
    select(text, 0, 3);
    menu = text->menuForPosition(pointOfCharacter(text, 1), owner);
    QVERIFY(itemTitled(menu, QStringLiteral("Paste Plain Text"))->isEnabled());
    controller->pastePlainText(nullptr);
    QCOMPARE(text->toPlainText(), QStringLiteral("strong #milk now"));
    QVERIFY(formatAt(*text->document(), 1).fontWeight() < QFont::DemiBold);
}

void TestSNStickyNoteWindowControllerText::clickOnATagOpensTheTagMenuForIt()
{
    auto controller = openWithText(QStringLiteral("see #work"));
    SNTextView *text = controller->textView();
    QVERIFY(!controller->textViewClickedOnLinkAtIndex(text, QStringLiteral("see"), 1));
    QVERIFY(!controller->tagsMenu()->isVisible());

    QTest::mouseClick(text->viewport(), Qt::LeftButton, {}, pointOfCharacter(text, 6));
    QTRY_VERIFY(controller->tagsMenu()->isVisible());
    QCOMPARE(controller->filterTagsMenuItem()->data().toString(), QStringLiteral("#work"));
    controller->tagsMenu()->hide();
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

void TestSNStickyNoteWindowControllerText::strikethroughAndColourUndo()
{
    auto controller = openWithText(QStringLiteral("strike this"));
    SNTextView *text = controller->textView();
    QTextDocument *document = text->document();
    select(text, 0, 6);

    controller->toggleStrikethrough(nullptr);
    QVERIFY(formatAt(*document, 2).fontStrikeOut());
    QVERIFY(!formatAt(*document, 8).fontStrikeOut());
    QCOMPARE(text->undoActionName(), QStringLiteral("Strikethrough"));
    // Read from the text again: the second toggle takes it off.
    controller->toggleStrikethrough(nullptr);
    QVERIFY(!formatAt(*document, 2).fontStrikeOut());
    text->undo();
    QVERIFY(formatAt(*document, 2).fontStrikeOut());
    text->undo();
    QVERIFY(!formatAt(*document, 2).fontStrikeOut());
    QCOMPARE(QWTextAttributes::fromCharFormat(formatAt(*document, 2)).strikethroughStyle(), 0);

    // An invalid range and a missing colour change nothing.
    controller->strikethroughWithRange(false, {});
    controller->changeColorWithRange(std::nullopt, { 0, 6 });
    QVERIFY(!document->isUndoAvailable());

    // Blue, then red from the menu; one undo brings blue back.
    const QWColor blue(0.0, 0.4784, 1.0);
    controller->changeColorWithRange(blue, { 0, 6 });
    QAction red(QStringLiteral("Red"));
    red.setData(QColor::fromRgbF(1.0f, 0.1765f, 0.3333f));
    select(text, 0, 6);
    controller->changeColorFromMenuItem(&red);
    QCOMPARE(text->undoActionName(), QStringLiteral("Change Color"));
    QCOMPARE(formatAt(*document, 0).foreground().color(), red.data().value<QColor>());
    text->undo();
    QCOMPARE(formatAt(*document, 0).foreground().color(), blue.toQColor());
    QVERIFY(!formatAt(*document, 8).hasProperty(QTextFormat::ForegroundBrush));

    // The Undo item says what it undoes.
    std::unique_ptr<QMenu> owner;
    select(text, 3, 3);
    text->menuForPosition(pointOfCharacter(text, 1), owner);
    QVERIFY(titles(owner.get()).contains(QStringLiteral("Undo Change Color")));
}

void TestSNStickyNoteWindowControllerText::colourPanelColoursTheSelection()
{
    auto controller = openWithText(QStringLiteral("paint me"));
    SNTextView *text = controller->textView();
    select(text, 0, 5);
    controller->orderFrontColorPanel(nullptr);
    QColorDialog *panel = controller->colorPanel();
    QVERIFY(panel);
    QVERIFY(panel->isVisible());
    // The selection of the moment the panel opened is coloured, whatever is selected later.
    select(text, 6, 8);
    panel->setCurrentColor(QColor(10, 200, 30));
    panel->accept();
    QCOMPARE(formatAt(*text->document(), 1).foreground().color(), QColor(10, 200, 30));
    QVERIFY(!formatAt(*text->document(), 7).hasProperty(QTextFormat::ForegroundBrush));
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
