// The notes archive: encoding and decoding, the part of a save the interface thread waits
// for, and tag lookup in a large index.
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

QList<std::shared_ptr<SNStickyNote>> makeNotes(int count, int textBytes)
{
    QList<std::shared_ptr<SNStickyNote>> notes;
    const QString sentence
        = QStringLiteral("Remember the milk, call Anna about #work, and water the plants. ");
    for (int i = 0; i < count; ++i) {
        QWMutableAttributedString text;
        QWTextAttributes plain;
        plain.setFontFamily(QStringLiteral("Helvetica Neue"));
        plain.setFontSize(14);
        QWTextAttributes bold = plain;
        bold.setBold(true);
        int index = 0;
        while (text.length() < textBytes)
            text.appendString(sentence, index++ % 3 == 0 ? bold : plain);
        auto note = std::make_shared<SNStickyNote>();
        note->setAttributedString(text.attributedString());
        note->setWindowFrame(QStringLiteral("{{%1, 100}, {240, 180}}").arg(i));
        note->setThemeName(QStringLiteral("SNYellowPadTheme"));
        notes.append(note);
    }
    return notes;
}

void encode(benchmark::State &state, int count, int textBytes)
{
    const QList<std::shared_ptr<SNStickyNote>> notes = makeNotes(count, textBytes);
    qsizetype bytes = 0;
    for (auto _ : state) {
        const QByteArray archive = QWKeyedArchiver::archivedDataWithRootObject(notes);
        bytes = archive.size();
        benchmark::DoNotOptimize(archive.data());
    }
    state.counters["archive_bytes"] = double(bytes);
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes);
}

void decode(benchmark::State &state, int count, int textBytes)
{
    const QByteArray archive
        = QWKeyedArchiver::archivedDataWithRootObject(makeNotes(count, textBytes));
    for (auto _ : state) {
        const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(archive);
        const auto notes
            = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNStickyNote>>(
                result.root);
        benchmark::DoNotOptimize(notes.size());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * archive.size());
}

void BM_Encode1000NotesOf1KB(benchmark::State &state)
{
    encode(state, 1000, 1000);
}
void BM_Decode1000NotesOf1KB(benchmark::State &state)
{
    decode(state, 1000, 1000);
}
void BM_Encode100NotesOf100KB(benchmark::State &state)
{
    encode(state, 100, 100 * 1000);
}
void BM_Decode100NotesOf100KB(benchmark::State &state)
{
    decode(state, 100, 100 * 1000);
}

// What the interface thread pays when a note's save delay fires: handing the save to a worker.
// A store over a folder that already holds the notes, as after a launch.
std::unique_ptr<SNStickyNoteManager> storeWithNotes(const QTemporaryDir &folder, int count)
{
    QFile file(folder.filePath(SNStickyNoteManager::databaseFileName));
    if (file.open(QIODevice::WriteOnly))
        file.write(QWKeyedArchiver::archivedDataWithRootObject(makeNotes(count, 1000)));
    file.close();
    return std::make_unique<SNStickyNoteManager>(folder.path());
}

void BM_SaveInBackgroundCallerCost1000Notes(benchmark::State &state)
{
    QTemporaryDir folder;
    const std::unique_ptr<SNStickyNoteManager> stored = storeWithNotes(folder, 1000);
    SNStickyNoteManager &store = *stored;
    const std::shared_ptr<SNStickyNote> note = store.notesArray().constFirst();
    for (auto _ : state) {
        store.noteDidChange(note);
        store.saveInBackground();
        state.PauseTiming();
        store.waitForBackgroundSaves();
        state.ResumeTiming();
    }
}

// Adding a note to a store of many (an import, a restore) costs the same whatever the store
// holds: compare the two sizes.
void addNotes(benchmark::State &state, int stored)
{
    QTemporaryDir folder;
    SNStickyNoteManager store(folder.path());
    for (const std::shared_ptr<SNStickyNote> &note : makeNotes(stored, 10))
        store.addNote(note);
    for (auto _ : state) {
        state.PauseTiming();
        // Empty notes, so that their removal leaves nothing in Recently Deleted.
        const QList<std::shared_ptr<SNStickyNote>> added = makeNotes(100, 0);
        state.ResumeTiming();
        for (const std::shared_ptr<SNStickyNote> &note : added)
            store.addNote(note);
        state.PauseTiming();
        for (const std::shared_ptr<SNStickyNote> &note : added)
            store.removeNote(note);
        store.save();
        state.ResumeTiming();
    }
}

void BM_Add100NotesTo100(benchmark::State &state)
{
    addNotes(state, 100);
}

void BM_Add100NotesTo10000(benchmark::State &state)
{
    addNotes(state, 10000);
}

void BM_TagLookupAmong10000Tags(benchmark::State &state)
{
    SNTagManager &index = SNTagManager::sharedManager();
    QList<std::shared_ptr<SNTag>> tags;
    for (int i = 0; i < 10000; ++i)
        tags.append(SNTag::tagWithNameColor(QStringLiteral("#tag%1").arg(i), QWColor::black()));
    index.addTags(tags);
    int i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(index.tagWithName(QStringLiteral("#tag%1").arg(i++ % 10000)));
    for (const std::shared_ptr<SNTag> &tag : tags)
        index.removeTag(tag);
}

} // namespace

BENCHMARK(BM_Encode1000NotesOf1KB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode1000NotesOf1KB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Encode100NotesOf100KB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode100NotesOf100KB)->Unit(benchmark::kMillisecond);
// Each iteration also waits, untimed, for the whole save: keep the count small.
BENCHMARK(BM_SaveInBackgroundCallerCost1000Notes)->Unit(benchmark::kMicrosecond)->Iterations(40);
BENCHMARK(BM_Add100NotesTo100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Add100NotesTo10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TagLookupAmong10000Tags)->Unit(benchmark::kNanosecond);
