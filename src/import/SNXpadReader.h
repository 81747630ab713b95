#pragma once

#include "import/SNImportReader.h"

#include <QByteArray>
#include <QColor>
#include <QHash>

#include <optional>

// xpad's pads: an info-XXXXXX file of "key value" lines per pad (place, size, colours, whether
// it was hidden) that names a content-XXXXXX file with the text in xpad's inline markup. The
// user's default colours are in default-style beside them.
class SNXpadReader final : public SNImportReader
{
public:
    QString programId() const override;
    QString programName() const override;
    QStringList candidatePaths(const SNImportEnvironment &environment) const override;
    SNImportReadResult read(const QString &path) const override;

    // One pad from the bytes of its info and content files and of default-style (none when the
    // user never changed a preference); its id and dates are the caller's to set.
    static SNImportedNote padFromFiles(const QByteArray &info, const QByteArray &content,
        const std::optional<QByteArray> &defaultStyle);
    // The lines of an info or default-style file; the first line of a key counts, as in xpad.
    static QHash<QString, QString> keyValues(const QByteArray &bytes);
    // GTK's colour forms: "rgb(255,238,153)", "rgba(...)", "#ffee99", "#ffffeeee9999", "yellow".
    static std::optional<QColor> colorFromString(const QString &text);
};
