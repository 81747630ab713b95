#include "SNNoteWindowTestSupport.h"
#include "kit/QWTextAttributes.h"
#include "notewindow/SNRainbowizer.h"
#include "themeview/SNTextColorPalette.h"

using namespace Qt::StringLiterals;

namespace {

QList<QWColor> someColors(int count)
{
    QList<QWColor> colors;
    for (int i = 1; i <= count; ++i)
        colors.append(QWColor(i / 10.0, 0.5, 1.0 - i / 10.0));
    return colors;
}

// One character per character of the text: the index of its colour in the list, or "." for
// none and for a line end.
QString colorMask(QTextDocument &document, const QList<QWColor> &colors)
{
    QString mask;
    for (int position = 0; position < document.characterCount() - 1; ++position) {
        const QBrush brush = document.characterAt(position) == QChar::ParagraphSeparator
            ? QBrush()
            : formatAt(document, position).foreground();
        qsizetype index = -1;
        for (qsizetype i = 0; brush.style() != Qt::NoBrush && i < colors.size() && index < 0; ++i)
            index = colors[i].toQColor() == brush.color() ? i : -1;
        mask.append(index < 0 ? u'.' : char16_t(u'0' + index));
    }
    return mask;
}

} // namespace

// Colouring a note's text in a cycle: the units of each count, the colours used, what is
// skipped, and how the colouring sits on the undo stack. That an undo is not coloured again, and
// where the caret stays after it, is the hidden key sequence's test, through a note.
class TestSNRainbowizer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colouring_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("countState");
        QTest::addColumn<QList<QWColor>>("colors");
        QTest::addColumn<QString>("mask");
        const qint64 words = SNStickyNote::CountWords;
        const QList<QWColor> eight = someColors(8);
        // The last three colours are left out: a word of its own for each of the other five.
        QTest::newRow("words") << u"one, two  three\n\nfour five! six seven"_s << words << eight
                               << u"000..111..22222..3333.4444..000.11111"_s;
        QTest::newRow("paragraphs")
            << u"first line\n   \nsecond"_s << qint64(SNStickyNote::CountParagraphs) << eight
            << u"0000000000.....111111"_s;
        // As the user sees them: an accent typed as its own code point stays with its letter.
        QTest::newRow("characters")
            << u"ae\u0301 b"_s << qint64(SNStickyNote::CountCharacters) << eight << u"011.2"_s;
        QTest::newRow("blank") << u"  \n\t \n\n \u00A0 "_s << words << eight << u".........."_s;
        QTest::newRow("unknown count") << u"some words"_s << qint64(3) << eight << u".........."_s;
        QTest::newRow("no colours")
            << u"some words"_s << words << QList<QWColor>() << u".........."_s;
        QTest::newRow("three colours") << u"a b c"_s << words << someColors(3) << u"0.0.0"_s;
        // Gray, Black and White are no colours of a rainbow.
        QTest::newRow("note palette") << u"1 2 3 4 5 6 7 8 9"_s << words
                                      << SNTextColorPalette::colorArray() << u"0.1.2.3.4.5.0.1.2"_s;
    }

    void colouring()
    {
        QFETCH(QString, text);
        QFETCH(qint64, countState);
        QFETCH(QList<QWColor>, colors);
        QFETCH(QString, mask);
        QTextDocument document(text);
        // Text with a colour of its own is coloured over.
        QTextCursor all(&document);
        all.select(QTextCursor::Document);
        QTextCharFormat own;
        own.setForeground(QColor(1, 2, 3));
        all.mergeCharFormat(own);

        const int coloured = SNRainbowizer::rainbowizeDocument(document, countState, colors);

        QCOMPARE(colorMask(document, colors), mask);
        QCOMPARE(coloured > 0, mask.contains(u'0'));
        // Colouring again changes nothing.
        const QString html = document.toHtml();
        QCOMPARE(SNRainbowizer::rainbowizeDocument(document, countState, colors), 0);
        QCOMPARE(document.toHtml(), html);
        if (coloured == 0)
            return;
        // The exact colour is kept for saving, not only the 16-bit one on screen.
        QCOMPARE(QWTextAttributes::fromCharFormat(formatAt(document, int(mask.indexOf(u'0'))))
                     .foregroundColor(),
            std::optional<QWColor>(colors.first()));
        // One undo step takes it all away.
        document.undo();
        QCOMPARE(formatAt(document, 0).foreground().color(), QColor(1, 2, 3));
        QCOMPARE(colorMask(document, colors), QString(mask.size(), u'.'));
    }
};

QTEST_MAIN(TestSNRainbowizer)
#include "TestSNRainbowizer.moc"
