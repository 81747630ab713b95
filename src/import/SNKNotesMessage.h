#pragma once

#include "import/SNImportedNote.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

// One note of the Akonadi notes store: an RFC 822 message in a maildir, its Subject the title,
// its first text part the body, plain or HTML, in any transfer encoding and charset.
class SNKNotesMessage final
{
public:
    SNKNotesMessage() = delete;

    // Multipart messages nest no deeper than this; deeper parts are not looked into.
    static constexpr int maximumPartDepth = 8;

    // The note of a message file's bytes, or the problem that kept it out. The note is dated by
    // its headers, else by the time in its maildir file name, else by `fileTime`; its sourceId
    // is the file name without the maildir flags.
    static SNImportReadResult read(
        const QByteArray &bytes, const QString &fileName, const QDateTime &fileTime);

    // The time a maildir file name starts with (seconds or, in newer names, milliseconds).
    static QDateTime timeOfFileName(const QString &fileName);
    // "=?UTF-8?q?Gr=C3=BC=C3=9Fe?=" and the like, as the header says.
    static QString decodeHeader(const QByteArray &value);
};
