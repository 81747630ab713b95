// Sharing notes through a sync folder: the first merge of what 10 computers wrote, 10,000
// records each, and the time from one record landing in the folder to its merge reaching the
// store (the file-system watcher, the wait for the burst to end, the read and the merge).
#include "notes/SNJournalRecord.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncFolder.h"
#include "notes/SNSyncSession.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QUuid>

#include <benchmark/benchmark.h>

namespace {

constexpr int devices = 10;
constexpr int recordsPerDevice = 10000;
constexpr int editsPerNote = 10;

std::shared_ptr<SNStickyNote> noteOf(const QUuid &uuid, const QString &device, int edit)
{
    auto note = SNStickyNote::note();
    note->setUuid(uuid);
    note->setAttributedString(QWAttributedString(
        QStringLiteral("Note %1 of %2, edit %3: a line of ordinary length to type")
            .arg(uuid.toString(QUuid::WithoutBraces).left(8), device)
            .arg(edit)));
    SNNoteVersion version;
    version.stamp = { 1'700'000'000'000 + edit, 0, device };
    version.lookStamp = version.stamp;
    version.textEdits[device] = edit;
    note->setVersion(version);
    return note;
}

// A folder as 10 computers left it: each made 1,000 notes and edited each 10 times.
const QTemporaryDir &sharedFolder()
{
    static QTemporaryDir folder;
    static bool written = false;
    if (!written) {
        for (int device = 0; device < devices; ++device) {
            const QString id = QStringLiteral("device-%1").arg(device);
            SNSyncFolder writer(folder.path(), id);
            writer.writeDescription(id, id);
            QList<QByteArray> records;
            QList<QUuid> notes;
            for (int note = 0; note < recordsPerDevice / editsPerNote; ++note)
                notes.append(QUuid::createUuid());
            for (int edit = 1; edit <= editsPerNote; ++edit) {
                for (const QUuid &uuid : std::as_const(notes)) {
                    const auto note = noteOf(uuid, id, edit);
                    records.append(SNJournalRecord::saving(note).archivedData());
                    note->didDelete();
                }
            }
            writer.rewriteOwnJournal([&records](const QList<QByteArray> &) { return records; });
        }
        written = true;
    }
    return folder;
}

void BM_MergeTenDevices(benchmark::State &state)
{
    const QTemporaryDir &folder = sharedFolder();
    qsizetype notes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir home;
        auto store = std::make_unique<SNStickyNoteManager>(home.path(), QStringLiteral("here"));
        SNSyncSession session(*store, folder.path());
        state.ResumeTiming();
        session.start(QStringLiteral("here"), QStringLiteral("here"));
        state.PauseTiming();
        notes = store->notesArray().size();
        store->waitForBackgroundSaves();
        state.ResumeTiming();
    }
    state.counters["notes"] = double(notes);
    state.counters["records"] = double(devices * recordsPerDevice);
}
BENCHMARK(BM_MergeTenDevices)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void BM_RecordLandingToMerge(benchmark::State &state)
{
    const QTemporaryDir &folder = sharedFolder();
    QTemporaryDir home;
    SNStickyNoteManager store(home.path(), QStringLiteral("here"));
    SNSyncSession session(store, folder.path());
    session.start(QStringLiteral("here"), QStringLiteral("here"));
    SNSyncFolder landing(folder.path(), QStringLiteral("device-3"));
    bool merged = false;
    QObject::connect(&session, &SNSyncSession::notesMerged,
        [&merged](const SNRecordMerger::Result &) { merged = true; });
    int edit = editsPerNote;
    for (auto _ : state) {
        merged = false;
        const auto note = noteOf(QUuid::createUuid(), QStringLiteral("device-3"), ++edit);
        landing.appendOwn({ SNJournalRecord::saving(note).archivedData() });
        note->didDelete();
        QElapsedTimer waited;
        waited.start();
        while (!merged && waited.elapsed() < 60000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
}
BENCHMARK(BM_RecordLandingToMerge)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

} // namespace
