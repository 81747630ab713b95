#pragma once

#include "kit/QWAttributedString.h"

#include <QByteArray>
#include <QString>

#include <functional>

// One line of a note's rich text as Markdown: leading white space as non-breaking spaces (which
// Markdown would drop, or read as code), the characters that Markdown reads as markup escaped,
// and bold, italic, strikethrough, underline and links around the part they cover, white space
// at their ends left outside (CommonMark does not close "** bold **"). Formatting that crosses
// other formatting is closed and opened again, so that the markers nest; a marker that
// CommonMark would not read as one where it stands is written as HTML instead.
class SNMarkdownLine final
{
public:
    // The markup of the picture with these bytes; empty leaves it out.
    using PictureMarkup = std::function<QString(const QByteArray &bytes)>;

    SNMarkdownLine() = delete;

    // The characters [start, end) of the text, which hold no line break. Empty when they are
    // all white space.
    static QString markdown(const QWAttributedString &text, qsizetype start, qsizetype end,
        const PictureMarkup &pictureMarkup);
};
