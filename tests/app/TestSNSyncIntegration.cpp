#include "SNProgramTestSupport.h"
#include "support/QWSyncthingPeer.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace QWProgramDriver;

namespace {

// How long a change may take to cross from one computer to the other: Syncthing's watcher,
// its transfer, Vellumo's watcher and merge, and a save, on a busy machine.
constexpr int crossing = 60000;

// Polls the condition until it holds or the time for a crossing has passed. (QTRY counts
// only its own sleeps, not the time that a condition which runs other programs takes.)
template <typename Condition> bool eventually(Condition condition)
{
    const QDeadlineTimer deadline(crossing);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QTest::qWait(200);
    }
    return true;
}

// Fails with the message when the condition does not come to hold in the time for a crossing.
#define EVENTUALLY(condition, message)                                                             \
    QVERIFY2(eventually([&] { return condition; }), QByteArray(message).constData())

QString firstLine(const QString &text)
{
    return text.section(u'\n', 0, 0);
}

// The notes one per line, in order, for comparing two stores.
QStringList lines(const QHash<QString, QString> &notes)
{
    QStringList lines;
    for (auto note = notes.begin(); note != notes.end(); ++note)
        lines.append(note.key() + u'\t' + note.value());
    lines.sort();
    return lines;
}

QString windowName(const QString &window)
{
    return run(u"xdotool"_s, { u"getwindowname"_s, window }).trimmed();
}

// One computer: a Syncthing, and a Vellumo on a session bus of its own whose sync folder is
// the one that Syncthing shares.
struct Computer
{
    explicit Computer(const QString &name) : peer(name)
    {
        vellumo.setSetting(u"syncFolder"_s, peer.folderPath());
    }

    qint64 pid() { return vellumo.program().processId(); }
    QHash<QString, QString> notes() const { return storedNotes(vellumo.notesFolder()); }
    QHash<QString, QString> frames() const
    {
        return storedNotes(vellumo.notesFolder(), u"windowFrame"_s);
    }
    QStringList windowNames()
    {
        QStringList names;
        for (const QString &window : visibleWindows(pid()))
            names.append(windowName(window));
        return names;
    }
    // What the computer holds and shows, for a failure message: each note by its id and its
    // first line.
    QByteArray report()
    {
        QStringList stored;
        const QHash<QString, QString> held = notes();
        for (auto note = held.begin(); note != held.end(); ++note)
            stored.append(note.key().left(8) + u' ' + firstLine(note.value()));
        stored.sort();
        return (peer.name() + u" stores: "_s + stored.join(u" | "_s) + u"\n"_s + peer.name()
            + u" shows: "_s + windowNames().join(u" | "_s))
            .toUtf8();
    }

    // Pauses (or resumes) this computer's Syncthing's connection to the other's, and waits
    // until both see it closed (or open).
    bool setSyncthingPaused(Computer &other, bool paused)
    {
        return peer.setPeerPaused(other.peer, paused) && eventually([&] {
            return peer.connectedTo(other.peer) != paused && other.peer.connectedTo(peer) != paused;
        });
    }

    // The note window showing the title; empty when there is none.
    QString windowNamed(const QString &title)
    {
        for (const QString &window : visibleWindows(pid())) {
            if (windowName(window) == title)
                return window;
        }
        return QString();
    }

    QWSyncthingPeer peer;
    QWProgramSession vellumo { QWProgramSession::Bus::Own };
};

QStringList conflictNotesOf(const QHash<QString, QString> &notes)
{
    QStringList found;
    for (auto note = notes.begin(); note != notes.end(); ++note) {
        if (firstLine(note.value()).endsWith(u" (conflict)"_s))
            found.append(note.key());
    }
    return found;
}

// Whether both texts of a conflict are kept: one in the note, the other in a note of its own
// that says it came of a conflict.
bool keepsBoth(const QHash<QString, QString> &notes, const QString &id, const QString &one,
    const QString &other)
{
    const QString kept = notes.value(id);
    const QString lost = kept == one ? other : one;
    const QStringList conflicts = conflictNotesOf(notes);
    return (kept == one || kept == other)
        && std::any_of(conflicts.cbegin(), conflicts.cend(), [&](const QString &conflict) {
               return conflict != id && notes.value(conflict).contains(lost);
           });
}

} // namespace

class TestSNSyncIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void notesCrossBetweenTwoComputers()
    {
        Computer a(u"a"_s);
        Computer b(u"b"_s);
        QVERIFY(a.peer.isValid() && b.peer.isValid());
        QVERIFY2(a.peer.start(b.peer), a.peer.log().constData());
        QVERIFY2(b.peer.start(a.peer), b.peer.log().constData());

        // Syncthing alone first: a file written on one side reaches the other.
        QFile probe(a.peer.folderPath() + u"/probe.txt"_s);
        QVERIFY(probe.open(QIODevice::WriteOnly) && probe.write("carried") == 7);
        probe.close();
        // Waited for by its arrival: the peers can report being in sync a moment before it.
        EVENTUALLY(fileBytes(b.peer.folderPath() + u"/probe.txt"_s) == "carried", b.peer.log());

        QVERIFY(startShowingNotes(a.vellumo));
        QVERIFY(startShowingNotes(b.vellumo));
        const qsizetype notesAtStart = a.windowNames().size();
        QCOMPARE(b.windowNames().size(), notesAtStart);

        // A note made on A appears on B, in the store and in a window.
        const QString made = u"Pack the tent"_s;
        const QString windowOnA = makeNote(a.vellumo, made);
        QVERIFY(!windowOnA.isEmpty());
        EVENTUALLY(!a.notes().key(made).isEmpty(), a.report());
        const QString id = a.notes().key(made);
        EVENTUALLY(b.notes().value(id) == made, b.report());
        EVENTUALLY(b.windowNames().contains(made), b.report());
        const QString windowOnB = b.windowNamed(made);

        // An edit on B reaches A, in the window the note already has there.
        const QString edited = made + u" and stakes"_s;
        typeInto(windowOnB, u" and stakes"_s);
        EVENTUALLY(b.notes().value(id) == edited, b.report());
        EVENTUALLY(a.notes().value(id) == edited, a.report());
        EVENTUALLY(windowName(windowOnA) == edited, a.report());
        // Each has now read all that the other wrote since its first start: the notes both had
        // from the start are not doubled.
        EVENTUALLY(lines(a.notes()) == lines(b.notes()), a.report() + '\n' + b.report());
        QCOMPARE(a.windowNames().size(), notesAtStart + 1);
        QCOMPARE(b.windowNames().size(), notesAtStart + 1);

        // Both edit the note while A's Syncthing is paused; once it resumes, both texts are on
        // both computers, one of them in a conflict note.
        QVERIFY(a.setSyncthingPaused(b, true));
        const QString onA = edited + u" by Friday"_s;
        const QString onB = edited + u" for two"_s;
        typeInto(windowOnA, u" by Friday"_s);
        typeInto(windowOnB, u" for two"_s);
        EVENTUALLY(a.notes().value(id) == onA, a.report());
        EVENTUALLY(b.notes().value(id) == onB, b.report());
        // A moves the note too: a place of its own, and no edit of the text.
        const QString frameOnA = a.frames().value(id);
        xdotool({ u"windowmove"_s, windowOnA, u"300"_s, u"300"_s });
        EVENTUALLY(a.frames().value(id) != frameOnA, frameOnA.toUtf8());
        QVERIFY(a.setSyncthingPaused(b, false));
        EVENTUALLY(keepsBoth(a.notes(), id, onA, onB), a.report());
        EVENTUALLY(keepsBoth(b.notes(), id, onA, onB), b.report());
        EVENTUALLY(lines(a.notes()) == lines(b.notes()), a.report() + '\n' + b.report());
        // One conflict note, though both computers met the conflict.
        const QHash<QString, QString> merged = a.notes();
        QVERIFY2(conflictNotesOf(merged).size() == 1, a.report().constData());
        const QString conflict = conflictNotesOf(merged).constFirst();
        const QString title = firstLine(merged.value(id));
        const QString conflictTitle = firstLine(merged.value(conflict));
        for (Computer *computer : { &a, &b }) {
            EVENTUALLY(computer->windowNames().contains(title)
                    && computer->windowNames().contains(conflictTitle),
                computer->report());
        }

        // A deletion on A removes the note on B, its window too.
        QVERIFY(deleteNote(a.pid(), a.windowNamed(conflictTitle)));
        EVENTUALLY(!a.notes().contains(conflict), a.report());
        EVENTUALLY(!b.notes().contains(conflict), b.report());
        EVENTUALLY(!b.windowNames().contains(conflictTitle), b.report());

        // A note deleted on A while B, out of reach, edits it comes back on both: the deletion
        // had not seen that edit.
        QVERIFY(a.setSyncthingPaused(b, true));
        QVERIFY(deleteNote(a.pid(), a.windowNamed(title)));
        EVENTUALLY(!a.notes().contains(id), a.report());
        const QString kept = merged.value(id) + u" and a lamp"_s;
        typeInto(b.windowNamed(title), u" and a lamp"_s);
        EVENTUALLY(b.notes().value(id) == kept, b.report());
        QVERIFY(a.setSyncthingPaused(b, false));
        EVENTUALLY(a.notes().value(id) == kept, a.report());
        EVENTUALLY(a.windowNames().contains(firstLine(kept)), a.report());
        EVENTUALLY(lines(a.notes()) == lines(b.notes()), a.report() + '\n' + b.report());
        QVERIFY2(b.windowNames().contains(firstLine(kept)), b.report().constData());
    }
};

QTEST_MAIN(TestSNSyncIntegration)
#include "TestSNSyncIntegration.moc"
