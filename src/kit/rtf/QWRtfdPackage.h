#pragma once

#include "kit/QWAttributedString.h"
#include "kit/rtf/QWRtfReadResult.h"

#include <QString>

// An RTFD package: a folder holding the text as "TXT.rtf" and, beside it, the image files of its
// attachments, which the text names by file name.
class QWRtfdPackage final
{
public:
    static QString textFileName() { return QStringLiteral("TXT.rtf"); }
    // Larger files are not read, so that a package cannot make us allocate without bound.
    static constexpr qint64 maximumFileSize = 256 * 1024 * 1024;

    // Attachments whose files are missing or hold no image are left out.
    static QWRtfReadResult read(const QString &path);
    // Creates the folder when needed and writes the text and one file per attachment, named
    // after the attachment's file name and made unique. Files already in the folder that the
    // text does not name are left alone.
    static bool write(
        const QWAttributedString &text, const QString &path, QString *errorString = nullptr);
};
