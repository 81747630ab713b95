// Feeds arbitrary bytes to the GNOME Sticky Notes reader, as one note's file and as the old
// notes.json.
#include "import/SNGnomeStickyReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const SNImportReadResult one
        = SNGnomeStickyReader::readNoteJson(bytes, QStringLiteral("note.json"), std::nullopt);
    if (one.notes.size() + one.problems.size() != 1)
        std::abort();
    const SNImportReadResult all = SNGnomeStickyReader::readLegacyNotesJson(bytes, std::nullopt);
    for (const SNImportedNote &note : all.notes) {
        if (note.sourceId.isEmpty() || !note.backgroundColor)
            std::abort();
    }
    return 0;
}
