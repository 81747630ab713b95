#pragma once

#include "import/SNImportThemeMatcher.h"
#include "import/SNImportedNote.h"

#include <QCoreApplication>
#include <QStringList>

#include <functional>
#include <memory>

class SNImportLedger;
class SNImportReader;
class SNStickyNote;
class SNStickyNoteManager;
class SNTagManager;
class SNThemeManager;

// What one import of one program did, as the report shows it.
struct SNImportReport final
{
    QString programName;
    QString path;
    QList<std::shared_ptr<SNStickyNote>> notes; // made by this import, in the program's order
    qsizetype alreadyImported = 0;
    QList<SNImportProblem> problems;
    QStringList remarks;
    QStringList themesMade;

    // The report in a few lines of text, for the command line and the import window.
    QString text() const;
};

// Turns what a reader read into Vellumo notes, each once: a note imported before (by program and
// id) is left out, whatever became of it here. The text keeps its formatting, the program's
// groups become hashtags at its end, the colour becomes a theme, the window keeps its place and
// size, a note kept above others is pinned, a hidden one comes in collapsed, and the dates stay.
//
// It neither reads files nor opens windows: the reader reads, and the `addNote` seam puts each
// note in place (the running program opens its window; a command line adds it to the store).
class SNNoteImporter final
{
    Q_DECLARE_TR_FUNCTIONS(SNNoteImporter)

public:
    using AddNote = std::function<void(const std::shared_ptr<SNStickyNote> &note)>;

    // A note with no place of its own is put in a cascade from here, a step further each.
    static constexpr int cascadeStart = 80;
    static constexpr int cascadeStep = 24;
    static constexpr int cascadeLength = 12;
    static constexpr QSize defaultSize { 250, 200 };

    SNNoteImporter(SNStickyNoteManager &store, SNThemeManager &themes, SNTagManager &tags,
        SNImportLedger &ledger, AddNote addNote);

    // Reads nothing: takes the reader's result and makes the notes. The ledger is saved at the
    // end; a failure to save it is one more problem in the report.
    SNImportReport importNotes(
        const SNImportReader &reader, const QString &path, const SNImportReadResult &result);
    // Reads the path with the reader, then imports.
    SNImportReport importFrom(const SNImportReader &reader, const QString &path);

    // The name of the id a note imported from the program with this id gets, the same on every
    // computer, so that two computers that import one shared folder make one note.
    static QUuid noteIdFor(const QString &programId, const QString &sourceId);
    // "1 note", "12 notes": for reports and lists.
    static QString noteCount(qsizetype count);
    // A group's name as a hashtag: "#" and its words joined by "_" ("Work Stuff" → "#Work_Stuff");
    // empty when nothing of it can be part of a tag.
    static QString hashtagFor(const QString &group);

private:
    std::shared_ptr<SNStickyNote> noteFor(const SNImportedNote &imported, const QString &themeName);

    SNStickyNoteManager &m_store;
    SNTagManager &m_tags;
    SNImportLedger &m_ledger;
    SNImportThemeMatcher m_themeMatcher;
    AddNote m_addNote;
    int m_cascadeIndex = 0;
};
