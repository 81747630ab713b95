#pragma once

#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWTestFiles.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTest>

// What the tests of the note store and its parts share: notes made from plain text, whole
// files (support/QWTestFiles.h), and devices that fail as a full disk does.
namespace SNNotesTest {

inline std::shared_ptr<SNStickyNote> noteWithText(const QString &text)
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    return note;
}

inline QString textOf(const SNStickyNote &note)
{
    return note.attributedString().value_or(QWAttributedString()).string();
}

inline QStringList textsOf(const QList<std::shared_ptr<SNStickyNote>> &notes)
{
    QStringList texts;
    for (const std::shared_ptr<SNStickyNote> &note : notes)
        texts.append(textOf(*note));
    return texts;
}

// Empties the store of the welcome notes it starts with.
inline void removeAll(SNStickyNoteManager &store)
{
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
        store.removeNote(note);
}

// The tag index is shared by the whole program: each test leaves it empty.
inline void forgetAllTags()
{
    for (const std::shared_ptr<SNTag> &tag : SNTagManager::sharedManager().tags())
        SNTagManager::sharedManager().removeTag(tag);
}

// Takes the first bytes and then fails, as a full disk does.
template <class File> class FailingFile final : public File
{
public:
    explicit FailingFile(const QString &path, qint64 room = 64) : File(path), m_room(room) { }

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        const qint64 taken = std::min(length, m_room);
        m_room -= taken;
        if (taken > 0)
            File::writeData(data, taken);
        return taken == length ? length : -1;
    }

private:
    qint64 m_room;
};

} // namespace SNNotesTest
