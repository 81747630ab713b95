// Edits, adds, deletes and brings back notes through the store until it is killed, saving after
// every change and compacting every few saves. The crash test kills it at random moments and
// checks what loads back against what this program said was saved.
//
//   notes_save_loop FOLDER SEED LABEL NOTES NOTE_BYTES COMPACT_EVERY
//
// Each note's text is "LABEL-K EDIT" on its first line, then NOTE_BYTES of padding. It writes
// one line to stdout for each step, flushed at once:
//   "note UUID NAME EDIT"  the next save holds this note at that edit (added, changed, restored)
//   "gone UUID"            the next save deletes the note
//   "saved BYTES"          save() returned true: everything announced since the last "saved"
//                          is on the disk, and the journal is BYTES long
//   "compacting", "compacted BYTES"  around compact(), which returned true
// and "ready BYTES" once the folder is loaded.
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QRandomGenerator>

#include <cstdio>

namespace {

void say(const QString &line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

QString idOf(const std::shared_ptr<SNStickyNote> &note)
{
    return note->uuid().toString(QUuid::WithoutBraces);
}

// The first line of the note: its name and the number of its edit.
QString headOf(const std::shared_ptr<SNStickyNote> &note)
{
    const std::optional<QWAttributedString> text = note->attributedString();
    return text ? text->string().section(QLatin1Char('\n'), 0, 0) : QString();
}

class Writer
{
public:
    Writer(SNStickyNoteManager &store, quint32 seed, const QString &label, int noteBytes)
        : m_store(store), m_random(seed), m_label(label), m_padding(noteBytes, QLatin1Char('.'))
    { }

    void write(const std::shared_ptr<SNStickyNote> &note, const QString &name, qint64 edit)
    {
        say(QStringLiteral("note %1 %2 %3").arg(idOf(note), name).arg(edit));
        note->setAttributedString(
            QWAttributedString(QStringLiteral("%1 %2\n").arg(name).arg(edit) + m_padding));
    }

    void add()
    {
        auto note = SNStickyNote::note();
        // The id is given by the store, so the text is set once the note is in the list.
        m_store.addNote(note);
        write(note, QStringLiteral("%1-%2").arg(m_label).arg(++m_added), 1);
    }

    void edit(const std::shared_ptr<SNStickyNote> &note)
    {
        const QString head = headOf(note);
        write(note, head.section(QLatin1Char(' '), 0, 0),
            head.section(QLatin1Char(' '), 1, 1).toLongLong() + 1);
        m_store.noteDidChange(note);
    }

    void remove(const std::shared_ptr<SNStickyNote> &note)
    {
        say(QStringLiteral("gone %1").arg(idOf(note)));
        m_store.removeNote(note);
    }

    // False when the store would not give back a note it lists as deleted.
    bool restore(const SNDeletedNote &chosen)
    {
        // Announced before the store is asked, so that a kill in between is covered.
        say(QStringLiteral("note %1 %2")
                .arg(chosen.uuid.toString(QUuid::WithoutBraces), chosen.title));
        return m_store.restoreDeletedNote(chosen.uuid) != nullptr;
    }

    // One to three changes to different notes, keeping about `target` notes.
    bool change(int target)
    {
        QList<std::shared_ptr<SNStickyNote>> notes = m_store.notesArray();
        QList<QUuid> removed; // in this save: not brought back in the same one
        const int changes = 1 + int(m_random.bounded(3));
        for (int i = 0; i < changes; ++i) {
            const int count = int(notes.size());
            const quint32 dice = m_random.bounded(100);
            QList<SNDeletedNote> deleted = m_store.recentlyDeletedNotes();
            deleted.removeIf(
                [&removed](const SNDeletedNote &note) { return removed.contains(note.uuid); });
            // Notes come back about as often as they go, so that Recently Deleted stays
            // small and the rounds quick.
            if (count == 0 || count < target * 3 / 4 || (dice < 5 && count < target)) {
                add();
            } else if (count > target * 3 / 2 || (dice < 25 && count > 1)) {
                const std::shared_ptr<SNStickyNote> note = notes.takeAt(m_random.bounded(count));
                removed.append(note->uuid());
                remove(note);
            } else if (dice < 45 && !deleted.isEmpty()) {
                // The note restored is not in `notes`, so it is changed only once.
                if (!restore(deleted.at(int(m_random.bounded(int(deleted.size()))))))
                    return false;
            } else {
                edit(notes.takeAt(m_random.bounded(count)));
            }
        }
        return true;
    }

    bool coinFlip(int oneIn) { return m_random.bounded(oneIn) == 0; }

private:
    SNStickyNoteManager &m_store;
    QRandomGenerator m_random;
    const QString m_label;
    const QString m_padding;
    int m_added = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 7) {
        std::fprintf(
            stderr, "usage: notes_save_loop FOLDER SEED LABEL NOTES NOTE_BYTES COMPACT_EVERY\n");
        return 2;
    }
    SNStickyNoteManager store(arguments.at(1), QStringLiteral("save-loop"));
    const int target = arguments.at(4).toInt();
    const int compactEvery = std::max(1, arguments.at(6).toInt());
    Writer writer(store, arguments.at(2).toUInt(), arguments.at(3), arguments.at(5).toInt());
    const auto journalBytes = [&store] { return QFileInfo(store.journalPath()).size(); };
    say(QStringLiteral("ready %1").arg(journalBytes()));

    for (;;) {
        if (!writer.change(target)) {
            say(QStringLiteral("failed to restore a deleted note"));
            return 1;
        }
        if (!store.save()) {
            say(QStringLiteral("failed to save"));
            return 1;
        }
        say(QStringLiteral("saved %1").arg(journalBytes()));
        if (writer.coinFlip(compactEvery)) {
            say(QStringLiteral("compacting"));
            if (!store.compact()) {
                say(QStringLiteral("failed to compact"));
                return 1;
            }
            say(QStringLiteral("compacted %1").arg(journalBytes()));
        }
    }
}
