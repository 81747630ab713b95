#include "notewindow/SNTextView.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>

#include <memory>

namespace {

QTextCharFormat formatAt(QTextEdit &view, int position)
{
    QTextCursor cursor(view.document());
    cursor.setPosition(position + 1);
    return cursor.charFormat();
}

void select(QTextEdit &view, int from, int to)
{
    QTextCursor cursor(view.document());
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    view.setTextCursor(cursor);
}

} // namespace

// The note editor: typing and undoing, the formatting keys, the insertion point and scrolling.
class TestSNTextView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typingUndoAndRedo();
    void formattingKeysToggleTheSelection();
    void formattingKeysSetWhatIsTypedNext();
    void readOnlyTextIgnoresFormattingKeys();
    void pastedTextTakesTheNotesFamilyInOneUndoStep();
    void insertionPointIsDrawnInItsOwnColour();
    void scrollsToTheInsertionPoint();
    void scrollerIsThinAndInItsColourOnceTheTextScrolls();
};

void TestSNTextView::typingUndoAndRedo()
{
    SNTextView view;
    QTest::keyClicks(&view, QStringLiteral("Milk and bread"));
    QCOMPARE(view.toPlainText(), QStringLiteral("Milk and bread"));

    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&view, Qt::Key_Delete);
    QVERIFY(view.toPlainText().isEmpty());
    QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(view.toPlainText(), QStringLiteral("Milk and bread"));
    QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(view.toPlainText().isEmpty());
}

void TestSNTextView::pastedTextTakesTheNotesFamilyInOneUndoStep()
{
    SNTextView view;
    QTest::keyClicks(&view, QStringLiteral("Note: "));
    auto mime = std::make_unique<QMimeData>();
    mime->setHtml(QStringLiteral(
        "<span style=\"font-family:'Courier'; font-size:20pt; font-weight:700\">pasted</span>"));
    mime->setText(QStringLiteral("pasted"));
    // The clipboard owns what it holds.
    QApplication::clipboard()->setMimeData(mime.release(), QClipboard::Clipboard);
    QTest::keyClick(&view, Qt::Key_V, Qt::ControlModifier);
    QApplication::clipboard()->clear();

    QCOMPARE(view.toPlainText(), QStringLiteral("Note: pasted"));
    const QTextCharFormat pasted = formatAt(view, 7);
    QVERIFY(!pasted.hasProperty(QTextFormat::FontFamilies));
    QVERIFY(!pasted.hasProperty(QTextFormat::FontFamily));
    QCOMPARE(pasted.fontWeight(), int(QFont::Bold));
    QCOMPARE(pasted.fontPointSize(), 20.0);
    QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(view.toPlainText(), QStringLiteral("Note: "));
}

void TestSNTextView::formattingKeysToggleTheSelection()
{
    SNTextView view;
    view.setPlainText(QStringLiteral("make this bold"));
    select(view, 10, 14);

    QTest::keyClick(&view, Qt::Key_B, Qt::ControlModifier);
    QCOMPARE(formatAt(view, 10).fontWeight(), int(QFont::Bold));
    QCOMPARE(formatAt(view, 0).fontWeight(), int(QFont::Normal));
    QTest::keyClick(&view, Qt::Key_I, Qt::ControlModifier);
    QVERIFY(formatAt(view, 12).fontItalic());
    QTest::keyClick(&view, Qt::Key_U, Qt::ControlModifier);
    QCOMPARE(formatAt(view, 13).underlineStyle(), QTextCharFormat::SingleUnderline);

    // A second press takes each away again.
    QTest::keyClick(&view, Qt::Key_B, Qt::ControlModifier);
    QTest::keyClick(&view, Qt::Key_I, Qt::ControlModifier);
    QTest::keyClick(&view, Qt::Key_U, Qt::ControlModifier);
    QCOMPARE(formatAt(view, 10).fontWeight(), int(QFont::Normal));
    QVERIFY(!formatAt(view, 12).fontItalic());
    QCOMPARE(formatAt(view, 13).underlineStyle(), QTextCharFormat::NoUnderline);

    // Each change is one step of the undo history.
    QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(formatAt(view, 13).underlineStyle(), QTextCharFormat::SingleUnderline);
    QCOMPARE(formatAt(view, 10).fontWeight(), int(QFont::Normal));
}

