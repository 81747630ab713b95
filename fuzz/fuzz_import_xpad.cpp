// Feeds arbitrary bytes to the xpad reader as a pad's files: the info file up to the first NUL,
// the content file after it, default-style after a second NUL. No markup character may remain
// in the text: each one either opens or closes a tag name.
#include "import/SNXpadMarkup.h"
#include "import/SNXpadReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QList<QByteArray> parts = bytes.split('\0');
    std::optional<QByteArray> defaultStyle;
    if (parts.size() > 2)
        defaultStyle = parts[2];
    const SNImportedNote pad = SNXpadReader::padFromFiles(parts[0], parts.value(1), defaultStyle);
    if (pad.text.string().contains(QChar(0xE000)) || !pad.backgroundColor || !pad.textColor)
        std::abort();
    if (SNXpadMarkup::parse(QString::fromUtf8(bytes)).string().contains(QChar(0xE000)))
        std::abort();
    return 0;
}
