// Feeds arbitrary bytes to the keyed archive reader and to every kit decoder, the way a
// damaged or hostile notes file would reach them.
#include "kit/QWColor.h"
#include "kit/QWFont.h"
#include "kit/QWKeyedUnarchiver.h"

#include <cstddef>
#include <cstdint>

namespace {

void decodeEverything(const QWArchiveValue &value, int nestedArchives)
{
    switch (value.kind()) {
    case QWArchiveValue::Kind::Object: {
        QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(value);
        QWKeyedUnarchiver::decodeObjectOfClass<QWFont>(value);
        QWKeyedUnarchiver::decodeObject(value);
        const QWKeyedUnarchiver coder(value);
        for (const QWArchiveValue::Entry &entry : value.entries()) {
            coder.decodeDoubleForKey(entry.first);
            coder.decodeDateForKey(entry.first);
            decodeEverything(entry.second, nestedArchives);
        }
        break;
    }
    case QWArchiveValue::Kind::Array:
        for (const QWArchiveValue &element : value.toArray())
            decodeEverything(element, nestedArchives);
        break;
    case QWArchiveValue::Kind::Data:
        // A note keeps its text as an archive inside the archive.
        if (nestedArchives < 2)
            decodeEverything(QWKeyedUnarchiver::parse(value.toData()).root, nestedArchives + 1);
        break;
    default:
        value.toDate();
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    decodeEverything(QWKeyedUnarchiver::parse(bytes).root, 0);
    return 0;
}
