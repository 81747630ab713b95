#include "kit/QWTextAttributes.h"
#include "notes/SNStickyNote.h"
#include "notewindow/SNRainbowizer.h"
#include "themeview/SNTextColorPalette.h"

#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

using namespace Qt::StringLiterals;

// Colouring a note's text in a cycle: which stretches count as units, which colours are used,
// what is skipped, and how the colouring sits on the undo stack.
class TestSNRainbowizer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsCycleAfterFiveColoursOfEight();
    void paragraphsAndCharactersAreUnitsToo();
    void blankTextIsLeftAsItIs();
    void unknownCountStateColoursNothing();
    void shortListsNeverReachPastTheirFirstColour();
    void colouringTwiceChangesNothingTheSecondTime();
    void undoWalksBackThroughColoursAndText();
    void theNotePaletteLeavesOutGrayBlackAndWhite();

private:
    static QList<QWColor> eightColors();
    // The colour shown at a position; invalid where none is set.
    static QColor colorAt(const QTextDocument &document, int position);
    static QString textOf(const QTextDocument &document, const SNRainbowizer::Unit &unit);
};

QList<QWColor> TestSNRainbowizer::eightColors()
{
    QList<QWColor> colors;
    for (int i = 1; i <= 8; ++i)
        colors.append(QWColor(i / 10.0, 0.5, 1.0 - i / 10.0));
    return colors;
}

QColor TestSNRainbowizer::colorAt(const QTextDocument &document, int position)
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(position + 1); // the format of the character before the cursor
    const QBrush brush = cursor.charFormat().foreground();
    return brush.style() == Qt::NoBrush ? QColor() : brush.color();
}

QString TestSNRainbowizer::textOf(const QTextDocument &document, const SNRainbowizer::Unit &unit)
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(unit.position);
    cursor.setPosition(unit.position + unit.length, QTextCursor::KeepAnchor);
    return cursor.selectedText();
}

void TestSNRainbowizer::wordsCycleAfterFiveColoursOfEight()
{
    // Punctuation, spaces and a blank line between the words change nothing.
    QTextDocument document(QStringLiteral("one, two  three\n\nfour five! six seven"));
    const QList<QWColor> colors = eightColors();

    const QList<SNRainbowizer::Unit> units
        = SNRainbowizer::unitsOfDocument(document, SNStickyNote::CountWords);
    QStringList words;
    for (const SNRainbowizer::Unit &unit : units)
        words.append(textOf(document, unit));
    QCOMPARE(words,
        QStringList(
            { u"one"_s, u"two"_s, u"three"_s, u"four"_s, u"five"_s, u"six"_s, u"seven"_s }));

    QCOMPARE(SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, colors), 7);
    const QList<int> expected { 0, 1, 2, 3, 4, 0, 1 };
    for (qsizetype i = 0; i < units.size(); ++i) {
        const SNRainbowizer::Unit &unit = units.at(i);
        const QColor color = colors.at(expected.at(i)).toQColor();
        QCOMPARE(colorAt(document, unit.position), color);
        QCOMPARE(colorAt(document, unit.position + unit.length - 1), color);
    }
    // What lies between the words keeps the colour it had: none.
    QVERIFY(!colorAt(document, 3).isValid()); // ","
    QVERIFY(!colorAt(document, 4).isValid()); // " "
}

void TestSNRainbowizer::paragraphsAndCharactersAreUnitsToo()
{
    const QList<QWColor> colors = eightColors();

    // Paragraphs: the blank one in the middle is skipped and takes no colour of the cycle.
    QTextDocument paragraphs(QStringLiteral("first line\n   \nsecond line"));
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(paragraphs, SNStickyNote::CountParagraphs, colors), 2);
    const QTextBlock second = paragraphs.begin().next();
    const QTextBlock third = second.next();
    QCOMPARE(colorAt(paragraphs, 0), colors.at(0).toQColor());
    QCOMPARE(colorAt(paragraphs, 9), colors.at(0).toQColor());
    QVERIFY(!colorAt(paragraphs, second.position()).isValid());
    QCOMPARE(colorAt(paragraphs, third.position()), colors.at(1).toQColor());

    // Characters as the user sees them: an accent typed as its own code point stays with its
    // letter, and spaces are skipped.
    const QString text = QStringLiteral("ae\u0301 b");
    QTextDocument characters(text);
    const QList<SNRainbowizer::Unit> units
        = SNRainbowizer::unitsOfDocument(characters, SNStickyNote::CountCharacters);
    QCOMPARE(units.size(), 4);
    QCOMPARE(units.at(1), (SNRainbowizer::Unit { 1, 2 }));
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(characters, SNStickyNote::CountCharacters, colors), 3);
    QCOMPARE(colorAt(characters, 0), colors.at(0).toQColor());
    QCOMPARE(colorAt(characters, 1), colors.at(1).toQColor());
    QCOMPARE(colorAt(characters, 2), colors.at(1).toQColor());
    QVERIFY(!colorAt(characters, 3).isValid());
    QCOMPARE(colorAt(characters, 4), colors.at(2).toQColor());
}

