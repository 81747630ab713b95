#include "support/QWProgramDriver.h"
#include "support/QWProgramSession.h"
#include "support/QWSyncthingPeer.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
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

// Where a note window's close button sits, from its top-left corner.
constexpr int buttonInset = 16;

const QString conflictSuffix = u" (conflict)"_s;

// The live notes of a store, by id, as another program reads them: the journal's records
// replayed over the notes file. The journal is read first: a compaction in between then only
// replays records that the new notes file already holds. Each note gives its text, or the
// value of another key.
QHash<QString, QString> storedNotes(const QString &folder, const QString &key = u"text"_s)
{
    static const char reader[] = R"(
import json, os, struct, sys
import cbor2

TABLE = []
for byte in range(256):
    crc = byte
    for _ in range(8):
        crc = (crc >> 1) ^ 0x82F63B78 if crc & 1 else crc >> 1
    TABLE.append(crc)

def crc32c(data):
    crc = 0xFFFFFFFF
    for byte in data:
        crc = TABLE[(crc ^ byte) & 0xFF] ^ (crc >> 8)
    return crc ^ 0xFFFFFFFF

def top(data):
    return cbor2.loads(data)["$top"]

def fields(note):
    found = {key: value for key, value in note.items() if isinstance(value, str)}
    found["text"] = top(note["data"])["string"] if "data" in note else ""
    return found

def read(name):
    path = os.path.join(sys.argv[1], name)
    return open(path, "rb").read() if os.path.exists(path) else b""

journal = read("stickies.journal")
archive = read("stickies.db")
notes = {}
# A note of an older file has no id until the program loads it: only its windows count it.
for note in top(archive) if archive else []:
    if "uuid" in note:
        notes[note["uuid"]] = fields(note)
header = b"Vellumo journal 1\n"
position = len(header) if journal.startswith(header) else len(journal)
while position + 8 <= len(journal):
    length, checksum = struct.unpack("<II", journal[position : position + 8])
    record = journal[position + 8 : position + 8 + length]
    if len(record) < length or crc32c(record) != checksum:
        break
    record = top(record)
    if record["deleted"]:
        notes.pop(record["uuid"], None)
    else:
        notes[record["uuid"]] = fields(record["note"])
    position += 8 + length
key = sys.argv[2]
print(json.dumps({uuid: note.get(key, "") for uuid, note in notes.items() if note["text"].strip()}))
)";
    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
        { u"-c"_s, QString::fromLatin1(reader), folder, key });
    if (!python.waitForFinished(20000) || python.exitCode() != 0)
        qFatal("python3 could not read the notes in %s: %s", qUtf8Printable(folder),
            python.readAllStandardError().constData());
    QHash<QString, QString> notes;
    const QJsonObject found = QJsonDocument::fromJson(python.readAllStandardOutput()).object();
    for (auto note = found.begin(); note != found.end(); ++note)
        notes.insert(note.key(), note.value().toString().trimmed());
    return notes;
}

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

    // The window shown since `before` was taken; empty when none comes.
    QString windowAfter(const QStringList &before)
    {
        QString shown;
        const auto appeared = [&] {
            for (const QString &window : visibleWindows(pid())) {
                if (!before.contains(window))
                    shown = window;
            }
            return !shown.isEmpty();
        };
        return QTest::qWaitFor(appeared, 20000) ? shown : QString();
    }

    // Makes a note with `--new-note`, as the user would, and types the text into it.
    QString makeNote(const QString &text)
    {
        const QStringList before = visibleWindows(pid());
        if (vellumo.runSecond({ u"--new-note"_s }) != 0)
            return QString();
        const QString note = windowAfter(before);
        if (!note.isEmpty())
            type(note, text);
        return note;
    }

    // Types at the end of the note's text.
    static void type(const QString &window, const QString &text)
    {
        xdotool({ u"windowactivate"_s, u"--sync"_s, window });
        xdotool({ u"key"_s, u"ctrl+End"_s });
        xdotool({ u"type"_s, u"--delay"_s, u"30"_s, text });
    }

    // Closes the note with its close button and answers "Delete Note" to the question that
    // follows; false when no question came.
    bool deleteNote(const QString &window)
    {
        const QStringList before = visibleWindows(pid());
        xdotool({ u"windowactivate"_s, u"--sync"_s, window });
        xdotool({ u"mousemove"_s, u"--window"_s, window, QString::number(buttonInset),
            QString::number(buttonInset - 1), u"click"_s, u"1"_s });
        const QString question = windowAfter(before);
        if (question.isEmpty())
            return false;
        // From the default button, Export, the next one is Delete Note.
        xdotool({ u"windowactivate"_s, u"--sync"_s, question });
        xdotool({ u"key"_s, u"--delay"_s, u"80"_s, u"Tab"_s, u"space"_s });
        return QTest::qWaitFor([&] { return !visibleWindows(pid()).contains(window); }, 20000);
    }

    QWSyncthingPeer peer;
    QWProgramSession vellumo { QWProgramSession::Bus::Own };
};

