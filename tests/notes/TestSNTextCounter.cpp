#include "notes/SNNoteTitle.h"
#include "notes/SNTextCounter.h"

#include <QTest>
#include <QTextDocument>

// The note's counter and title, both read from its text.
class TestSNTextCounter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsWordsParagraphsAndCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<qsizetype>>("counts"); // words, paragraphs, characters
        QTest::newRow("empty") << QString() << QList<qsizetype> { 0, 0, 0 };
        QTest::newRow("one character") << QStringLiteral("a") << QList<qsizetype> { 1, 1, 1 };
        QTest::newRow("punctuation is no word")
            << QStringLiteral("Buy #milk, now - don't wait!") << QList<qsizetype> { 5, 1, 28 };
        QTest::newRow("blank paragraphs are not counted")
            << QStringLiteral("one\n\n  \ntwo three\n") << QList<qsizetype> { 3, 2, 14 };
        // A letter with its accent and a flag are one character each, as a reader sees them.
        QTest::newRow("combined characters")
            << QStringLiteral("e\u0301 \U0001F1E9\U0001F1EA") << QList<qsizetype> { 1, 1, 3 };
    }

    void countsWordsParagraphsAndCharacters()
    {
        QFETCH(QString, text);
        QFETCH(QList<qsizetype>, counts);
        QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountWords), counts[0]);
        QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountParagraphs), counts[1]);
        QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountCharacters), counts[2]);
        // A state no command makes counts nothing.
        QCOMPARE(SNTextCounter::countOfText(text, 3), qsizetype(0));
    }

    void labelsAndStates()
    {
        QCOMPARE(SNTextCounter::labelText(1, SNTextCounter::CountCharacters),
            QStringLiteral("1 character"));
        QCOMPARE(SNTextCounter::labelText(0, SNTextCounter::CountWords), QStringLiteral("0 words"));
        QCOMPARE(SNTextCounter::labelText(12, SNTextCounter::CountParagraphs),
            QStringLiteral("12 paragraphs"));
        // Clicking the counter goes round the three counts.
        qint64 state = SNTextCounter::CountWords;
        for (int click = 0; click < 3; ++click)
            state = SNTextCounter::nextCountState(state);
        QCOMPARE(state, qint64(SNTextCounter::CountWords));
        QCOMPARE(SNTextCounter::nextCountState(state), qint64(SNTextCounter::CountParagraphs));
    }

    void titleIsTheFirstParagraphWithText()
    {
        const QString title = SNNoteTitle::titleTextOfDocument(
            QTextDocument(QStringLiteral("\n   \n\t Shopping list  \nmilk")));
        QCOMPARE(title, QStringLiteral("Shopping list"));
        QCOMPARE(SNNoteTitle::windowTitle(title), title);
        QVERIFY(
            SNNoteTitle::titleTextOfDocument(QTextDocument(QStringLiteral(" \n\n "))).isEmpty());
        QCOMPARE(SNNoteTitle::windowTitle(QString()), QStringLiteral("Untitled Sticky Note"));
        QCOMPARE(SNNoteTitle::collapsedTitle(QString()), QStringLiteral("Untitled Sticky Note"));
    }

    void longTitlesAreCutAfterFiftyCharacters()
    {
        const QString fifty(50, u'a');
        QCOMPARE(SNNoteTitle::windowTitle(fifty), fifty);
        QCOMPARE(SNNoteTitle::windowTitle(fifty + u'b'), fifty + QStringLiteral("..."));
        // The collapsed note shows it whole.
        QCOMPARE(SNNoteTitle::collapsedTitle(fifty + u'b'), fifty + u'b');
        // Never half of a character that takes two code units.
        QCOMPARE(SNNoteTitle::windowTitle(fifty.first(49) + QStringLiteral("\U0001F600tail")),
            fifty.first(49) + QStringLiteral("..."));
    }
};

QTEST_APPLESS_MAIN(TestSNTextCounter)
#include "TestSNTextCounter.moc"
