#pragma once

#include "import/SNImportReader.h"

// KNotes' notes: the maildir folders of its Akonadi notes resources (KDE Plasma 5 and later),
// or notes.ics of KDE 3 and 4 with its per-note settings files.
class SNKNotesReader final : public SNImportReader
{
public:
    static constexpr int maximumNotes = 100000;
    // Note folders nest no deeper than this below the folder read.
    static constexpr int maximumFolderDepth = 8;

    QString programId() const override;
    QString programName() const override;
    QStringList candidatePaths(const SNImportEnvironment &environment) const override;
    // A folder of maildirs (or one maildir), or a notes.ics file.
    SNImportReadResult read(const QString &path) const override;
};
