#include "SNImportTestFiles.h"
#include "import/SNKNotesMessage.h"
#include "import/SNKNotesReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the golden cases cannot hold: a notes resource whose folder lies outside the home the
// test copies, as Akonadi's settings name it with $HOME; rich notes read where there is no GUI
// application, as here.
class TestSNKNotesReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsResourceFoldersTheirSettingsName();
    void readsRichNotesWithoutGuiApplication();
};

void TestSNKNotesReader::findsResourceFoldersTheirSettingsName()
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    const SNImportEnvironment environment = SNImportEnvironment::underHome(home.path());
    QVERIFY(writeImportFile(environment.configHome + u"/akonadi_akonotes_resource_0rc"_s,
        "[General]\nPath[$e]=$HOME/.local/share/notes/akonadi_akonotes_resource_0\n"));
    QVERIFY(writeImportFile(environment.configHome + u"/akonadi_akonotes_resource_3rc"_s,
        "[General]\nPath[$e]=$HOME/Sync/notes\nTopLevelIsContainer=true\n"));
    QVERIFY(writeImportFile(
        home.filePath(u"Sync/notes/new/1682929230123.R1.host"_s), "Subject: Synced\n\nText\n"));

    const SNKNotesReader reader;
    const QStringList paths = reader.candidatePaths(environment);
    // The folder of all local resources holds resource 0: only resource 3 adds a place.
    QCOMPARE(paths,
        QStringList({ environment.dataHome + u"/notes"_s, home.filePath(u"Sync/notes"_s),
            home.filePath(u".kde/share/apps/knotes/notes.ics"_s),
            home.filePath(u".kde4/share/apps/knotes/notes.ics"_s) }));
    const SNImportReadResult result = reader.read(paths.at(1));
    QCOMPARE(result.notes.size(), 1);
    QCOMPARE(result.notes.first().text.string(), u"Synced\nText"_s);
    QVERIFY(result.notes.first().tags.isEmpty());
}

void TestSNKNotesReader::readsRichNotesWithoutGuiApplication()
{
    // Qt's HTML reader would ask the missing application for the fixed-width font of <tt>.
    const SNImportReadResult result = SNKNotesMessage::read(
        "Subject: T\nContent-Type: text/html\n\n<html><head><style>p { }</style></head><body>"
        "<p>a &amp; <tt>b</tt></p><p>c&#233;&#x2603;</p></body></html>\n",
        u"1.R1.host"_s, QDateTime::currentDateTimeUtc());
    QCOMPARE(result.notes.size(), 1);
    QCOMPARE(result.notes.first().text.string(), u"T\na & b\ncé☃"_s);
}

QTEST_APPLESS_MAIN(TestSNKNotesReader)
#include "TestSNKNotesReader.moc"
