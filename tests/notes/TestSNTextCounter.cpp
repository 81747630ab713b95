#include "notes/SNNoteTitle.h"
#include "notes/SNTextCounter.h"

#include <QTest>
#include <QTextDocument>

// The note's counter and title, both read from its text.
class TestSNTextCounter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsWordsParagraphsAndCharacters_data();
    void countsWordsParagraphsAndCharacters();
    void labelsUseTheSingularOnlyForOne();
    void countStatesCycle();
    void titleIsTheFirstParagraphWithText();
    void longTitlesAreCutAfterFiftyCharacters();
};

void TestSNTextCounter::countsWordsParagraphsAndCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qsizetype>("words");
    QTest::addColumn<qsizetype>("paragraphs");
    QTest::addColumn<qsizetype>("characters");
    QTest::newRow("empty") << QString() << qsizetype(0) << qsizetype(0) << qsizetype(0);
    QTest::newRow("one character")
        << QStringLiteral("a") << qsizetype(1) << qsizetype(1) << qsizetype(1);
    QTest::newRow("punctuation is no word") << QStringLiteral("Buy #milk, now - don't wait!")
                                            << qsizetype(5) << qsizetype(1) << qsizetype(28);
    QTest::newRow("blank paragraphs are not counted")
        << QStringLiteral("one\n\n  \ntwo three\n") << qsizetype(3) << qsizetype(2)
        << qsizetype(14);
    // A letter with its accent and a flag are one character each, as a reader sees them.
    QTest::newRow("combined characters") << (QStringLiteral("e") + QChar(0x0301)
        + QStringLiteral(" ") + QChar(0xD83C) + QChar(0xDDE9) + QChar(0xD83C) + QChar(0xDDEA))
                                         << qsizetype(1) << qsizetype(1) << qsizetype(3);
}

void TestSNTextCounter::countsWordsParagraphsAndCharacters()
{
    QFETCH(QString, text);
    QFETCH(qsizetype, words);
    QFETCH(qsizetype, paragraphs);
    QFETCH(qsizetype, characters);
    QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountWords), words);
    QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountParagraphs), paragraphs);
    QCOMPARE(SNTextCounter::countOfText(text, SNTextCounter::CountCharacters), characters);
    // A state no command makes counts nothing.
    QCOMPARE(SNTextCounter::countOfText(text, 3), qsizetype(0));
    QCOMPARE(SNTextCounter::countOfText(text, -1), qsizetype(0));
}

void TestSNTextCounter::labelsUseTheSingularOnlyForOne()
{
    QCOMPARE(
        SNTextCounter::labelText(1, SNTextCounter::CountCharacters), QStringLiteral("1 character"));
    QCOMPARE(SNTextCounter::labelText(2, SNTextCounter::CountCharacters),
        QStringLiteral("2 characters"));
    QCOMPARE(SNTextCounter::labelText(0, SNTextCounter::CountWords), QStringLiteral("0 words"));
    QCOMPARE(SNTextCounter::labelText(1, SNTextCounter::CountWords), QStringLiteral("1 word"));
    QCOMPARE(SNTextCounter::labelText(12, SNTextCounter::CountParagraphs),
        QStringLiteral("12 paragraphs"));
    QCOMPARE(SNTextCounter::labelText(0, 7), QStringLiteral("0 s"));
}

void TestSNTextCounter::countStatesCycle()
{
    qint64 state = SNTextCounter::CountWords;
    QList<qint64> seen;
    for (int i = 0; i < 4; ++i) {
        state = SNTextCounter::nextCountState(state);
        seen.append(state);
    }
    QCOMPARE(seen,
        QList<qint64>({ SNTextCounter::CountParagraphs, SNTextCounter::CountCharacters,
            SNTextCounter::CountWords, SNTextCounter::CountParagraphs }));
}

void TestSNTextCounter::titleIsTheFirstParagraphWithText()
{
    QTextDocument document(QStringLiteral("\n   \n\t Shopping list  \nmilk"));
    const QString title = SNNoteTitle::titleTextOfDocument(document);
    QCOMPARE(title, QStringLiteral("Shopping list"));
    QCOMPARE(SNNoteTitle::windowTitle(title), title);

    QTextDocument blank(QStringLiteral(" \n\n "));
    QVERIFY(SNNoteTitle::titleTextOfDocument(blank).isEmpty());
    QCOMPARE(SNNoteTitle::windowTitle(QString()), QStringLiteral("Untitled Sticky Note"));
    QCOMPARE(SNNoteTitle::collapsedTitle(QString()), QStringLiteral("Untitled Sticky Note"));
}

void TestSNTextCounter::longTitlesAreCutAfterFiftyCharacters()
{
    const QString fifty = QString(50, QLatin1Char('a'));
    QCOMPARE(SNNoteTitle::windowTitle(fifty), fifty);
    const QString fiftyOne = fifty + QLatin1Char('b');
    QCOMPARE(SNNoteTitle::windowTitle(fiftyOne), fifty + QStringLiteral("..."));
    // The collapsed note shows it whole.
    QCOMPARE(SNNoteTitle::collapsedTitle(fiftyOne), fiftyOne);
    // Never half of a character that takes two code units.
    const QString emoji
        = QString(49, QLatin1Char('a')) + QChar(0xD83D) + QChar(0xDE00) + QStringLiteral("tail");
    QCOMPARE(
        SNNoteTitle::windowTitle(emoji), QString(49, QLatin1Char('a')) + QStringLiteral("..."));
}

QTEST_MAIN(TestSNTextCounter)
#include "TestSNTextCounter.moc"
