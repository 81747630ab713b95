#include "kit/QWAttributedString.h"
#include "kit/QWTextAttributes.h"
#include "support/QWManualScheduler.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

namespace {

// Each run of the stored text that is a link or carries a tag marker.
struct Marked
{
    QString text;
    QString link;
    QString tag;
    friend bool operator==(const Marked &, const Marked &) = default;
};

QList<Marked> markedRuns(const QWAttributedString &text)
{
    QList<Marked> runs;
    for (const QWTextRun &run : text.runs()) {
        if (run.attributes.link().isEmpty() && run.attributes.tagName().isEmpty())
            continue;
        runs.append({ text.string().mid(run.location, run.length), run.attributes.link(),
            run.attributes.tagName() });
    }
    return runs;
}

QStringList names(const QList<std::shared_ptr<SNTag>> &tags)
{
    QStringList result;
    for (const std::shared_ptr<SNTag> &tag : tags)
        result.append(tag->name());
    return result;
}

QWTextAttributes marker(const QString &tag)
{
    QWTextAttributes attributes;
    attributes.setLink(tag);
    attributes.setTagName(tag);
    return attributes;
}

} // namespace

namespace QTest {
template <> char *toString(const Marked &marked)
{
    return qstrdup(
        QStringLiteral("(%1, %2, %3)").arg(marked.text, marked.link, marked.tag).toUtf8());
}
} // namespace QTest

// Hashtags found in a note's text: the tags, and the links and markers of the stored text.
class TestSNHashtagScanner final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void tagsInOrderOnceEachWithEveryOccurrenceLinked();
    void whatIsNotATag();
    void staleMarkersAreClearedLeniently();
    void knownTagsAreFoundByTheirExactName();
    void findsTheTagUnderACharacter();

private:
    QWManualScheduler m_scheduler; // the index's notices wait on it, never on a real clock
    std::unique_ptr<SNTagManager> m_tags;
};

void TestSNHashtagScanner::init()
{
    m_tags = std::make_unique<SNTagManager>();
}

void TestSNHashtagScanner::tagsInOrderOnceEachWithEveryOccurrenceLinked()
{
    const QString text = QStringLiteral("Buy #milk and #eggs, #milk");
    const QList<std::shared_ptr<SNTag>> tags = SNHashtagScanner::tokenizeTags(text, *m_tags);
    QCOMPARE(names(tags), QStringList({ QStringLiteral("#milk"), QStringLiteral("#eggs") }));
    // New names entered the index.
    QCOMPARE(m_tags->count(), 2);
    QCOMPARE(m_tags->tagWithName(QStringLiteral("#milk")), tags.first());

    const QList<Marked> expected = {
        { QStringLiteral("#milk"), QStringLiteral("#milk"), QStringLiteral("#milk") },
        { QStringLiteral("#eggs"), QStringLiteral("#eggs"), QStringLiteral("#eggs") },
        { QStringLiteral("#milk"), QStringLiteral("#milk"), QStringLiteral("#milk") },
    };
    QCOMPARE(markedRuns(SNHashtagScanner::taggedString(QWAttributedString(text))), expected);

    // Word characters in the Unicode sense; the tag ends at the first other character.
    QCOMPARE(names(SNHashtagScanner::tokenizeTags(
                 QStringLiteral("#café-au-lait #日本語 #a_1!"), *m_tags)),
        QStringList(
            { QStringLiteral("#café"), QStringLiteral("#日本語"), QStringLiteral("#a_1") }));
}

