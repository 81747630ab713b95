#include "SNImportTestSupport.h"
#include "import/SNImportFinder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Where the import looks: every program's places, all of them.
class TestSNImportFinder final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryPlaceOfAProgram()
    {
        // A home that went from KDE 4 to Plasma: the old notes.ics beside the Akonadi notes, and
        // xpad and Gnote besides.
        QTemporaryDir home;
        for (const QString &golden : { u"knotes/akonadi-notes"_s, u"knotes/kde4-notes-ics"_s,
                 u"xpad/formatted"_s, u"gnote/notebooks-and-formatting"_s })
            QVERIFY(copyImportHome(
                QStringLiteral(VELLUMO_TEST_DATA_DIR "/golden/") + golden + u"/home"_s,
                home.path()));
        // Places that the programs' settings name, which the golden cases' copied homes cannot
        // hold: a notes resource in a synced folder (Akonadi expands $HOME itself), and
        // tomboy-ng's folder by its absolute path. Another group's NotesPath is not the folder.
        QVERIFY(writeFile(home.filePath(u".config/akonadi_akonotes_resource_3rc"_s),
            "[General]\nPath[$e]=$HOME/Sync/notes\nTopLevelIsContainer=true\n"));
        QVERIFY(writeFile(
            home.filePath(u"Sync/notes/new/1682929230123.R1.host"_s), "Subject: Synced\n\nText\n"));
        QVERIFY(writeFile(home.filePath(u".config/tomboy-ng/tomboy-ng.cfg"_s),
            "[SyncSettings]\nNotesPath=/elsewhere/\n[BasicSettings]\nNotesPath="
                + home.filePath(u"Dropbox/tomboy"_s).toUtf8() + "/\n"));
        QVERIFY(writeFile(home.filePath(u"Dropbox/tomboy/ABC.note"_s),
            "<note xmlns=\"http://beatniksoftware.com/tomboy\"><title>Kept</title></note>"));
        const SNImportEnvironment environment = SNImportEnvironment::underHome(home.path());

        QStringList found;
        for (const SNImportSource &source : SNImportFinder::findSources(environment))
            found.append(u"%1 %2"_s.arg(source.programId).arg(source.result.notes.size()));
        QCOMPARE(
            found, (QStringList { u"xpad 2"_s, u"knotes 7"_s, u"gnote 4"_s, u"tomboy-ng 1"_s }));

        // A path named reads that path alone; an unknown program is nothing.
        const auto ics = SNImportFinder::readSource(
            u"knotes"_s, home.filePath(u".kde/share/apps/knotes/notes.ics"_s), environment);
        QCOMPARE(ics->result.notes.size(), 3);
        QVERIFY(!SNImportFinder::readSource(u"nonesuch"_s, QString(), environment));
    }
};

QTEST_MAIN(TestSNImportFinder)
#include "TestSNImportFinder.moc"
