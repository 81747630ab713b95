#include "../kit/QWRichTextDump.h"
#include "support/QWManualScheduler.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTest>
#include <QTextDocument>

namespace {

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

// Hashtags found in a note's text: the tags, and the links and markers of the stored text.
class TestSNHashtagScanner final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_tags = std::make_unique<SNTagManager>(); }

    void tagsInOrderOnceEachWithEveryOccurrenceMarked()
    {
        const QString text = u"Buy #milk and #eggs, #milk"_s;
        const QList<std::shared_ptr<SNTag>> tags = SNHashtagScanner::tokenizeTags(text, *m_tags);
        QCOMPARE(names(tags), (QStringList { u"#milk"_s, u"#eggs"_s }));
        QCOMPARE(QWRichTextDump::describe(SNHashtagScanner::taggedString(QWAttributedString(text))),
            u"\"Buy \"\n\"#milk\" link=\"#milk\" tag=\"#milk\"\n\" and \"\n"
            "\"#eggs\" link=\"#eggs\" tag=\"#eggs\"\n\", \"\n\"#milk\" link=\"#milk\" tag=\"#milk\"\n"_s);

        // Word characters in the Unicode sense; the tag ends at the first other character.
        QCOMPARE(names(SNHashtagScanner::tokenizeTags(u"#café-au-lait #日本語 #a_1!"_s, *m_tags)),
            (QStringList { u"#café"_s, u"#日本語"_s, u"#a_1"_s }));
        // The known tag keeps its colour; another case is another tag.
        const std::shared_ptr<SNTag> work = SNTag::tagWithNameColor(u"#work"_s, QWColor::black());
        m_tags->addTag(work);
        QCOMPARE(
            SNHashtagScanner::tokenizeTags(u"#work and #WORK, #work"_s, *m_tags).first(), work);
        QVERIFY(m_tags->tagWithName(u"#WORK"_s));
    }

    void whatIsNotATag()
    {
        const QString text = u"# alone, #, ## and a#"_s;
        QVERIFY(SNHashtagScanner::tokenizeTags(text, *m_tags).isEmpty());
        QCOMPARE(m_tags->count(), 0);
        QCOMPARE(
            SNHashtagScanner::taggedString(QWAttributedString(text)), QWAttributedString(text));
    }

    void staleMarkersAreClearedLeniently()
    {
        // "#milk" lost its letters: the "#" left over keeps neither link nor marker. A marked
        // run that still holds a tag somewhere stays marked, even where it is more.
        QWMutableAttributedString text;
        text.appendString(u"Buy "_s);
        text.appendString(u"#"_s, marker(u"#milk"_s));
        text.appendString(u" today, "_s);
        text.appendString(u"x #tea"_s, marker(u"#tea"_s));
        SNHashtagScanner::clearOldTags(text);
        QCOMPARE(QWRichTextDump::describe(text.attributedString()),
            u"\"Buy # today, \"\n\"x #tea\" link=\"#tea\" tag=\"#tea\"\n"_s);

        // What the note stores: occurrences marked anew, their other attributes kept.
        QWTextAttributes bold;
        bold.setBold(true);
        QWMutableAttributedString grown;
        grown.appendString(u"#tea"_s, marker(u"#tea"_s));
        grown.appendString(u"pot"_s, bold);
        const QWAttributedString stored = SNHashtagScanner::taggedString(grown.attributedString());
        QCOMPARE(QWRichTextDump::describe(stored),
            u"\"#tea\" link=\"#teapot\" tag=\"#teapot\"\n"
            "\"pot\" bold link=\"#teapot\" tag=\"#teapot\"\n"_s);
    }

    void findsTheTagUnderACharacter()
    {
        QTextDocument document(u"first line\nsee #milk, ok"_s);
        const int hash = int(document.toPlainText().indexOf(u'#'));
        const SNHashtagScanner::Occurrence milk = { hash, 5, u"#milk"_s };
        QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash), milk);
        QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash + 4), milk);
        QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash + 5), std::nullopt);
        QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, hash - 1), std::nullopt);
        QCOMPARE(SNHashtagScanner::occurrenceAtIndex(document, 1000), std::nullopt);
    }

private:
    QWManualScheduler m_scheduler; // the index's notices wait on it, never on a real clock
    std::unique_ptr<SNTagManager> m_tags;
};

QTEST_APPLESS_MAIN(TestSNHashtagScanner)
#include "TestSNHashtagScanner.moc"
