// How long other programs' notes take to come in: reading a Linux Mint notes.json and a Tomboy
// folder of many notes, and making store notes of what was read.
#include "import/SNImportLedger.h"
#include "import/SNMintStickyReader.h"
#include "import/SNNoteImporter.h"
#include "import/SNTomboyReader.h"
#include "notes/SNStickyNoteManager.h"
#include "tags/SNTagManager.h"
#include "themes/SNThemeManager.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// A notes.json of n notes in four groups, each with a checkbox, a bullet and bold words.
QByteArray mintNotes(int n)
{
    QByteArray json = "{";
    for (int group = 0; group < 4; ++group) {
        json += (group ? ",\"Group " : "\"Group ") + QByteArray::number(group) + "\": [";
        for (int i = group; i < n; i += 4) {
            json += (i == group ? "" : ",") + QByteArray("{\"x\": ") + QByteArray::number(i % 900)
                + ", \"y\": 40, \"width\": 250, \"height\": 200, \"color\": \"blue\", \"title\": "
                  "\"Note "
                + QByteArray::number(i)
                + "\", \"text\": \"#check:1Milk\\n#bullet:Eggs #tag:bold:now#tag:bold:\\nPrice "
                  "##3\"}";
        }
        json += "]";
    }
    return json + "}";
}

void BM_ReadMintNotes(benchmark::State &state)
{
    const QByteArray json = mintNotes(int(state.range(0)));
    for (auto _ : state) {
        const SNImportReadResult result = SNMintStickyReader::readNotesJson(json, std::nullopt);
        benchmark::DoNotOptimize(result.notes.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadMintNotes)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ReadTomboyFolder(benchmark::State &state)
{
    QTemporaryDir folder;
    for (int i = 0; i < state.range(0); ++i) {
        QFile file(folder.filePath(u"%1.note"_s.arg(i, 8, 10, QChar(u'0'))));
        file.open(QIODevice::WriteOnly);
        file.write("<?xml version=\"1.0\" encoding=\"utf-8\"?><note version=\"0.3\" "
                   "xmlns=\"http://beatniksoftware.com/tomboy\"><title>Note</title><text "
                   "xml:space=\"preserve\"><note-content version=\"0.1\">Note\n\n<bold>Milk</bold> "
                   "and <italic>eggs</italic>\n<list><list-item dir=\"ltr\">one\n</list-item>"
                   "<list-item dir=\"ltr\">two</list-item></list></note-content></text>"
                   "<last-change-date>2023-05-01T10:20:30.1234560+02:00</last-change-date>"
                   "<tags><tag>system:notebook:Home</tag></tags></note>");
    }
    const SNTomboyReader reader(SNTomboyReader::Program::Gnote);
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.read(folder.path()).notes.size());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadTomboyFolder)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Notes, themes for their colour, hashtags for their groups, the ledger: into a fresh store.
void BM_ImportIntoStore(benchmark::State &state)
{
    const SNImportReadResult read
        = SNMintStickyReader::readNotesJson(mintNotes(int(state.range(0))), std::nullopt);
    const SNMintStickyReader reader;
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir folder;
        SNStickyNoteManager store(folder.path() + u'/', u"device"_s);
        SNThemeManager themes(folder.path() + u"/User Themes/"_s);
        SNTagManager tags;
        SNImportLedger ledger(store.baseDatabasePath());
        SNNoteImporter importer(store, themes, tags, ledger,
            [&store](const std::shared_ptr<SNStickyNote> &note) { store.addNote(note); });
        state.ResumeTiming();
        benchmark::DoNotOptimize(importer.importNotes(reader, QString(), read).notes.size());
        store.save();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ImportIntoStore)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace
