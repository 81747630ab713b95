#pragma once

#include "kit/QWAttributedString.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// A picture of a note as a file beside its Markdown.
struct SNMarkdownPicture final
{
    QString fileName;
    QByteArray bytes;
};

// A note's rich text as Markdown that CommonMark readers (Obsidian, Joplin, QOwnNotes, pandoc)
// show as the note shows it: bold, italic, strikethrough, links and underline (as <u>), each
// line of the note on a line of its own, leading spaces kept, and every character that Markdown
// would read as markup escaped, so that it shows as typed. Hashtags stay as written. Pictures
// become files beside the note, linked in the text.
//
// Formatting that CommonMark's delimiters cannot say where it stands (in the middle of a word
// next to punctuation, or right after other formatting) is written as HTML (<strong>, <em>,
// <del>) instead, which those readers show alike.
class SNMarkdownWriter final
{
public:
    struct Document
    {
        QString markdown; // empty, or ending in a line break
        QList<SNMarkdownPicture> pictures;
        // Pictures whose bytes are in no format a viewer would know: left out.
        int unknownPictures = 0;
    };

    SNMarkdownWriter() = delete;

    // Pictures are named pictureFileName(pictureBaseName, 1, ...), 2... in the order of the text.
    static Document write(const QWAttributedString &text, const QString &pictureBaseName);

    // The file suffixes of the text's pictures, in order, those of an unknown format left out:
    // what write() names its pictures with, without writing the text.
    static QStringList pictureSuffixes(const QWAttributedString &text);
    // "<base> <number>.<suffix>".
    static QString pictureFileName(const QString &baseName, int number, const QString &suffix);
    // "png", "jpg", "gif", "webp", "bmp" or "tif" after the bytes' signature; empty when none.
    static QString pictureSuffix(const QByteArray &bytes);
};
