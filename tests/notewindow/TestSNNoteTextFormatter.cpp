#include "SNNoteWindowTestSupport.h"
#include "kit/QWTextAttributes.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNNoteTextFormatter.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNTheme.h"

#include <QClipboard>
#include <QColorDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

// Formatting a note's text: the formatting commands, colours, pasting plain text, the items of
// the right-click menu and the formats typing goes on in.
class TestSNNoteTextFormatter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void emptiedNoteTypesInTheThemeAgain();
    void rightClickMenus();
    void strikethroughAndColourUndo();
    void colourPanelColoursTheSelection();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNNoteTextFormatter::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
    defaults.setCheckSpelling(false);
    defaults.setAutoCorrectSpelling(false);
}

void TestSNNoteTextFormatter::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNNoteTextFormatter::emptiedNoteTypesInTheThemeAgain()
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

void TestSNNoteTextFormatter::rightClickMenus()
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
    QCOMPARE(menu, controller->menus()->tagsMenu());
    QCOMPARE(part<QAction>(*controller, "filterTagsMenuItem")->data().toString(),
        QStringLiteral("#milk"));

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
    QVERIFY(menu != controller->menus()->tagsMenu());
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
    controller->textFormatter()->pastePlainText(nullptr);
    QCOMPARE(text->toPlainText(), QStringLiteral("strong #milk now"));
    QVERIFY(formatAt(*text->document(), 1).fontWeight() < QFont::DemiBold);
}

void TestSNNoteTextFormatter::strikethroughAndColourUndo()
{
    auto controller = openWithText(QStringLiteral("strike this"));
    SNNoteTextFormatter &formatter = *controller->textFormatter();
    SNTextView *text = controller->textView();
    QTextDocument *document = text->document();
    select(text, 0, 6);

    formatter.toggleStrikethrough(nullptr);
    QVERIFY(formatAt(*document, 2).fontStrikeOut());
    QVERIFY(!formatAt(*document, 8).fontStrikeOut());
    QCOMPARE(text->undoActionName(), QStringLiteral("Strikethrough"));
    // Read from the text again: the second toggle takes it off.
    formatter.toggleStrikethrough(nullptr);
    QVERIFY(!formatAt(*document, 2).fontStrikeOut());
    text->undo();
    QVERIFY(formatAt(*document, 2).fontStrikeOut());
    text->undo();
    QVERIFY(!formatAt(*document, 2).fontStrikeOut());
    QCOMPARE(QWTextAttributes::fromCharFormat(formatAt(*document, 2)).strikethroughStyle(), 0);

    // An invalid range and a missing colour change nothing.
    formatter.strikethroughWithRange(false, {});
    formatter.changeColorWithRange(std::nullopt, { 0, 6 });
    QVERIFY(!document->isUndoAvailable());

    // Blue, then red from the menu; one undo brings blue back.
    const QWColor blue(0.0, 0.4784, 1.0);
    formatter.changeColorWithRange(blue, { 0, 6 });
    QAction red(QStringLiteral("Red"));
    red.setData(QColor::fromRgbF(1.0f, 0.1765f, 0.3333f));
    select(text, 0, 6);
    formatter.changeColorFromMenuItem(&red);
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

void TestSNNoteTextFormatter::colourPanelColoursTheSelection()
{
    auto controller = openWithText(QStringLiteral("paint me"));
    SNNoteTextFormatter &formatter = *controller->textFormatter();
    SNTextView *text = controller->textView();
    select(text, 0, 5);
    formatter.orderFrontColorPanel(nullptr);
    QColorDialog *panel = formatter.colorPanel();
    QVERIFY(panel);
    QVERIFY(panel->isVisible());
    // The selection of the moment the panel opened is coloured, whatever is selected later.
    select(text, 6, 8);
    panel->setCurrentColor(QColor(10, 200, 30));
    panel->accept();
    QCOMPARE(formatAt(*text->document(), 1).foreground().color(), QColor(10, 200, 30));
    QVERIFY(!formatAt(*text->document(), 7).hasProperty(QTextFormat::ForegroundBrush));
}

QTEST_MAIN(TestSNNoteTextFormatter)
#include "TestSNNoteTextFormatter.moc"
