#pragma once

#include <QDateTime>
#include <QString>

class SNStickyNote;

// The YAML block at the top of an exported note, with the keys that Obsidian, Joplin and pandoc
// read: title, created, updated, tags, and the note's theme. Values that YAML would read as
// something else (a number, a yes, a date) are quoted.
class SNMarkdownFrontMatter final
{
public:
    SNMarkdownFrontMatter() = delete;

    // From "---" to "---" and the empty line that Joplin wants before the body. An empty title
    // is left out, so that readers take the file's name.
    static QString text(const SNStickyNote &note, const QString &title);

    // The value as a plain YAML scalar where that reads back as the same string, else quoted.
    static QString scalar(const QString &value);
    // ISO 8601 to the second, with the date's offset from UTC: "2024-03-05T09:15:00+01:00".
    static QString dateString(const QDateTime &date);
};
