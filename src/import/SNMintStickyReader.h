#pragma once

#include "import/SNImportReader.h"

#include <QByteArray>
#include <QDateTime>

#include <optional>

// Linux Mint's Sticky Notes: one notes.json whose groups hold the notes, each with a title apart
// from its text, one of eight colour names, its window's place and size. It keeps no ids and no
// dates.
class SNMintStickyReader final : public SNImportReader
{
public:
    QString programId() const override;
    QString programName() const override;
    QStringList candidatePaths(const SNImportEnvironment &environment) const override;
    SNImportReadResult read(const QString &path) const override;

    // The notes of the bytes of a notes.json, dated by the file's time.
    static SNImportReadResult readNotesJson(
        const QByteArray &bytes, const std::optional<QDateTime> &fileTime);
};
