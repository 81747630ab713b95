#pragma once

#include "kit/QWTextAttributes.h"
#include "kit/rtf/QWRtfKeyword.h"
#include "kit/rtf/QWRtfTokenizer.h"

class QWRtfColorTable;
class QWRtfFontTable;

// The character formatting of an RTF group: font, size, bold, italic, underline,
// strikethrough, colour and hidden text, as the formatting keywords set them.
struct QWRtfCharacterFormat final
{
    int font = -1; // none given: the reader's default font shows
    int halfPoints = 0;
    bool bold = false;
    bool italic = false;
    int underline = QWTextAttributes::LineStyleNone;
    int strikethrough = QWTextAttributes::LineStyleNone;
    int color = -1;
    bool hidden = false;

    // Returns whether the keyword was one of formatting.
    bool apply(const QWRtfKeyword &keyword, const QWRtfTokenizer::Token &token);
    // The attributes of text in this format; fonts and colours are looked up in the tables.
    QWTextAttributes attributes(const QWRtfFontTable &fonts, const QWRtfColorTable &colors) const;
};
