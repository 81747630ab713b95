#include "support/QWTestImages.h"

#include <QBuffer>

QByteArray imageFileBytes(
    const QColor &color, const QSize &size, const char *format, QImage::Format pixels)
{
    QImage image(size, pixels);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}
