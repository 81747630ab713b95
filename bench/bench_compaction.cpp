// Compaction (the whole archive written, the journal started anew) and loading, of 1,000 notes
// and of an archive holding 50 MB of pictures; beside them, the save of one note's change,
// which only appends to the journal whatever the archive holds.
#include "kit/QWAttributedString.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

const QString device = QStringLiteral("bench");

std::shared_ptr<SNStickyNote> textNote(int index, int textBytes)
{
    const QString sentence
        = QStringLiteral("Remember the milk, call Anna about #work, and water the plants. ");
    QString text = QStringLiteral("Note %1\n").arg(index);
    while (text.size() < textBytes)
        text += sentence;
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    note->setWindowFrame(QStringLiteral("{{%1, 100}, {240, 180}}").arg(index % 1000));
    return note;
}

// A photograph-like PNG of about a megabyte: noise does not compress.
QByteArray pictureFile(QRandomGenerator &random)
{
    QImage image(600, 450, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<quint32 *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = random.generate() | 0xFF000000u;
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return buffer.data();
}

std::shared_ptr<SNStickyNote> pictureNote(int index, const QByteArray &picture)
{
    QWTextAttributes attachment;
    attachment.setAttachment(picture);
    attachment.setAttachmentFileName(QStringLiteral("photo-%1.png").arg(index));
    const QString text = QStringLiteral("Photo %1\n").arg(index) + QChar(0xFFFC);
    auto note = SNStickyNote::note();
    note->setAttributedString(
        QWAttributedString(text, { QWTextRun { text.size() - 1, 1, attachment } }));
    return note;
}

// A folder whose archive holds the notes, compacted once (so that the backup of the day is
// made before the measurements), with an empty journal.
struct Folder
{
    QTemporaryDir directory;
    QString path() const { return directory.path() + QStringLiteral("/Vellumo"); }

    explicit Folder(const QList<std::shared_ptr<SNStickyNote>> &notes)
    {
        SNStickyNoteManager store(path(), device);
        for (const auto &note : store.notesArray())
            store.removeNote(note);
        for (const auto &note : notes)
            store.addNote(note);
        store.save();
        store.compact();
    }
    qint64 archiveBytes() const
    {
        return QFileInfo(path() + QLatin1Char('/') + SNStickyNoteManager::databaseFileName).size();
    }
};

QList<std::shared_ptr<SNStickyNote>> thousandNotes()
{
    QList<std::shared_ptr<SNStickyNote>> notes;
    for (int i = 0; i < 1000; ++i)
        notes.append(textNote(i, 1000));
    return notes;
}

QList<std::shared_ptr<SNStickyNote>> fiftyMegabytesOfPictures()
{
    QRandomGenerator random(50);
    QList<std::shared_ptr<SNStickyNote>> notes;
    qint64 bytes = 0;
    for (int i = 0; bytes < 50 * 1000 * 1000; ++i) {
        const QByteArray picture = pictureFile(random);
        bytes += picture.size();
        notes.append(pictureNote(i, picture));
    }
    // Beside them, notes of text, one of which is typed into.
    for (int i = 0; i < 20; ++i)
        notes.append(textNote(i, 200));
    return notes;
}

Folder &folderOf1000Notes()
{
    static Folder folder(thousandNotes());
    return folder;
}

Folder &folderOfPictures()
{
    static Folder folder(fiftyMegabytesOfPictures());
    return folder;
}

// One note changed, then compacted, or saved as a pause in typing saves it (appended to the
// journal and synced).
void writeOneChange(benchmark::State &state, Folder &folder, bool compaction)
{
    SNStickyNoteManager store(folder.path(), device);
    const std::shared_ptr<SNStickyNote> note = store.notesArray().constLast();
    for (auto _ : state) {
        note->setAttributedString(
            QWAttributedString(QStringLiteral("Typed %1").arg(state.iterations())));
        store.noteDidChange(note);
        if (!(compaction ? store.compact() : store.save()))
            state.SkipWithError("the notes could not be written");
    }
    // Leaves the folder compacted, as the loads expect.
    store.compact();
    state.counters["archive_bytes"] = double(folder.archiveBytes());
}

void load(benchmark::State &state, Folder &folder)
{
    for (auto _ : state) {
        SNStickyNoteManager store(folder.path(), device);
        benchmark::DoNotOptimize(store.notesArray().size());
    }
    state.counters["archive_bytes"] = double(folder.archiveBytes());
}

void BM_Compact1000Notes(benchmark::State &state)
{
    writeOneChange(state, folderOf1000Notes(), true);
}
void BM_Load1000Notes(benchmark::State &state)
{
    load(state, folderOf1000Notes());
}
void BM_SaveOneNoteAmong1000Notes(benchmark::State &state)
{
    writeOneChange(state, folderOf1000Notes(), false);
}
void BM_Compact50MBOfPictures(benchmark::State &state)
{
    writeOneChange(state, folderOfPictures(), true);
}
void BM_Load50MBOfPictures(benchmark::State &state)
{
    load(state, folderOfPictures());
}
void BM_SaveOneNoteBeside50MBOfPictures(benchmark::State &state)
{
    writeOneChange(state, folderOfPictures(), false);
}

} // namespace

BENCHMARK(BM_Compact1000Notes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load1000Notes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveOneNoteAmong1000Notes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Compact50MBOfPictures)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load50MBOfPictures)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveOneNoteBeside50MBOfPictures)->Unit(benchmark::kMillisecond);
