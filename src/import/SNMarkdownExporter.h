#pragma once

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class SNStickyNote;

// What one Markdown export did, as the report shows it.
struct SNMarkdownExportResult final
{
    QString folder;
    int notesWritten = 0;
    QStringList filesWritten; // full paths, notes and pictures, in the order written
    QStringList problems; // one sentence each, for the user

    // The result in a few lines, for the command line and the window that reports it.
    QString text() const;
};

// Writes notes as Markdown files into a folder, one "<title>.md" per note with its pictures
// beside it ("<title> 1.png"), for Obsidian, Joplin, QOwnNotes and any other Markdown reader.
// The file name is the note's title made safe for every file system, and unique: a file that is
// in the folder already is never replaced, the note takes the next free name ("<title> 2.md").
// Each file is written whole or not at all; when one cannot be written the export stops there,
// and the note's pictures already written are taken away again.
class SNMarkdownExporter final
{
    Q_DECLARE_TR_FUNCTIONS(SNMarkdownExporter)

public:
    static constexpr qsizetype maximumNameLength = 100; // characters
    static constexpr qsizetype maximumNameBytes = 200; // in UTF-8; file systems allow 255

    SNMarkdownExporter() = delete;

    // Notes without text are left out. The folder is made when it is missing.
    static SNMarkdownExportResult exportNotes(
        const QList<std::shared_ptr<SNStickyNote>> &notes, const QString &folder);

    // The title as a file name without its suffix: no characters that some file system forbids,
    // no leading dot, not too long, "Untitled" for nothing.
    static QString fileNameForTitle(const QString &title);
};
