#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QSize>

// The file bytes of a small image of one colour, in the given file format ("PNG", "JPEG"...),
// as rich text holds pictures.
QByteArray imageFileBytes(const QColor &color, const QSize &size, const char *format,
    QImage::Format pixels = QImage::Format_RGB32);
