#pragma once

#include "app/SNHistoryCommand.h"

#include <QString>

// One of the command line's requests about other notes programs and Markdown. Like the history
// commands it runs in the Vellumo that holds the notes, the running one over the session bus,
// else the start that asked, and answers with text.
struct SNImportCommand final
{
    enum class Kind {
        ListPrograms, // the programs whose notes are found, with how many and where
        Import, // imports the notes of `program`, from `path` or its own places
        ExportMarkdown, // writes every note as Markdown into the folder `path`
    };

    using Result = SNHistoryCommand::Result;

    // The option names, as the command line and --help know them.
    static QString importOption() { return QStringLiteral("import"); }
    static QString listProgramsOption() { return QStringLiteral("import-list"); }
    static QString exportMarkdownOption() { return QStringLiteral("export-markdown"); }

    Kind kind = Kind::ListPrograms;
    QString program; // for Import: a program id ("xpad", "gnote"...)
    QString path; // absolute, or empty for Import from the program's own places

    friend bool operator==(const SNImportCommand &, const SNImportCommand &) = default;
};
