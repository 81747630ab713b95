#pragma once

#include "notes/SNNoteVersion.h"

#include <QString>
#include <QUuid>

#include <memory>

class SNStickyNote;

// How two versions of one note, saved on two computers, become one: the text of the version
// that has seen the other's text, the look with the newest look stamp. Two texts written
// without seeing each other are a conflict: the newer stays, the other becomes a note of its
// own. Every computer decides the same from the same two versions, in either order, and the
// note that a conflict makes has the same id everywhere, so merging converges.
//
// It only decides and builds: the record merger applies the decisions to the store.
class SNNoteMerger final
{
public:
    SNNoteMerger() = delete;

    static const QString conflictTitleSuffix; // " (conflict)"

    struct Decision
    {
        bool takesText = false; // the incoming text (and its tags and date) replaces this one
        bool takesLook = false; // the incoming theme, transparency, pin and counter too
        SNNoteVersion version; // what the note is after the merge
        // The text that lost a conflict, as a note of its own; null without a conflict.
        std::shared_ptr<SNStickyNote> conflictNote;
    };

    static Decision merge(const SNStickyNote &own, const SNStickyNote &incoming);

    // The loser's text, its first line ending in " (conflict)", under an id made from the
    // loser's id and version.
    static std::shared_ptr<SNStickyNote> conflictNoteOf(const SNStickyNote &loser);
};
