#include "import/SNMintStickyReader.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the golden cases cannot hold: a notes.json too large to commit.
class TestSNMintStickyReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAtMostOneHundredThousandNotes();
};

void TestSNMintStickyReader::readsAtMostOneHundredThousandNotes()
{
    QByteArray json = "{\"A\": [";
    for (int i = 0; i < 60000; ++i)
        json += i ? ",{\"title\":\"a\"}" : "{\"title\":\"a\"}";
    json += "], \"B\": [";
    for (int i = 0; i < 60000; ++i)
        json += i ? ",{\"text\":\"#tag:bold:b#tag:bold:\"}" : "{\"text\":\"b\"}";
    json += "]}";

    const SNImportReadResult result = SNMintStickyReader::readNotesJson(json, std::nullopt);
    QCOMPARE(result.notes.size(), 100000);
    QCOMPARE(result.problems.size(), 1);
    QVERIFY(result.problems[0].reason.contains(u"100000"_s));
    // Identical notes still differ by their place in the group.
    QCOMPARE(result.notes[0].sourceId.section(u'/', 0, 1), u"A/0"_s);
    QCOMPARE(result.notes[1].sourceId.section(u'/', 0, 1), u"A/1"_s);
    QCOMPARE(result.notes.last().sourceId.section(u'/', 0, 1), u"B/39999"_s);
}

QTEST_APPLESS_MAIN(TestSNMintStickyReader)
#include "TestSNMintStickyReader.moc"
