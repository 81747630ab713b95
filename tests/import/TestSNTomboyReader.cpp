#include "SNImportTestFiles.h"
#include "import/SNTomboyReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the golden cases cannot hold: a notes folder elsewhere than its program's default, and a
// folder with more notes than a reader takes.
class TestSNTomboyReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTomboyNgFolderItsConfigurationNames();
    void leavesNotesPastTheBound();
};

void TestSNTomboyReader::findsTomboyNgFolderItsConfigurationNames()
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    const SNImportEnvironment environment = SNImportEnvironment::underHome(home.path());
    const QString notes = home.filePath(u"Dropbox/tomboy"_s);
    // Another group's NotesPath is not tomboy-ng's folder.
    QVERIFY(writeImportFile(environment.configHome + u"/tomboy-ng/tomboy-ng.cfg"_s,
        "[SyncSettings]\nNotesPath=/elsewhere/\n[BasicSettings]\nExportPath=/tmp/\nNotesPath="
            + notes.toUtf8() + "/\n"));
    QVERIFY(writeImportFile(notes + u"/ABC.note"_s,
        "<note xmlns=\"http://beatniksoftware.com/tomboy\"><title>Kept</title></note>"));

    const SNTomboyReader reader(SNTomboyReader::Program::TomboyNg);
    const QStringList paths = reader.candidatePaths(environment);
    QCOMPARE(paths, QStringList({ notes, environment.dataHome + u"/tomboy-ng"_s }));
    const SNImportReadResult result = reader.read(paths.first());
    QCOMPARE(result.notes.size(), 1);
    QCOMPARE(result.notes.first().text.string(), u"Kept"_s);
}

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
