#include "SNImportTestFiles.h"
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
        const SNImportEnvironment environment = SNImportEnvironment::underHome(home.path());

        QStringList found;
        for (const SNImportSource &source : SNImportFinder::findSources(environment))
            found.append(u"%1 %2"_s.arg(source.programId).arg(source.result.notes.size()));
        QCOMPARE(found.size(), 3);
        QCOMPARE(found[0], u"xpad 2"_s);
        QCOMPARE(found[1], u"knotes 6"_s);
        QVERIFY2(found[2].startsWith(u"gnote "_s), qPrintable(found[2]));

        // A path named reads that path alone; an unknown program is nothing.
        const auto ics = SNImportFinder::readSource(
            u"knotes"_s, home.filePath(u".kde/share/apps/knotes/notes.ics"_s), environment);
        QCOMPARE(ics->result.notes.size(), 3);
        QVERIFY(!SNImportFinder::readSource(u"nonesuch"_s, QString(), environment));
    }
};

QTEST_MAIN(TestSNImportFinder)
#include "TestSNImportFinder.moc"
