#pragma once

#include "notes/SNStickyNoteManager.h"
#include "support/QWProgramDriver.h"
#include "support/QWProgramSession.h"
#include "support/QWTestFiles.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

// What the integration tests do to the built program as its user would, through xdotool, and
// how they read what it stored.

// Where a note window's close and settings buttons sit, from its top corners.
constexpr int buttonInset = 16;

// Starts the program and waits until each note it stored, or each welcome note of a first
// start, has its window; the program's process id, 0 when it does not get so far.
inline qint64 startShowingNotes(QWProgramSession &session, const QStringList &arguments = {})
{
    const QTemporaryDir empty;
    const bool stored = QFile::exists(session.notesFolder() + QStringLiteral("/stickies.db"));
    const qsizetype notes
        = SNStickyNoteManager(stored ? session.notesFolder() : empty.path()).notesArray().size();
    if (!session.start(arguments))
        return 0;
    const qint64 pid = session.program().processId();
    const auto shown = [&] { return QWProgramDriver::visibleWindows(pid).size() >= notes; };
    return QTest::qWaitFor(shown, 20000) ? pid : 0;
}

// The process's window shown since `before` was taken; empty when none comes.
inline QString windowAfter(qint64 pid, const QStringList &before)
{
    QString shown;
    const auto appeared = [&] {
        for (const QString &window : QWProgramDriver::visibleWindows(pid)) {
            if (!before.contains(window))
                shown = window;
        }
        return !shown.isEmpty();
    };
    return QTest::qWaitFor(appeared, 20000) ? shown : QString();
}

// The process's visible window with this frame; empty when there is none.
inline QString windowWithFrame(qint64 pid, const QRect &frame)
{
    for (const QString &window : QWProgramDriver::visibleWindows(pid)) {
        if (QWProgramDriver::windowGeometry(window) == frame)
            return window;
    }
    return QString();
}

// Presses keys one after the other, given as xdotool names them, separated by spaces.
inline void pressKeys(const QString &keys)
{
    QWProgramDriver::xdotool(
        QStringList { QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("80") }
        + keys.split(QLatin1Char(' ')));
}

inline void clickInWindow(const QString &window, int x, int y)
{
    QWProgramDriver::xdotool({ QStringLiteral("mousemove"), QStringLiteral("--window"), window,
        QString::number(x), QString::number(y), QStringLiteral("click"), QStringLiteral("1") });
}

// Types at the end of the note's text.
inline void typeInto(const QString &window, const QString &text)
{
    QWProgramDriver::xdotool(
        { QStringLiteral("windowactivate"), QStringLiteral("--sync"), window });
    pressKeys(QStringLiteral("ctrl+End"));
    QWProgramDriver::xdotool(
        { QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text });
}

// Makes a note with `--new-note` and types the text into it; its window, empty when none came.
inline QString makeNote(QWProgramSession &session, const QString &text)
{
    const qint64 pid = session.program().processId();
    const QStringList before = QWProgramDriver::visibleWindows(pid);
    if (session.runSecond({ QStringLiteral("--new-note") }) != 0)
        return QString();
    const QString note = windowAfter(pid, before);
    if (!note.isEmpty())
        typeInto(note, text);
    return note;
}

// Closes the note with its close button and answers "Delete Note" to the question that
// follows; false when no question came or the note stayed.
inline bool deleteNote(qint64 pid, const QString &window)
{
    const QStringList before = QWProgramDriver::visibleWindows(pid);
    QWProgramDriver::xdotool(
        { QStringLiteral("windowactivate"), QStringLiteral("--sync"), window });
    clickInWindow(window, buttonInset, buttonInset - 1);
    const QString question = windowAfter(pid, before);
    if (question.isEmpty())
        return false;
    // From the default button, Export, the next one is Delete Note.
    QWProgramDriver::xdotool(
        { QStringLiteral("windowactivate"), QStringLiteral("--sync"), question });
    pressKeys(QStringLiteral("Tab space"));
    return QTest::qWaitFor(
        [&] { return !QWProgramDriver::visibleWindows(pid).contains(window); }, 20000);
}

// The live notes of a store, by id, as another program reads them: the journal's records
// replayed over the notes file. The journal is read first: a compaction in between then only
// replays records that the new notes file already holds. Each note gives its text, or the
// value of another key; notes without text are left out.
inline QHash<QString, QString> storedNotes(
    const QString &folder, const QString &key = QStringLiteral("text"))
{
    static const char reader[] = R"(
import json, os, struct, sys
import cbor2

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
    length, _ = struct.unpack("<II", journal[position : position + 8])
    record = journal[position + 8 : position + 8 + length]
    # Records are appended whole: one being written is shorter than its length says.
    if len(record) < length:
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
        { QStringLiteral("-c"), QString::fromLatin1(reader), folder, key });
    if (!python.waitForFinished(20000) || python.exitCode() != 0)
        qFatal("python3 could not read the notes in %s: %s", qUtf8Printable(folder),
            python.readAllStandardError().constData());
    QHash<QString, QString> notes;
    const QJsonObject found = QJsonDocument::fromJson(python.readAllStandardOutput()).object();
    for (auto note = found.begin(); note != found.end(); ++note)
        notes.insert(note.key(), note.value().toString().trimmed());
    return notes;
}
