#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The bytes of a picture an RTF document holds ("\pict"), given as hex digits, as "\bin"
// data, or both. Anything between the digits (line breaks, stray letters) is passed over.
class QWRtfPictureData final
{
public:
    void clear();
    void appendHexDigits(QByteArrayView hex);
    void appendBinary(QByteArrayView bytes);
    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    int m_nibble = -1; // the first digit of a byte whose second is still to come
};
