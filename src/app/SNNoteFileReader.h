#pragma once

#include "kit/QWAttributedString.h"

#include <QString>

#include <optional>

// Reads what a user opens with Vellumo into rich text: an RTF file, an RTFD folder, or a plain
// UTF-8 text file. Nothing when the path cannot be read or holds none of these.
class SNNoteFileReader final
{
public:
    SNNoteFileReader() = delete;

    // Larger files are not notes; reading them would only cost memory.
    static constexpr qint64 maximumFileSize = 64 * 1024 * 1024;

    static std::optional<QWAttributedString> attributedStringWithContentsOfPath(
        const QString &path);
};
