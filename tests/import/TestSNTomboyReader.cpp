#include "SNImportTestSupport.h"
#include "import/SNTomboyReader.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the golden cases cannot hold: a folder with more notes than a reader takes. (The finder's
// test reads a tomboy-ng folder that its configuration names.)
class TestSNTomboyReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leavesNotesPastTheBound();
};

void TestSNTomboyReader::leavesNotesPastTheBound()
{
    // The bound is lowered: a hundred thousand files take the file system minutes to make.
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    for (const char *name : { "a.note", "b.note", "c.note" })
        QVERIFY(
            writeImportFile(folder.filePath(QLatin1String(name)), "<note><title>n</title></note>"));

    const SNImportReadResult result
        = SNTomboyReader(SNTomboyReader::Program::Gnote, 2).read(folder.path());
    QCOMPARE(result.notes.size(), 2);
    QCOMPARE(result.problems.size(), 1);
    QVERIFY(result.problems.first().reason.contains(u"more than 2 notes"_s));
}

QTEST_APPLESS_MAIN(TestSNTomboyReader)
#include "TestSNTomboyReader.moc"
