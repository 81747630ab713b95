#include "kit/QWSpellChecker.h"
#include "support/QWTestEnvironment.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Spelling against the system's American English dictionary, which the build installs.
class TestQWSpellChecker final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void marksOnlyMisspeltWords()
    {
        QWSpellChecker checker(u"en_US"_s);
        QVERIFY(checker.isAvailable() && checker.language() == u"en_US");
        // Quotes are not part of the word; digits and single letters are never marked.
        const QList<QWSpellChecker::Range> expected = { { 0, 3 }, { 8, 4 } };
        QCOMPARE(
            checker.misspelledRangesInString(u"Ths is \"wrld\", don't 2nd x qqq7 cafe."), expected);
        QVERIFY(checker.guessesForWord(u"wrld").contains(u"world"_s));
    }

    // A first suggestion further than one edit from the typed word rewrote what the user meant
    // ("qwertyuiop" became "qwerty"): such words are only marked.
    void correctsOnlyOneEditAway_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("corrected"); // empty: only marked
        QTest::newRow("swapped") << u"teh"_s << u"the"_s;
        QTest::newRow("dropped") << u"untill"_s << u"until"_s;
        QTest::newRow("added") << u"goverment"_s << u"government"_s;
        QTest::newRow("changed") << u"seperate"_s << u"separate"_s;
        QTest::newRow("first guess two letters changed") << u"wich"_s << u""_s; // "wite"
        QTest::newRow("first guess two letters added") << u"acomodate"_s << u""_s;
        QTest::newRow("first guess four letters shorter") << u"qwertyuiop"_s << u""_s;
    }

    void correctsOnlyOneEditAway()
    {
        QFETCH(QString, typed);
        QWSpellChecker checker(u"en_US"_s);
        QVERIFY(checker.isWordMisspelled(typed));
        QTEST(checker.correctionForWord(typed).value_or(QString()), "corrected");
        // A correct word is never replaced.
        QCOMPARE(checker.correctionForWord(u"the"), std::nullopt);
    }

    void oneEditAway_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("other");
        QTest::addColumn<bool>("oneEdit");
        QTest::newRow("added at the end") << u"note"_s << u"notes"_s << true;
        QTest::newRow("last two swapped") << u"notr"_s << u"nort"_s << true;
        QTest::newRow("first two swapped") << u"tset"_s << u"stet"_s << true;
        QTest::newRow("apart swapped") << u"note"_s << u"eotn"_s << false;
        QTest::newRow("case") << u"Note"_s << u"note"_s << true;
    }

    void oneEditAway()
    {
        QFETCH(QString, word);
        QFETCH(QString, other);
        QTEST(QWSpellChecker::isOneEditAway(word, other), "oneEdit");
        QTEST(QWSpellChecker::isOneEditAway(other, word), "oneEdit");
    }

    // Ignored for this checker, learnt for every one; nothing at all without a dictionary.
    void ignoredLearntAndMissing()
    {
        QWSpellChecker checker(u"en_US"_s);
        QVERIFY(checker.isWordMisspelled(u"vellumoish") && checker.isWordMisspelled(u"notewise"));
        checker.ignoreWord(u"vellumoish"_s);
        checker.learnWord(u"notewise"_s);
        QVERIFY(!checker.isWordMisspelled(u"vellumoish") && !checker.isWordMisspelled(u"notewise"));
        QVERIFY(!QWSpellChecker(u"en_US"_s).isWordMisspelled(u"notewise"));
        QVERIFY(QWSpellChecker(u"en_US"_s).isWordMisspelled(u"vellumoish"));

        QWSpellChecker missing(u"xx_XX"_s);
        QVERIFY(!missing.isAvailable() && missing.language().isEmpty());
        QVERIFY(missing.misspelledRangesInString(u"Ths wrld").isEmpty());
        QVERIFY(missing.guessesForWord(u"wrld").isEmpty());
        QCOMPARE(missing.correctionForWord(u"teh"), std::nullopt);
        missing.learnWord(u"wrld"_s); // without a dictionary to learn into
    }

private:
    // Before any checker: the personal word list lives in a fresh folder each run.
    QWTestEnvironment m_environment;
};

QTEST_APPLESS_MAIN(TestQWSpellChecker)
#include "TestQWSpellChecker.moc"
