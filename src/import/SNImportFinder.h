#pragma once

#include "import/SNImportEnvironment.h"
#include "import/SNImportedNote.h"

#include <QList>
#include <QString>

// The notes of one program found in one place, read and ready to import.
struct SNImportSource final
{
    QString programId;
    QString programName;
    QString path;
    SNImportReadResult result;
};

// Looks in every place every known program keeps its notes and reads what it finds there. Only
// reads, so that it may run on a thread of its own while the window that asked waits.
class SNImportFinder final
{
public:
    SNImportFinder() = delete;

    // The programs with notes (or with files that could not be read: the user should hear of
    // them), in the catalog's order; per program the notes of all its places, and as its path
    // the first of them that holds something.
    static QList<SNImportSource> findSources(const SNImportEnvironment &environment);
    // What one program keeps at the path, or in all its own places when the path is empty;
    // nothing when the program is unknown. A path that holds nothing gives a source without
    // notes.
    static std::optional<SNImportSource> readSource(
        const QString &programId, const QString &path, const SNImportEnvironment &environment);
};
