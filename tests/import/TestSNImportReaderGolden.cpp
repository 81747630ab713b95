#include "SNImportTestSupport.h"
#include "SNImportedNoteDump.h"
#include "import/SNImportCatalog.h"
#include "import/SNImportReader.h"
#include "themes/SNUserTheme.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Every reader against folders of cases: golden/<program id>/<case>/home is a home folder as the
// program left it, expected.txt what the reader must make of it, and imported.txt the report
// and the notes and themes the importer makes of that. Set VELLUMO_UPDATE_GOLDEN=1 to
// write the expected files after a deliberate change, and read the difference in review.
class TestSNImportReaderGolden final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryCase_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("caseFolder");
        int cases = 0;
        for (const auto &reader : SNImportCatalog::allReaders()) {
            const QDir programFolder(
                QStringLiteral(VELLUMO_TEST_DATA_DIR "/golden") + u'/' + reader->programId());
            for (const QString &name : programFolder.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
                QTest::newRow(qPrintable(reader->programId() + u'/' + name))
                    << reader->programId() << programFolder.filePath(name);
                ++cases;
            }
        }
        QVERIFY(cases > 0);
    }

    void readsEveryCase()
    {
        QFETCH(QString, program);
        QFETCH(QString, caseFolder);
        QTemporaryDir home;
        QVERIFY(home.isValid());
        QVERIFY(copyImportHome(caseFolder + u"/home"_s, home.path()));

        const std::unique_ptr<SNImportReader> reader = SNImportCatalog::readerWithId(program);
        QVERIFY(reader);
        const SNImportEnvironment environment = SNImportEnvironment::underHome(home.path());
        const QStringList places = reader->candidatePaths(environment);
        const auto found = std::find_if(places.begin(), places.end(),
            [](const QString &place) { return QFileInfo::exists(place); });
        QVERIFY2(found != places.end(), "the case's home holds none of the program's places");
        const SNImportReadResult read = reader->read(*found);
        // Problems name files; the temporary home is not part of what the case expects.
        QString dump = SNImportedNoteDump::describe(read);
        QWRichTextDump::compareWithFile(
            caseFolder + u"/expected.txt"_s, dump.replace(home.path(), u"~"_s).toUtf8());

        // Imported into a store of its own; the themes made for the notes' colours are saved.
        SNImportTestStore vellumo;
        const SNImportReport report = vellumo.import(*reader, read);
        QString imported = report.text() + u'\n';
        for (const std::shared_ptr<SNStickyNote> &note : report.notes)
            imported += SNImportedNoteDump::describe(*note);
        for (const auto &theme : SNThemeManager(vellumo.themes.userThemeDirectory()).userThemes())
            imported += u"user theme "_s + QWRichTextDump::quoted(theme->name()) + u' '
                + theme->startColor().toQColor().name() + u'\n';
        QWRichTextDump::compareWithFile(
            caseFolder + u"/imported.txt"_s, imported.replace(home.path(), u"~"_s).toUtf8());
    }
};

// Rich notes are read by Qt's HTML reader, which needs a GUI application, as the importer has.
QTEST_MAIN(TestSNImportReaderGolden)
#include "TestSNImportReaderGolden.moc"
