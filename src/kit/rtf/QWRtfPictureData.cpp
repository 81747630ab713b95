#include "kit/rtf/QWRtfPictureData.h"

void QWRtfPictureData::clear()
{
    m_bytes = QByteArray();
    m_nibble = -1;
}

void QWRtfPictureData::appendHexDigits(QByteArrayView hex)
{
    for (const char c : hex) {
        int value = -1;
        if (c >= '0' && c <= '9')
            value = c - '0';
        else if (c >= 'a' && c <= 'f')
            value = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            value = c - 'A' + 10;
        if (value < 0)
            continue;
        if (m_nibble < 0) {
            m_nibble = value;
        } else {
            m_bytes.append(char(m_nibble * 16 + value));
            m_nibble = -1;
        }
    }
}

void QWRtfPictureData::appendBinary(QByteArrayView bytes)
{
    m_bytes.append(bytes);
    m_nibble = -1;
}
