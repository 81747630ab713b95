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

// What the importer makes of read notes: each note once, its colour as a theme, its groups as
// hashtags, its window place, pin and hidden states.
class TestSNNoteImporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void importsEachNoteOnce();
    void makesOneThemePerColourNoBuiltInThemeMatches();
    void keepsGroupsPlacesAndStates();

private:
    // The program's name and id; the notes come from the test.
    class Program final : public SNImportReader
    {
    public:
        QString programId() const override { return u"xpad"_s; }
        QString programName() const override { return u"xpad"_s; }
        QStringList candidatePaths(const SNImportEnvironment &) const override { return {}; }
        SNImportReadResult read(const QString &) const override { return {}; }
    };

    static SNImportedNote noteWithText(const QString &id, const QString &text)
    {
        SNImportedNote note;
        note.sourceId = id;
        note.text = QWAttributedString(text);
        return note;
    }
    SNImportReport import(const QList<SNImportedNote> &notes);

    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<SNStickyNoteManager> m_store;
    std::unique_ptr<SNThemeManager> m_themes;
    std::unique_ptr<SNTagManager> m_tags;
    std::unique_ptr<SNImportLedger> m_ledger;
    QList<std::shared_ptr<SNStickyNote>> m_added;
};

void TestSNNoteImporter::init()
{
    m_environment = std::make_unique<QWTestEnvironment>();
    const QString folder = m_environment->dataHome() + u"/Vellumo/"_s;
    m_store = std::make_unique<SNStickyNoteManager>(folder, u"device"_s);
    m_themes = std::make_unique<SNThemeManager>(folder + u"User Themes/"_s);
    m_tags = std::make_unique<SNTagManager>();
    m_ledger = std::make_unique<SNImportLedger>(folder);
    m_added.clear();
}

void TestSNNoteImporter::cleanup()
{
    m_ledger.reset();
    m_tags.reset();
    m_themes.reset();
    m_store.reset();
    m_environment.reset();
}

SNImportReport TestSNNoteImporter::import(const QList<SNImportedNote> &notes)
{
    SNNoteImporter importer(*m_store, *m_themes, *m_tags, *m_ledger, [this](const auto &note) {
        m_store->addNote(note);
        m_added.append(note);
    });
    SNImportReadResult result;
    result.notes = notes;
    return importer.importNotes(Program(), u"/somewhere"_s, result);
}

void TestSNNoteImporter::importsEachNoteOnce()
{
    const QList<SNImportedNote> notes { noteWithText(u"info-A"_s, u"Milk"_s),
        noteWithText(u"info-B"_s, u"Eggs"_s), noteWithText(u"info-A"_s, u"Twin"_s),
        noteWithText(u"info-C"_s, u"  \n"_s) };
    const qsizetype welcomeNotes = m_store->notesArray().size();
    const SNImportReport first = import(notes);
    QCOMPARE(first.notes.size(), 2);
    // The twin id and the empty note are reported, not imported.
    QCOMPARE(first.problems.size(), 2);
    QCOMPARE(m_store->notesArray().size(), welcomeNotes + 2);

    // Deleted since, and the ledger read afresh from its file: still not again.
    m_store->removeNote(first.notes.first());
    m_ledger = std::make_unique<SNImportLedger>(m_store->baseDatabasePath());
    const SNImportReport second = import(notes.mid(0, 2));
    QCOMPARE(second.notes.size(), 0);
    QCOMPARE(second.alreadyImported, 2);

    // Without the ledger the note ids still tell what came in before.
    QVERIFY(QFile::remove(m_store->baseDatabasePath() + SNImportLedger::fileName));
    m_ledger = std::make_unique<SNImportLedger>(m_store->baseDatabasePath());
    QCOMPARE(import(notes.mid(0, 2)).alreadyImported, 2);
    QCOMPARE(m_store->notesArray().size(), welcomeNotes + 1);
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
    const SNImportReport report = import({ yellow, blue, alsoBlue, none });

    QCOMPARE(report.themesMade, QStringList { u"xpad: Blue"_s });
    QCOMPARE(report.notes[0]->themeName(), u"SNYellowPadTheme"_s);
    QCOMPARE(report.notes[1]->themeName(), u"SNUserTheme-xpad: Blue"_s);
    QCOMPARE(report.notes[2]->themeName(), report.notes[1]->themeName());
    QVERIFY(report.notes[3]->themeName() != report.notes[1]->themeName());
    // The theme is saved with the user's themes, so the notes keep their colour after a restart.
    SNThemeManager reread(m_themes->userThemeDirectory());
    const std::shared_ptr<SNUserTheme> theme = reread.userThemeWithName(u"xpad: Blue"_s);
    QVERIFY(theme);
    QCOMPARE(
        QColor::fromRgbF(float(theme->startColor().redComponent()),
            float(theme->startColor().greenComponent()), float(theme->startColor().blueComponent()))
            .name(),
        u"#81bdff"_s);
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
    const SNImportReport report = import({ placed, unplaced });

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
