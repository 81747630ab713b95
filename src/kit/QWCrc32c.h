#pragma once

#include <QByteArrayView>

// CRC-32C (Castagnoli), the checksum that frames the journal's records: it finds torn and
// flipped bytes, which is all a record's frame asks of it. Not a defence against tampering.
class QWCrc32c final
{
public:
    QWCrc32c() = delete;

    static quint32 checksum(QByteArrayView data);
};
