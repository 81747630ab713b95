// Feeds arbitrary bytes to the indicator-stickynotes reader as its settings file, and its first
// 24 bytes as the hue, saturation and value of a category's colour.
#include "import/SNIndicatorStickynotesReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const SNImportReadResult result
        = SNIndicatorStickynotesReader::readSettingsJson(bytes, std::nullopt);
    for (const SNImportedNote &note : result.notes) {
        if (note.sourceId.isEmpty() || !note.backgroundColor || !note.textColor)
            std::abort();
    }
    if (size >= 3 * sizeof(double)) {
        double hsv[3];
        std::memcpy(hsv, data, sizeof hsv);
        if (!SNIndicatorStickynotesReader::colorFromHsv(hsv[0], hsv[1], hsv[2]).isValid())
            std::abort();
    }
    return 0;
}
