#include "notes/SNNoteTitle.h"
#include "notes/SNTextCounter.h"

#include <QTest>
#include <QTextDocument>

using namespace Qt::Literals::StringLiterals;

// The note's counter and title, both read from its text.
class TestSNTextCounter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsWordsParagraphsAndCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("labels"); // words, paragraphs, characters
        QTest::newRow("empty") << QString() << u"0 words, 0 paragraphs, 0 characters"_s;
        QTest::newRow("one character") << u"a"_s << u"1 word, 1 paragraph, 1 character"_s;
        QTest::newRow("punctuation is no word")
            << u"Buy #milk, now - don't wait!"_s << u"5 words, 1 paragraph, 28 characters"_s;
        QTest::newRow("blank paragraphs are not counted")
            << u"one\n\n  \ntwo three\n"_s << u"3 words, 2 paragraphs, 14 characters"_s;
        // A letter with its accent and a flag are one character each, as a reader sees them.
        QTest::newRow("combined characters")
            << u"e\u0301 \U0001F1E9\U0001F1EA"_s << u"1 word, 1 paragraph, 3 characters"_s;
    }

    // Clicking the counter goes round the three counts, each with its label.
    void countsWordsParagraphsAndCharacters()
    {
        QFETCH(QString, text);
        QFETCH(QString, labels);
        QStringList counted;
        qint64 state = SNTextCounter::CountWords;
        do {
            counted.append(
                SNTextCounter::labelText(SNTextCounter::countOfText(text, state), state));
            state = SNTextCounter::nextCountState(state);
        } while (state != SNTextCounter::CountWords && counted.size() < 4);
        QCOMPARE(counted.join(u", "), labels);
        // A state no command makes counts nothing.
        QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountStateCount), qsizetype(0));
    }

    void titleIsTheFirstParagraphWithText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("windowTitle");
        QTest::addColumn<QString>("collapsedTitle");
        const QString fifty(50, u'a');
        QTest::newRow("first paragraph with text")
            << u"\n   \n\t Shopping list  \nmilk"_s << u"Shopping list"_s << u"Shopping list"_s;
        QTest::newRow("blank") << u" \n\n "_s << u"Untitled Sticky Note"_s
                               << u"Untitled Sticky Note"_s;
        QTest::newRow("fifty characters") << fifty << fifty << fifty;
        // The collapsed note shows a long title whole.
        QTest::newRow("fifty-one characters") << fifty + u'b' << fifty + u"..."_s << fifty + u'b';
        // Never half of a character that takes two code units.
        QTest::newRow("cut before a surrogate pair")
            << fifty.first(49) + u"\U0001F600tail"_s << fifty.first(49) + u"..."_s
            << fifty.first(49) + u"\U0001F600tail"_s;
    }

    void titleIsTheFirstParagraphWithText()
    {
        QFETCH(QString, text);
        QFETCH(QString, windowTitle);
        QFETCH(QString, collapsedTitle);
        const QString title = SNNoteTitle::titleTextOfDocument(QTextDocument(text));
        QCOMPARE(SNNoteTitle::titleTextOfString(text), title);
        QCOMPARE(SNNoteTitle::windowTitle(title), windowTitle);
        QCOMPARE(SNNoteTitle::collapsedTitle(title), collapsedTitle);
    }
};

QTEST_APPLESS_MAIN(TestSNTextCounter)
#include "TestSNTextCounter.moc"