void TestSNHashtagScanner::whatIsNotATag()
{
    const QString text = QStringLiteral("# alone, #, ## and a#");
    QVERIFY(SNHashtagScanner::tokenizeTags(text, *m_tags).isEmpty());
    QVERIFY(SNHashtagScanner::tokenizeTags(QString(), *m_tags).isEmpty());
    QCOMPARE(m_tags->count(), 0);
    QVERIFY(markedRuns(SNHashtagScanner::taggedString(QWAttributedString(text))).isEmpty());

    // Lenient: a tag anywhere in the string will do.
    QVERIFY(!SNHashtagScanner::stringIsValidTag(QStringLiteral("#")));
    QVERIFY(!SNHashtagScanner::stringIsValidTag(QStringLiteral("milk")));
    QVERIFY(!SNHashtagScanner::stringIsValidTag(QStringLiteral("# milk")));
    QVERIFY(SNHashtagScanner::stringIsValidTag(QStringLiteral("#m")));
    QVERIFY(SNHashtagScanner::stringIsValidTag(QStringLiteral("x #milk y")));
}

void TestSNHashtagScanner::staleMarkersAreClearedLeniently()
{
    // "#milk" lost its letters: the "#" left over keeps neither link nor marker.
    QWMutableAttributedString text;
    text.appendString(QStringLiteral("Buy "));
    text.appendString(QStringLiteral("#"), marker(QStringLiteral("#milk")));
    text.appendString(QStringLiteral(" today, "));
    // A marked run that still holds a tag somewhere stays marked, even where it is more.
    text.appendString(QStringLiteral("x #tea"), marker(QStringLiteral("#tea")));
    SNHashtagScanner::clearOldTags(text);
    const QList<Marked> cleared
        = { { QStringLiteral("x #tea"), QStringLiteral("#tea"), QStringLiteral("#tea") } };
    QCOMPARE(markedRuns(text.attributedString()), cleared);

    // What the note stores: occurrences marked anew, their other attributes kept.
    QWTextAttributes bold;
    bold.setBold(true);
    QWMutableAttributedString grown;
    grown.appendString(QStringLiteral("#tea"), marker(QStringLiteral("#tea")));
    grown.appendString(QStringLiteral("pot"), bold);
    const QWAttributedString stored = SNHashtagScanner::taggedString(grown.attributedString());
    QCOMPARE(stored.attributesAtIndex(0).tagName(), QStringLiteral("#teapot"));
    QCOMPARE(stored.attributesAtIndex(6).link(), QStringLiteral("#teapot"));
    QVERIFY(stored.attributesAtIndex(6).isBold());
    QVERIFY(!stored.attributesAtIndex(0).isBold());

    // An edited document keeps no stored markers: the editor reads tags from the words.
    QTextDocument document;
    stored.toTextDocument(document);
    SNHashtagScanner::removeTagMarkers(document);
    const QWAttributedString edited = QWAttributedString::fromTextDocument(document);
    QVERIFY(markedRuns(edited).isEmpty());
    QVERIFY(edited.attributesAtIndex(6).isBold());
}

void TestSNHashtagScanner::knownTagsAreFoundByTheirExactName()
{
    const QWColor blue(0.1, 0.2, 0.9);
    const std::shared_ptr<SNTag> work = SNTag::tagWithNameColor(QStringLiteral("#work"), blue);
    m_tags->addTag(work);
    const QList<std::shared_ptr<SNTag>> tags
        = SNHashtagScanner::tokenizeTags(QStringLiteral("#work and #WORK, #work"), *m_tags);
    // The known tag keeps its colour; the name is handed over as written.
    QCOMPARE(tags.size(), 2);
    QCOMPARE(tags.first(), work);
    QCOMPARE(tags.first()->tagColor(), blue);
    QCOMPARE(tags.last()->name(), QStringLiteral("#WORK"));
    QCOMPARE(m_tags->count(), 2);
}

void TestSNHashtagScanner::findsTheTagUnderACharacter()
{
    QTextDocument document(QStringLiteral("first line\nsee #milk, ok"));
    const int hash = int(document.toPlainText().indexOf(QLatin1Char('#')));
    const SNHashtagScanner::Occurrence milk = { hash, 5, QStringLiteral("#milk") };
    QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash), milk);
    QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash + 4), milk);
    QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash + 5), std::nullopt);
    QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash - 1), std::nullopt);
    QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, 1000), std::nullopt);
}

QTEST_MAIN(TestSNHashtagScanner)
#include "TestSNHashtagScanner.moc"
