#include "SNImportTestSupport.h"
#include "import/SNImportFile.h"
#include "import/SNKNotesMessage.h"
#include "import/SNMintStickyReader.h"
#include "import/SNTomboyReader.h"
#include "import/SNXpadReader.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the readers' golden cases cannot hold: files too large to commit, links out of the folder
// (which their copy of the home folder would follow), more notes than a reader takes, and a rich
// note read where there is no GUI application.
class TestSNImportReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void xpadSkipsLinksAndHugeFiles()
    {
        QTemporaryDir home;
        const QDir xpad(home.filePath(u"xpad"_s));
        QVERIFY(writeFile(home.filePath(u"secret"_s), "not a pad"));
        QVERIFY(writeFile(xpad.filePath(u"info-Good"_s), "content content-Good\n"));
        QVERIFY(writeFile(xpad.filePath(u"content-Good"_s), "kept"));
        QVERIFY(writeFile(xpad.filePath(u"info-Link"_s), "content content-Link\n"));
        QVERIFY(QFile::link(home.filePath(u"secret"_s), xpad.filePath(u"content-Link"_s)));
        QVERIFY(writeFile(xpad.filePath(u"info-Huge"_s), "content content-Huge\n"));
        QFile huge(xpad.filePath(u"content-Huge"_s));
        QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(SNImportFile::maximumFileSize + 1));
        huge.close();

        const SNImportReadResult result = SNXpadReader().read(xpad.path());
        QCOMPARE(result.notes.size(), 1);
        QCOMPARE(result.notes[0].text.string(), u"kept"_s);
        QCOMPARE(result.problems.size(), 2);
        QCOMPARE(result.problems[0].item, u"info-Huge"_s);
        QVERIFY(result.problems[0].reason.contains(u"larger than"_s));
        QCOMPARE(result.problems[1].item, u"info-Link"_s);
        QVERIFY(result.problems[1].reason.contains(u"link"_s));
    }

    void mintStickyReadsAtMostOneHundredThousandNotes()
    {
        const QByteArray json = "{\"A\": ["
            + QByteArray("{\"title\":\"a\"},").repeated(60000).chopped(1)
            + "], \"B\": [{\"text\":\"b\"}"
            + QByteArray(",{\"text\":\"#tag:bold:b#tag:bold:\"}").repeated(59999) + "]}";

        const SNImportReadResult result = SNMintStickyReader::readNotesJson(json, std::nullopt);
        QCOMPARE(result.notes.size(), 100000);
        QCOMPARE(result.problems.size(), 1);
        QVERIFY(result.problems[0].reason.contains(u"100000"_s));
        // Identical notes still differ by their place in the group.
        QCOMPARE(result.notes[0].sourceId.section(u'/', 0, 1), u"A/0"_s);
        QCOMPARE(result.notes[1].sourceId.section(u'/', 0, 1), u"A/1"_s);
        QCOMPARE(result.notes.last().sourceId.section(u'/', 0, 1), u"B/39999"_s);
    }

    // The bound is lowered: a hundred thousand files take the file system minutes to make. (The
    // finder's test reads a tomboy-ng folder that its configuration names.)
    void tomboyLeavesNotesPastTheBound()
    {
        QTemporaryDir folder;
        for (const char *name : { "a.note", "b.note", "c.note" })
            QVERIFY(
                writeFile(folder.filePath(QLatin1String(name)), "<note><title>n</title></note>"));

        const SNImportReadResult result
            = SNTomboyReader(SNTomboyReader::Program::Gnote, 2).read(folder.path());
        QCOMPARE(result.notes.size(), 2);
        QCOMPARE(result.problems.size(), 1);
        QVERIFY(result.problems.first().reason.contains(u"more than 2 notes"_s));
    }

    // Qt's HTML reader would ask the missing application for the fixed-width font of <tt>.
    void knotesReadsRichNotesWithoutGuiApplication()
    {
        const SNImportReadResult result = SNKNotesMessage::read(
            "Subject: T\nContent-Type: text/html\n\n<html><head><style>p { }</style></head><body>"
            "<p>a &amp; <tt>b</tt></p><p>c&#233;&#x2603;</p></body></html>\n",
            u"1.R1.host"_s, QDateTime::currentDateTimeUtc());
        QCOMPARE(result.notes.size(), 1);
        QCOMPARE(result.notes.first().text.string(), u"T\na & b\ncé☃"_s);
    }
};

QTEST_APPLESS_MAIN(TestSNImportReader)
#include "TestSNImportReader.moc"
