#pragma once

#include "import/SNImportReader.h"

#include <QByteArray>
#include <QDateTime>

#include <optional>

// GNOME's Sticky Notes (com.vixalien.sticky): a JSON file per note in its data folder, plain text
// with formatting as ranges of characters, a style number for its colour, whether its window was
// open. Versions before 2023 kept all notes in one notes.json instead.
class SNGnomeStickyReader final : public SNImportReader
{
public:
    QString programId() const override;
    QString programName() const override;
    QStringList candidatePaths(const SNImportEnvironment &environment) const override;
    SNImportReadResult read(const QString &path) const override;

    // The note of one notes/<uuid>.json; `fileName` names it in problems and stands in for a
    // missing uuid.
    static SNImportReadResult readNoteJson(
        const QByteArray &bytes, const QString &fileName, const std::optional<QDateTime> &fileTime);
    // The notes of the old notes.json; nothing but a problem when it is damaged.
    static SNImportReadResult readLegacyNotesJson(
        const QByteArray &bytes, const std::optional<QDateTime> &fileTime);
};