void TestSNTextView::formattingKeysSetWhatIsTypedNext()
{
    SNTextView view;
    QTest::keyClicks(&view, QStringLiteral("plain "));
    QTest::keyClick(&view, Qt::Key_B, Qt::ControlModifier);
    QTest::keyClicks(&view, QStringLiteral("bold"));
    QTest::keyClick(&view, Qt::Key_B, Qt::ControlModifier);
    QTest::keyClicks(&view, QStringLiteral(" plain"));

    QCOMPARE(view.toPlainText(), QStringLiteral("plain bold plain"));
    QCOMPARE(formatAt(view, 2).fontWeight(), int(QFont::Normal));
    QCOMPARE(formatAt(view, 7).fontWeight(), int(QFont::Bold));
    QCOMPARE(formatAt(view, 13).fontWeight(), int(QFont::Normal));
}

void TestSNTextView::readOnlyTextIgnoresFormattingKeys()
{
    SNTextView view;
    view.setPlainText(QStringLiteral("collapsed"));
    view.setReadOnly(true);
    select(view, 0, 9);
    QTest::keyClick(&view, Qt::Key_B, Qt::ControlModifier);
    QVERIFY(formatAt(view, 3).fontWeight() != int(QFont::Bold));
}

void TestSNTextView::insertionPointIsDrawnInItsOwnColour()
{
    SNTextView view;
    view.resize(200, 120);
    view.setPlainText(QStringLiteral("caret"));
    QPalette palette = view.palette();
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    view.setPalette(palette);
    view.setInsertionPointColor(QColor(200, 0, 0));
    view.show();
    view.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    view.setFocus();
    QTextCursor cursor(view.document());
    cursor.movePosition(QTextCursor::End);
    view.setTextCursor(cursor);
    QVERIFY(view.isInsertionPointShown());

    const QRect caret = view.cursorRect();
    const QImage image = view.viewport()->grab().toImage();
    const QColor drawn = image.pixelColor(caret.left(), caret.center().y());
    QCOMPARE(drawn, QColor(200, 0, 0));

    // Nothing of the text colour where Qt would have drawn its own caret instead.
    view.clearFocus();
    QVERIFY(!view.isInsertionPointShown());
    const QImage unfocused = view.viewport()->grab().toImage();
    QVERIFY(unfocused.pixelColor(caret.left(), caret.center().y()) != QColor(200, 0, 0));
}

void TestSNTextView::scrollsToTheInsertionPoint()
{
    SNTextView view;
    view.resize(200, 100);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    for (int line = 0; line < 40; ++line) {
        QTest::keyClicks(&view, QStringLiteral("line %1").arg(line));
        QTest::keyClick(&view, Qt::Key_Return);
    }
    QScrollBar *bar = view.verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    const auto insertionPointShows
        = [&] { return view.viewport()->rect().contains(view.cursorRect()); };
    const int atEnd = bar->value();
    QVERIFY(atEnd > 0);
    QVERIFY(insertionPointShows());

    QTest::keyClick(&view, Qt::Key_Home, Qt::ControlModifier);
    QVERIFY(bar->value() < atEnd);
    QVERIFY(insertionPointShows());
    QTest::keyClick(&view, Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(bar->value(), atEnd);
    QVERIFY(insertionPointShows());
}

void TestSNTextView::scrollerIsThinAndInItsColourOnceTheTextScrolls()
{
    SNTextView view;
    view.setScrollerColor(QColor(255, 255, 255, 90));
    view.resize(200, 100);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QScrollBar *bar = view.verticalScrollBar();
    const int usualWidth = bar->sizeHint().width();

    view.setPlainText(QStringLiteral("line\n").repeated(40));
    QTRY_VERIFY(bar->isVisible());
    QVERIFY(bar->sizeHint().width() < usualWidth);
    QVERIFY(bar->styleSheet().contains(QStringLiteral("rgba(255, 255, 255, 90)")));

    // A new theme recolours it.
    view.setScrollerColor(QColor(0, 0, 0, 70));
    QVERIFY(bar->styleSheet().contains(QStringLiteral("rgba(0, 0, 0, 70)")));
    QVERIFY(bar->sizeHint().width() < usualWidth);
}

QTEST_MAIN(TestSNTextView)
#include "TestSNTextView.moc"
