// Feeds arbitrary bytes to the RTF reader, the way a damaged or hostile file opened with the
// application would reach it. What the reader makes of them must survive our own writer: read
// back, it is the same text, so the writer can hold everything the reader produces.
#include "kit/rtf/QWRtfReader.h"
#include "kit/rtf/QWRtfWriter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QWRtfReadResult first = QWRtfReader().read(bytes);
    if (first.error == QWRtfReadResult::Error::NotRtf && !first.text.isEmpty())
        std::abort();

    const QByteArray rtf = QWRtfWriter().write(first.text);
    const QWRtfReadResult again = QWRtfReader().read(rtf);
    if (!again.isOk() || !(again.text == first.text)) {
        std::fprintf(stderr, "written and read again, the text differs:\n%s\n", rtf.constData());
        std::abort();
    }
    return 0;
}
