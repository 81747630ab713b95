#pragma once

#include "import/SNImportEnvironment.h"
#include "import/SNImportedNote.h"

#include <QString>
#include <QStringList>

// Reads the notes of one other notes program. It only reads: nothing it is handed is ever
// changed, created or locked. It knows nothing of Vellumo's store, themes or tags: the importer
// turns what it reads into notes.
//
// Every reader survives any bytes: a damaged, half-written, huge or hostile file gives a problem
// in the result and the other notes still come in; nothing crashes, hangs or allocates without
// bound.
class SNImportReader
{
    Q_DISABLE_COPY_MOVE(SNImportReader)

public:
    SNImportReader() = default;
    virtual ~SNImportReader();

    // The name scripts use on the command line: "xpad", "knotes", "gnote"...
    virtual QString programId() const = 0;
    // The name the user knows the program by: "xpad", "KNotes", "Gnote"...
    virtual QString programName() const = 0;
    // Where the program keeps its notes for the user of the environment, most likely first,
    // whether they exist or not: a folder or a file, as read() takes it.
    virtual QStringList candidatePaths(const SNImportEnvironment &environment) const = 0;
    // Reads every note kept at the path (one of candidatePaths(), or one the user names).
    virtual SNImportReadResult read(const QString &path) const = 0;
};
