#include "import/SNImportLedger.h"
#include "import/SNImportReader.h"
#include "import/SNNoteImporter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNWindowFrameString.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// The program's name and id; the notes come from the test.
class Program final : public SNImportReader
{
public:
    QString programId() const override { return u"xpad"_s; }
    QString programName() const override { return u"xpad"_s; }
    QStringList candidatePaths(const SNImportEnvironment &) const override { return {}; }
    SNImportReadResult read(const QString &) const override { return {}; }
};

SNImportedNote noteWithText(const QString &id, const QString &text)
{
    SNImportedNote note;
    note.sourceId = id;
    note.text = QWAttributedString(text);
    return note;
}

// A store, its themes and tags, and the ledger, in a data folder of their own.
struct Importing
{
    QWTestEnvironment environment;
    QString folder = environment.dataHome() + u"/Vellumo/"_s;
    SNStickyNoteManager store { folder, u"device"_s };
    SNThemeManager themes { folder + u"User Themes/"_s };
    SNTagManager tags;
    std::unique_ptr<SNImportLedger> ledger = std::make_unique<SNImportLedger>(folder);

    SNImportReport import(const QList<SNImportedNote> &notes)
    {
        SNNoteImporter importer(
            store, themes, tags, *ledger, [this](const auto &note) { store.addNote(note); });
        SNImportReadResult result;
        result.notes = notes;
        return importer.importNotes(Program(), u"/somewhere"_s, result);
    }
};

} // namespace

// What the importer makes of read notes: each note once, its colour as a theme, its groups as
// hashtags, its window place, pin and hidden states.
class TestSNNoteImporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f = std::make_unique<Importing>(); }
    void cleanup() { f.reset(); }
    void importsEachNoteOnce();
    void makesOneThemePerColourNoBuiltInThemeMatches();
    void keepsGroupsPlacesAndStates();

private:
    std::unique_ptr<Importing> f;
};

void TestSNNoteImporter::importsEachNoteOnce()
{
    const QList<SNImportedNote> notes { noteWithText(u"info-A"_s, u"Milk"_s),
        noteWithText(u"info-B"_s, u"Eggs"_s), noteWithText(u"info-A"_s, u"Twin"_s),
        noteWithText(u"info-C"_s, u"  \n"_s) };
    const qsizetype welcomeNotes = f->store.notesArray().size();
    const SNImportReport first = f->import(notes);
    QCOMPARE(first.notes.size(), 2);
    // The twin id and the empty note are reported, not imported.
    QCOMPARE(first.problems.size(), 2);
    QCOMPARE(f->store.notesArray().size(), welcomeNotes + 2);

    // Deleted since, and the ledger read afresh from its file: still not again.
    f->store.removeNote(first.notes.first());
    f->ledger = std::make_unique<SNImportLedger>(f->store.baseDatabasePath());
    const SNImportReport second = f->import(notes.mid(0, 2));
    QCOMPARE(second.notes.size(), 0);
    QCOMPARE(second.alreadyImported, 2);

    // Without the ledger the note ids still tell what came in before.
    QVERIFY(QFile::remove(f->store.baseDatabasePath() + SNImportLedger::fileName));
    f->ledger = std::make_unique<SNImportLedger>(f->store.baseDatabasePath());
    QCOMPARE(f->import(notes.mid(0, 2)).alreadyImported, 2);
    QCOMPARE(f->store.notesArray().size(), welcomeNotes + 1);
}

void TestSNNoteImporter::makesOneThemePerColourNoBuiltInThemeMatches()
{
    SNImportedNote yellow = noteWithText(u"1"_s, u"Near the built-in yellow"_s);
    yellow.backgroundColor = QColor(u"#ffd94a"_s);
    SNImportedNote blue = noteWithText(u"2"_s, u"Pale blue"_s);
    blue.backgroundColor = QColor(u"#81bdff"_s);
    blue.colorName = u"blue"_s;
    SNImportedNote alsoBlue = noteWithText(u"3"_s, u"Pale blue too"_s);
    alsoBlue.backgroundColor = QColor(u"#82bdfe"_s);
    SNImportedNote none = noteWithText(u"4"_s, u"No colour"_s);
    const SNImportReport report = f->import({ yellow, blue, alsoBlue, none });

    QCOMPARE(report.themesMade, QStringList { u"xpad: Blue"_s });
    QCOMPARE(report.notes[0]->themeName(), u"SNYellowPadTheme"_s);
    QCOMPARE(report.notes[1]->themeName(), u"SNUserTheme-xpad: Blue"_s);
    QCOMPARE(report.notes[2]->themeName(), report.notes[1]->themeName());
    QVERIFY(report.notes[3]->themeName() != report.notes[1]->themeName());
    // The theme is saved with the user's themes, so the notes keep their colour after a restart.
    SNThemeManager reread(f->themes.userThemeDirectory());
    const std::shared_ptr<SNUserTheme> theme = reread.userThemeWithName(u"xpad: Blue"_s);
    QVERIFY(theme);
    QCOMPARE(theme->startColor().toQColor().name(), u"#81bdff"_s);
}

void TestSNNoteImporter::keepsGroupsPlacesAndStates()
{
    SNImportedNote placed = noteWithText(u"1"_s, u"Shopping\nMilk #food\n"_s);
    placed.tags = { u"Food"_s, u"Work Stuff"_s, u"!!"_s };
    placed.position = QPoint(300, 120);
    placed.size = QSize(222, 185);
    placed.isFloating = true;
    placed.isHidden = true;
    placed.dateCreated = QDateTime(QDate(2020, 5, 1), QTime(10, 0), Qt::UTC);
    placed.dateModified = QDateTime(QDate(2021, 6, 2), QTime(11, 0), Qt::UTC);
    SNImportedNote unplaced = noteWithText(u"2"_s, u"Nowhere"_s);
    unplaced.position = QPoint(-10000, -10000);
    const SNImportReport report = f->import({ placed, unplaced });

    const std::shared_ptr<SNStickyNote> note = report.notes[0];
    QCOMPARE(note->attributedString()->string(), u"Shopping\nMilk #food\n\n#Work_Stuff"_s);
    QStringList tags;
    for (const auto &tag : note->tags())
        tags.append(tag->name());
    QCOMPARE(tags, (QStringList { u"#food"_s, u"#Work_Stuff"_s }));
    QCOMPARE(SNWindowFrameString::rectFromString(note->windowFrame()), QRect(300, 120, 222, 185));
    QCOMPARE(note->pinState(), SNStickyNote::PinStateFloating);
    QVERIFY(note->isCollapsed());
    QCOMPARE(note->dateCreated(), placed.dateCreated);
    QCOMPARE(note->dateModified(), placed.dateModified);

    const auto frame = SNWindowFrameString::rectFromString(report.notes[1]->windowFrame());
    QCOMPARE(frame,
        QRect(QPoint(SNNoteImporter::cascadeStart, SNNoteImporter::cascadeStart),
            SNNoteImporter::defaultSize));
    QCOMPARE(report.notes[1]->dateCreated(), report.notes[1]->dateModified());
}

QTEST_GUILESS_MAIN(TestSNNoteImporter)
#include "TestSNNoteImporter.moc"
