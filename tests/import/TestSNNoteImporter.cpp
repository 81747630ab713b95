#include "SNImportTestSupport.h"
#include "import/SNXpadReader.h"
#include "notes/SNStickyNote.h"
#include "notes/SNWindowFrameString.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

SNImportedNote noteWithText(const QString &id, const QString &text)
{
    SNImportedNote note;
    note.sourceId = id;
    note.text = QWAttributedString(text);
    return note;
}

SNImportReadResult read(const QList<SNImportedNote> &notes)
{
    SNImportReadResult result;
    result.notes = notes;
    return result;
}

} // namespace

// What the importer makes of read notes beyond what the golden cases show (TestSNImportReaderGolden
// imports every case and compares imported.txt): each note once, colours near each other as one
// theme, groups the text names already, places off every screen and notes without dates.
class TestSNNoteImporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f = std::make_unique<SNImportTestStore>(); }
    void cleanup() { f.reset(); }

    void importsEachNoteOnce()
    {
        const QList<SNImportedNote> notes { noteWithText(u"info-A"_s, u"Milk"_s),
            noteWithText(u"info-B"_s, u"Eggs"_s), noteWithText(u"info-A"_s, u"Twin"_s),
            noteWithText(u"info-C"_s, u"  \n"_s) };
        const qsizetype welcomeNotes = f->store.notesArray().size();
        const SNImportReport first = f->import(SNXpadReader(), read(notes));
        QCOMPARE(first.notes.size(), 2);
        // The twin id and the empty note are reported, not imported.
        QCOMPARE(first.problems.size(), 2);
        QCOMPARE(f->store.notesArray().size(), welcomeNotes + 2);

        // Deleted since, and the ledger read afresh from its file: still not again.
        f->store.removeNote(first.notes.first());
        f->ledger = std::make_unique<SNImportLedger>(f->store.baseDatabasePath());
        const SNImportReport second = f->import(SNXpadReader(), read(notes.mid(0, 2)));
        QCOMPARE(second.notes.size(), 0);
        QCOMPARE(second.alreadyImported, 2);

        // Without the ledger the note ids still tell what came in before.
        QVERIFY(QFile::remove(f->store.baseDatabasePath() + SNImportLedger::fileName));
        f->ledger = std::make_unique<SNImportLedger>(f->store.baseDatabasePath());
        QCOMPARE(f->import(SNXpadReader(), read(notes.mid(0, 2))).alreadyImported, 2);
        QCOMPARE(f->store.notesArray().size(), welcomeNotes + 1);
    }

    void nearColoursGroupsWrittenAndPlacesOffScreen()
    {
        SNImportedNote blue = noteWithText(u"1"_s, u"Shopping\nMilk #food\n"_s);
        blue.backgroundColor = QColor(u"#81bdff"_s);
        blue.colorName = u"blue"_s;
        blue.tags = { u"Food"_s, u"Work Stuff"_s, u"!!"_s };
        blue.position = QPoint(-10000, -10000);
        SNImportedNote alsoBlue = noteWithText(u"2"_s, u"Pale blue too"_s);
        alsoBlue.backgroundColor = QColor(u"#82bdfe"_s);
        const SNImportReport report = f->import(SNXpadReader(), read({ blue, alsoBlue }));

        QCOMPARE(report.themesMade, QStringList { u"xpad: Blue"_s });
        QCOMPARE(report.notes[1]->themeName(), report.notes[0]->themeName());
        // A group the text names already and one of no letters add no hashtag.
        const std::shared_ptr<SNStickyNote> note = report.notes[0];
        QCOMPARE(note->attributedString()->string(), u"Shopping\nMilk #food\n\n#Work_Stuff"_s);
        QCOMPARE(SNWindowFrameString::rectFromString(note->windowFrame()),
            QRect(QPoint(SNNoteImporter::cascadeStart, SNNoteImporter::cascadeStart),
                SNNoteImporter::defaultSize));
        QCOMPARE(note->dateCreated(), note->dateModified());
    }

private:
    std::unique_ptr<SNImportTestStore> f;
};

QTEST_GUILESS_MAIN(TestSNNoteImporter)
#include "TestSNNoteImporter.moc"
