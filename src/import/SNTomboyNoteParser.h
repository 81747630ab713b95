#pragma once

#include "kit/QWAttributedString.h"

#include <QByteArray>
#include <QDateTime>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

// Reads one .note file as Tomboy, Gnote and tomboy-ng write it: the XML document with its
// title, dates, window geometry, tags and the marked-up text. Elements are matched by namespace
// and name, so any prefix (or none) works.
class SNTomboyNoteParser final
{
public:
    SNTomboyNoteParser() = delete;

    // Deeper markup than any of the three programs writes (lists nest eight levels at most);
    // beyond it a file is taken as damaged rather than followed.
    static constexpr int maximumDepth = 256;

    struct Note
    {
        QString title;
        // The note-content as the program shows it: bullets as "• " lines, links as text.
        QWAttributedString text;
        QDateTime created; // invalid when the file has none
        QDateTime modified;
        QDateTime metadataModified;
        std::optional<QPoint> position;
        std::optional<QSize> size;
        QStringList tags; // as written, "system:notebook:Work" included
        bool openOnStartup = false;
    };

    // Nothing, and in `error` a sentence for the user, when the bytes are no readable note.
    static std::optional<Note> parse(const QByteArray &bytes, QString *error);
};
