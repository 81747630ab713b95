// Feeds arbitrary bytes to the Linux Mint Sticky Notes reader, as a whole notes.json and as the
// markup of one note's text.
#include "import/SNMintStickyMarkup.h"
#include "import/SNMintStickyReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const SNImportReadResult result = SNMintStickyReader::readNotesJson(bytes, std::nullopt);
    for (const SNImportedNote &note : result.notes) {
        if (note.sourceId.isEmpty() || !note.backgroundColor || note.tags.size() != 1)
            std::abort();
    }
    const QString markup = QString::fromUtf8(bytes);
    // Markup only ever shortens the text, but for the space after a checkbox or bullet.
    if (SNMintStickyMarkup::parse(markup).length() > markup.size() * 2)
        std::abort();
    return 0;
}
