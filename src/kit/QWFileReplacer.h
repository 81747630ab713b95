#pragma once

#include <QByteArray>
#include <QString>

class QSaveFile;

// Writes a whole file beside the old one and renames it over it, so that a reader sees the
// old file or the new one, never a part. A full disk or a failing device leaves the old file
// as it was and no temporary file behind.
class QWFileReplacer final
{
public:
    QWFileReplacer() = delete;

    // The file names the path; tests hand in files that fail.
    static bool replace(QSaveFile &file, const QByteArray &data, QString *error = nullptr);
};