// Whether both texts of a conflict are kept: one in the note, the other in a note of its own
// that says it came of a conflict.
bool keepsBoth(const QHash<QString, QString> &notes, const QString &id, const QString &one,
    const QString &other)
{
    const QString kept = notes.value(id);
    if (kept != one && kept != other)
        return false;
    const QString lost = kept == one ? other : one;
    for (auto note = notes.begin(); note != notes.end(); ++note) {
        if (note.key() != id && firstLine(note.value()).endsWith(conflictSuffix)
            && note.value().contains(lost))
            return true;
    }
    return false;
}

QStringList conflictNotesOf(const QHash<QString, QString> &notes)
{
    QStringList found;
    for (auto note = notes.begin(); note != notes.end(); ++note) {
        if (firstLine(note.value()).endsWith(conflictSuffix))
            found.append(note.key());
    }
    return found;
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
        QVERIFY2(eventually([&] { return QWSyncthingPeer::inSync(a.peer, b.peer); }),
            b.peer.log().constData());
        QFile carried(b.peer.folderPath() + u"/probe.txt"_s);
        QVERIFY(carried.open(QIODevice::ReadOnly));
        QCOMPARE(carried.readAll(), "carried");

        QVERIFY(a.vellumo.start());
        QVERIFY(b.vellumo.start());
        QVERIFY(eventually([&] { return !a.windowNames().isEmpty(); }));
        QVERIFY(eventually([&] { return !b.windowNames().isEmpty(); }));
        const qsizetype notesAtStart = a.windowNames().size();
        QCOMPARE(b.windowNames().size(), notesAtStart);

        // A note made on A appears on B, in the store and in a window.
        const QString made = u"Pack the tent"_s;
        const QString windowOnA = a.makeNote(made);
        QVERIFY(!windowOnA.isEmpty());
        QVERIFY2(
            eventually([&] { return !a.notes().key(made).isEmpty(); }), a.report().constData());
        const QString id = a.notes().key(made);
        QVERIFY2(eventually([&] { return b.notes().value(id) == made; }), b.report().constData());
        QVERIFY2(
            eventually([&] { return b.windowNames().contains(made); }), b.report().constData());
        const QString windowOnB = b.windowNamed(made);

        // An edit on B reaches A, in the window the note already has there.
        const QString edited = made + u" and stakes"_s;
        Computer::type(windowOnB, u" and stakes"_s);
        QVERIFY2(eventually([&] { return b.notes().value(id) == edited; }), b.report().constData());
        QVERIFY2(eventually([&] { return a.notes().value(id) == edited; }), a.report().constData());
        QVERIFY2(
            eventually([&] { return windowName(windowOnA) == edited; }), a.report().constData());
        // Each has now read all that the other wrote since its first start: the notes both had
        // from the start are not doubled.
        QVERIFY2(eventually([&] { return lines(a.notes()) == lines(b.notes()); }),
            (a.report() + '\n' + b.report()).constData());
        QCOMPARE(a.windowNames().size(), notesAtStart + 1);
        QCOMPARE(b.windowNames().size(), notesAtStart + 1);

        // Both edit the note while A's Syncthing is paused; once it resumes, both texts are on
        // both computers, one of them in a conflict note.
        QVERIFY(a.setSyncthingPaused(b, true));
        const QString onA = edited + u" by Friday"_s;
        const QString onB = edited + u" for two"_s;
        Computer::type(windowOnA, u" by Friday"_s);
        Computer::type(windowOnB, u" for two"_s);
        QVERIFY2(eventually([&] { return a.notes().value(id) == onA; }), a.report().constData());
        QVERIFY2(eventually([&] { return b.notes().value(id) == onB; }), b.report().constData());
        // A moves the note too: a place of its own, and no edit of the text.
        const QString frameOnA = a.frames().value(id);
        xdotool({ u"windowmove"_s, windowOnA, u"300"_s, u"300"_s });
        QVERIFY2(
            eventually([&] { return a.frames().value(id) != frameOnA; }), qPrintable(frameOnA));
        QVERIFY(a.setSyncthingPaused(b, false));
        QVERIFY2(
            eventually([&] { return keepsBoth(a.notes(), id, onA, onB); }), a.report().constData());
        QVERIFY2(
            eventually([&] { return keepsBoth(b.notes(), id, onA, onB); }), b.report().constData());
        QVERIFY2(eventually([&] { return lines(a.notes()) == lines(b.notes()); }),
            (a.report() + '\n' + b.report()).constData());
        // One conflict note, though both computers met the conflict.
        const QHash<QString, QString> merged = a.notes();
        QVERIFY2(conflictNotesOf(merged).size() == 1, a.report().constData());
        const QString conflict = conflictNotesOf(merged).constFirst();
        const QString title = firstLine(merged.value(id));
        const QString conflictTitle = firstLine(merged.value(conflict));
        for (Computer *computer : { &a, &b }) {
            QVERIFY2(eventually([&] {
                const QStringList shown = computer->windowNames();
                return shown.contains(title) && shown.contains(conflictTitle);
            }),
                computer->report().constData());
        }

        // A deletion on A removes the note on B, its window too.
        QVERIFY(a.deleteNote(a.windowNamed(conflictTitle)));
        QVERIFY2(eventually([&] { return !a.notes().contains(conflict); }), a.report().constData());
        QVERIFY2(eventually([&] { return !b.notes().contains(conflict); }), b.report().constData());
        QVERIFY2(eventually([&] { return !b.windowNames().contains(conflictTitle); }),
            b.report().constData());

        // A note deleted on A while B, out of reach, edits it comes back on both: the deletion
        // had not seen that edit.
        QVERIFY(a.setSyncthingPaused(b, true));
        QVERIFY(a.deleteNote(a.windowNamed(title)));
        QVERIFY2(eventually([&] { return !a.notes().contains(id); }), a.report().constData());
        const QString kept = merged.value(id) + u" and a lamp"_s;
        Computer::type(b.windowNamed(title), u" and a lamp"_s);
        QVERIFY2(eventually([&] { return b.notes().value(id) == kept; }), b.report().constData());
        QVERIFY(a.setSyncthingPaused(b, false));
        QVERIFY2(eventually([&] { return a.notes().value(id) == kept; }), a.report().constData());
        QVERIFY2(eventually([&] { return a.windowNames().contains(firstLine(kept)); }),
            a.report().constData());
        QVERIFY2(eventually([&] { return lines(a.notes()) == lines(b.notes()); }),
            (a.report() + '\n' + b.report()).constData());
        QVERIFY2(b.windowNames().contains(firstLine(kept)), b.report().constData());
    }
};

QTEST_MAIN(TestSNSyncIntegration)
#include "TestSNSyncIntegration.moc"