void TestSNRainbowizer::blankTextIsLeftAsItIs()
{
    for (const qint64 state : { SNStickyNote::CountWords, SNStickyNote::CountParagraphs,
             SNStickyNote::CountCharacters }) {
        QTextDocument document(QStringLiteral("  \n\t \n\n \u00A0 "));
        const QString html = document.toHtml();
        const int undoSteps = document.availableUndoSteps();
        QCOMPARE(SNRainbowizer::rainbowizeDocument(document, state, eightColors()), 0);
        QCOMPARE(document.toHtml(), html);
        QCOMPARE(document.availableUndoSteps(), undoSteps);
    }
    QTextDocument empty;
    QCOMPARE(SNRainbowizer::rainbowizeDocument(empty, SNStickyNote::CountWords, eightColors()), 0);
    QVERIFY(empty.isEmpty());
}

void TestSNRainbowizer::unknownCountStateColoursNothing()
{
    QTextDocument document(QStringLiteral("some words here"));
    for (const qint64 state : { qint64(-1), qint64(3), qint64(1) << 40 }) {
        QVERIFY(SNRainbowizer::unitsOfDocument(document, state).isEmpty());
        QCOMPARE(SNRainbowizer::rainbowizeDocument(document, state, eightColors()), 0);
    }
    QVERIFY(!colorAt(document, 0).isValid());
    // Nor does an empty colour list.
    QCOMPARE(SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, {}), 0);
    QVERIFY(!colorAt(document, 0).isValid());
}

void TestSNRainbowizer::shortListsNeverReachPastTheirFirstColour()
{
    // Three colours or fewer leave no room for a cycle: every word takes the first.
    const QList<QWColor> colors { QWColor(1, 0, 0), QWColor(0, 1, 0), QWColor(0, 0, 1) };
    QTextDocument document(QStringLiteral("a b c"));
    QCOMPARE(SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, colors), 3);
    for (const int position : { 0, 2, 4 })
        QCOMPARE(colorAt(document, position), colors.at(0).toQColor());
}

void TestSNRainbowizer::colouringTwiceChangesNothingTheSecondTime()
{
    QTextDocument document(QStringLiteral("red orange yellow"));
    // Text that had a colour of its own is coloured over.
    QTextCursor cursor(&document);
    cursor.select(QTextCursor::Document);
    QTextCharFormat black;
    black.setForeground(Qt::black);
    cursor.mergeCharFormat(black);

    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, eightColors()), 3);
    QCOMPARE(colorAt(document, 0), eightColors().at(0).toQColor());
    const QString html = document.toHtml();
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, eightColors()), 0);
    QCOMPARE(document.toHtml(), html);
    // One step of its own.
    document.undo();
    QCOMPARE(colorAt(document, 0), QColor(Qt::black));
}

void TestSNRainbowizer::undoWalksBackThroughColoursAndText()
{
    QTextDocument document;
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("alpha"));
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, eightColors()), 1);

    // A new word starts in the colour of the word before it and gets the next one.
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral(" beta"));
    QCOMPARE(colorAt(document, 6), eightColors().at(0).toQColor());
    QCOMPARE(SNRainbowizer::rainbowizeDocument(
                 document, SNStickyNote::CountWords, eightColors(), cursor.position()),
        1);
    QCOMPARE(colorAt(document, 6), eightColors().at(1).toQColor());

    // Each undo is followed by a colouring, as after every change of a note's text; it must not
    // put back what the undo took away, or the next undo would only undo that again. The caret
    // stays where the typing left it.
    QTextCursor caret(&document);
    document.undo(&caret);
    QCOMPARE(caret.position(), 10);
    QCOMPARE(colorAt(document, 6), eightColors().at(0).toQColor());
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, eightColors()), 0);
    QCOMPARE(colorAt(document, 6), eightColors().at(0).toQColor());
    document.undo();
    QCOMPARE(document.toPlainText(), u"alpha"_s);
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, eightColors()), 0);

    document.redo();
    document.redo();
    QVERIFY(!document.isRedoAvailable());
    QCOMPARE(colorAt(document, 6), eightColors().at(1).toQColor());
    QCOMPARE(
        SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, eightColors()), 0);
}

void TestSNRainbowizer::theNotePaletteLeavesOutGrayBlackAndWhite()
{
    const QList<QWColor> &palette = SNTextColorPalette::colorArray();
    QCOMPARE(palette.size(), 9);
    QCOMPARE(SNTextColorPalette::colorNames(),
        QStringList({ u"Red"_s, u"Orange"_s, u"Yellow"_s, u"Green"_s, u"Blue"_s, u"Purple"_s,
            u"Gray"_s, u"Black"_s, u"White"_s }));
    QCOMPARE(palette.at(0), QWColor(1.0, 0.1765, 0.3333));
    QCOMPARE(palette.at(3), QWColor(0.298, 0.851, 0.3922));
    QCOMPARE(palette.at(7), QWColor::black());
    QCOMPARE(palette.at(8), QWColor::white());

    QTextDocument document(QStringLiteral("1 2 3 4 5 6 7 8 9"));
    QCOMPARE(SNRainbowizer::rainbowizeDocument(document, SNStickyNote::CountWords, palette), 9);
    QList<QColor> used;
    for (int word = 0; word < 9; ++word)
        used.append(colorAt(document, 2 * word));
    for (int word = 0; word < 9; ++word)
        QCOMPARE(used.at(word), palette.at(word % 6).toQColor());
    // The exact colour is kept for saving, not only the 16-bit one on screen.
    QTextCursor cursor(&document);
    cursor.setPosition(1);
    QCOMPARE(QWTextAttributes::fromCharFormat(cursor.charFormat()).foregroundColor(),
        std::optional<QWColor>(palette.at(0)));
}

QTEST_MAIN(TestSNRainbowizer)
#include "TestSNRainbowizer.moc"
