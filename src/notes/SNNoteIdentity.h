#pragma once

#include <QList>
#include <QUuid>

#include <memory>

class SNStickyNote;

// Ids for notes of archives older than ids. The id is made from the note's own saved form, so
// the same archive gives the same ids on every load and on every computer (the welcome notes
// are one note everywhere), until the ids are saved with the notes.
class SNNoteIdentity final
{
public:
    SNNoteIdentity() = delete;

    // The namespace of these name-based (version 5) ids.
    static const QUuid idNamespace;

    // Gives every note without an id its id; returns how many it gave.
    static qsizetype giveIdsToNotesWithout(const QList<std::shared_ptr<SNStickyNote>> &notes);
};
