#include "kit/QWSpellChecker.h"
#include "support/QWTestEnvironment.h"

#include <QTest>

// Spelling against the system's American English dictionary, which the build installs.
class TestQWSpellChecker final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void marksOnlyMisspeltWords();
    void suggestsAndCorrects();
    void ignoredAndLearntWordsPass();
    void missingDictionaryMarksNothing();

private:
    // Before any checker: the personal word list lives in a fresh folder each run.
    QWTestEnvironment m_environment;
};

void TestQWSpellChecker::marksOnlyMisspeltWords()
{
    QWSpellChecker checker(QStringLiteral("en_US"));
    QVERIFY(checker.isAvailable());
    QCOMPARE(checker.language(), QStringLiteral("en_US"));

    const QString text = QStringLiteral("Ths is \"wrld\", don't 2nd x qqq7 cafe.");
    const QList<QWSpellChecker::Range> ranges = checker.misspelledRangesInString(text);
    // Quotes are not part of the word; digits and single letters are never marked.
    const QList<QWSpellChecker::Range> expected = { { 0, 3 }, { 8, 4 } };
    QCOMPARE(ranges, expected);
    QVERIFY(checker.isWordMisspelled(u"wrld"));
    QVERIFY(!checker.isWordMisspelled(u"world"));
    // The program's own name and the keys its notes talk about.
    QVERIFY(!checker.isWordMisspelled(u"Vellumo"));
    QVERIFY(!checker.isWordMisspelled(u"Ctrl"));
    QVERIFY(checker.misspelledRangesInString(u"").isEmpty());
}

void TestQWSpellChecker::suggestsAndCorrects()
{
    QWSpellChecker checker(QStringLiteral("en_US"));
    QVERIFY(checker.guessesForWord(u"wrld").contains(QStringLiteral("world")));
    QCOMPARE(checker.correctionForWord(u"teh"), std::optional<QString>(QStringLiteral("the")));
    // A correct word is never replaced.
    QCOMPARE(checker.correctionForWord(u"the"), std::nullopt);
}

void TestQWSpellChecker::ignoredAndLearntWordsPass()
{
    QWSpellChecker checker(QStringLiteral("en_US"));
    QVERIFY(checker.isWordMisspelled(u"vellumoish"));
    checker.ignoreWord(QStringLiteral("vellumoish"));
    QVERIFY(!checker.isWordMisspelled(u"vellumoish"));

    // Learnt words go to the personal list in this test's own configuration folder.
    QVERIFY(checker.isWordMisspelled(u"notewise"));
    checker.learnWord(QStringLiteral("notewise"));
    QVERIFY(!checker.isWordMisspelled(u"notewise"));
    QWSpellChecker another(QStringLiteral("en_US"));
    QVERIFY(!another.isWordMisspelled(u"notewise"));
}

void TestQWSpellChecker::missingDictionaryMarksNothing()
{
    QWSpellChecker checker(QStringLiteral("xx_XX"));
    QVERIFY(!checker.isAvailable());
    QVERIFY(checker.language().isEmpty());
    QVERIFY(!checker.isWordMisspelled(u"wrld"));
    QVERIFY(checker.misspelledRangesInString(u"Ths wrld").isEmpty());
    QVERIFY(checker.guessesForWord(u"wrld").isEmpty());
    QCOMPARE(checker.correctionForWord(u"teh"), std::nullopt);
    checker.learnWord(QStringLiteral("wrld"));
}

QTEST_APPLESS_MAIN(TestQWSpellChecker)
#include "TestQWSpellChecker.moc"
