#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QSize>

// The file bytes of a small image of one colour, in the given file format ("PNG", "JPEG"...),
// as rich text holds pictures.
inline QByteArray imageFileBytes(const QColor &color, const QSize &size, const char *format,
    QImage::Format pixels = QImage::Format_RGB32)
{
    QImage image(size, pixels);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}
