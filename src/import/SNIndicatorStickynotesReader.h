#pragma once

#include "import/SNImportReader.h"

#include <QByteArray>
#include <QColor>
#include <QDateTime>

#include <optional>

// indicator-stickynotes: one JSON file with every note's plain text, place, size and category,
// and the categories' colours (the background as hue, saturation and value). Files from before
// categories keep one pair of colours for all notes.
class SNIndicatorStickynotesReader final : public SNImportReader
{
public:
    QString programId() const override;
    QString programName() const override;
    QStringList candidatePaths(const SNImportEnvironment &environment) const override;
    SNImportReadResult read(const QString &path) const override;

    // The notes of the bytes of the file; `fileTime` dates notes that carry no date.
    static SNImportReadResult readSettingsJson(
        const QByteArray &bytes, const std::optional<QDateTime> &fileTime);
    // The colour the app draws for hue, saturation and value between 0 and 1: Python's
    // colorsys.hsv_to_rgb, each channel cut (not rounded) to 0-255.
    static QColor colorFromHsv(double hue, double saturation, double value);
};
