#pragma once

#include "import/SNImportReader.h"

#include <QByteArray>
#include <QDateTime>

// The notes of Tomboy, Gnote or tomboy-ng: a folder of <GUID>.note files, one XML document
// each. The three programs share the format and differ in where they keep the folder.
class SNTomboyReader final : public SNImportReader
{
public:
    enum class Program { Tomboy, Gnote, TomboyNg };

    // No user keeps this many notes in one folder; past it the rest are left with a problem.
    static constexpr int maximumNotes = 100000;

    explicit SNTomboyReader(Program program, int maximumNotes = SNTomboyReader::maximumNotes);

    QString programId() const override;
    QString programName() const override;
    QStringList candidatePaths(const SNImportEnvironment &environment) const override;
    // A folder of .note files, or one .note file.
    SNImportReadResult read(const QString &path) const override;

    // The note of one file's bytes (none for a template), or the problem that kept it out.
    // `fileTime` dates a note whose file carries no dates.
    static SNImportReadResult readNote(
        const QByteArray &bytes, const QString &fileName, const QDateTime &fileTime);

private:
    Program m_program;
    int m_maximumNotes;
};
