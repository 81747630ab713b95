#include "kit/rtf/QWRtfPicture.h"

#include <QBuffer>
#include <QImage>

namespace {

quint32 bigEndian(QByteArrayView bytes, qsizetype at, int width)
{
    quint32 value = 0;
    for (int i = 0; i < width; ++i)
        value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

QSize validSize(quint32 width, quint32 height)
{
    constexpr quint32 limit = 1u << 30;
    if (width == 0 || height == 0 || width > limit || height > limit)
        return {};
    return QSize(int(width), int(height));
}

QSize pngSize(QByteArrayView bytes)
{
    // The signature, then the IHDR chunk: length, type, width, height.
    if (bytes.size() < 24 || bytes.sliced(12, 4) != "IHDR")
        return {};
    return validSize(bigEndian(bytes, 16, 4), bigEndian(bytes, 20, 4));
}

bool isStartOfFrame(unsigned char marker)
{
    // SOF0 to SOF15, without DHT (C4), JPG (C8) and DAC (CC), which share the range.
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

QSize jpegSize(QByteArrayView bytes)
{
    qsizetype at = 2;
    while (at + 4 <= bytes.size()) {
        if (static_cast<unsigned char>(bytes[at]) != 0xFF)
            return {};
        const auto marker = static_cast<unsigned char>(bytes[at + 1]);
        if (marker == 0xFF) { // fill byte
            ++at;
            continue;
        }
        if (marker == 0xD8 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
            at += 2; // markers without a segment
            continue;
        }
        if (marker == 0xD9 || marker == 0xDA) // end of image, start of scan: no frame header
            return {};
        const quint32 length = bigEndian(bytes, at + 2, 2);
        if (isStartOfFrame(marker)) {
            if (at + 9 > bytes.size())
                return {};
            return validSize(bigEndian(bytes, at + 7, 2), bigEndian(bytes, at + 5, 2));
        }
        if (length < 2)
            return {};
        at += 2 + length;
    }
    return {};
}

} // namespace

QWRtfPicture::Format QWRtfPicture::formatOf(QByteArrayView bytes)
{
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return Format::Png;
    if (bytes.startsWith("\xff\xd8\xff"))
        return Format::Jpeg;
    return Format::Unknown;
}

QSize QWRtfPicture::pixelSize(QByteArrayView bytes)
{
    switch (formatOf(bytes)) {
    case Format::Png:
        return pngSize(bytes);
    case Format::Jpeg:
        return jpegSize(bytes);
    case Format::Unknown:
        break;
    }
    return {};
}

QByteArray QWRtfPicture::embeddable(const QByteArray &bytes)
{
    if (formatOf(bytes) != Format::Unknown)
        return bytes;
    const QImage image = QImage::fromData(bytes);
    QByteArray png;
    QBuffer buffer(&png);
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        return {};
    return png;
}
