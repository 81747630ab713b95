#pragma once

#include "import/SNImportedNote.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringView>

#include <functional>
#include <optional>

// Reading other programs' files the same careful way in every reader: bounded in size, never
// opened for writing, text decoded whatever its encoding, dates parsed however the program
// wrote them.
class SNImportFile final
{
public:
    SNImportFile() = delete;

    // No notes program writes a note file this large; reading one would only cost memory.
    static constexpr qint64 maximumFileSize = 32 * 1024 * 1024;

    // The bytes of a regular file, at most `maximum` of them; nothing, and the reason in words,
    // when it is missing, unreadable, not a file or larger.
    static std::optional<QByteArray> read(
        const QString &path, QString *reason = nullptr, qint64 maximum = maximumFileSize);

    // What `parse` makes of the whole file and its time; a file that cannot be read is one
    // problem, named after the file.
    using Parser = std::function<SNImportReadResult(
        const QByteArray &bytes, const std::optional<QDateTime> &fileTime)>;
    static SNImportReadResult parse(const QString &path, const Parser &parser);

    // UTF-8 when the bytes are valid UTF-8 (a byte order mark dropped), else Latin-1, as
    // programs of the 2000s wrote their files.
    static QString decodeText(const QByteArray &bytes);

    // "2023-05-01T10:20:30.1234567+02:00", "...Z", "...T10:20:30" (local time), with a fraction
    // of any length or none; invalid when the text is none of these.
    static QDateTime dateFromIsoString(QStringView text);

    // When the file last changed; a program that keeps no dates dates its notes so.
    static std::optional<QDateTime> modificationTime(const QString &path);
};
