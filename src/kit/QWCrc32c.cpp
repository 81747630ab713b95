#include "kit/QWCrc32c.h"

#include <array>

namespace {

// The reflected Castagnoli polynomial.
constexpr quint32 polynomial = 0x82F63B78u;

constexpr std::array<quint32, 256> makeTable()
{
    std::array<quint32, 256> table {};
    for (quint32 byte = 0; byte < 256; ++byte) {
        quint32 crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1u) ? (crc >> 1) ^ polynomial : crc >> 1;
        table[byte] = crc;
    }
    return table;
}

constexpr std::array<quint32, 256> table = makeTable();

} // namespace

quint32 QWCrc32c::checksum(QByteArrayView data)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : data)
        crc = table[(crc ^ quint8(byte)) & 0xFFu] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFu;
}
