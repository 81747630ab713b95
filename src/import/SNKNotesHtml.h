#pragma once

#include "kit/QWAttributedString.h"

#include <QString>

// KNotes keeps rich notes as the HTML of Qt's text editor; Qt reads it back the way KNotes does.
class SNKNotesHtml final
{
public:
    SNKNotesHtml() = delete;

    // The note's text with its marks; list items become "• " lines. The editor's default font,
    // which KNotes writes on <body>, is left out: the note takes Vellumo's.
    static QWAttributedString toAttributedString(const QString &html);
};
