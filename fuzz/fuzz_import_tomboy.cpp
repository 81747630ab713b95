// Feeds arbitrary bytes to the reader of one Tomboy, Gnote or tomboy-ng .note file, as a
// damaged or hostile file in a notes folder would reach it. It must come back with a note or a
// problem, never both and never neither, and the note's text must be whole rich text.
#include "import/SNTomboyReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QDateTime fileTime = QDateTime::fromSecsSinceEpoch(1'600'000'000, Qt::UTC);
    const SNImportReadResult result
        = SNTomboyReader::readNote(bytes, QStringLiteral("a.note"), fileTime);
    if (result.notes.size() + result.problems.size() > 1)
        std::abort();
    for (const SNImportedNote &note : result.notes) {
        if (note.sourceId != QStringLiteral("a") || !note.dateModified || !note.dateCreated)
            std::abort();
        if (!note.text.runs().isEmpty() && note.text.runs().last().end() != note.text.length())
            std::abort();
    }
    return 0;
}
