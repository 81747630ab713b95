#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QSize>

// What the RTF codec needs to know of the image files that attachments hold: PNG and JPEG go
// into a file as they are, anything else an image reader understands goes in as PNG.
class QWRtfPicture final
{
public:
    enum class Format { Unknown, Png, Jpeg };

    static Format formatOf(QByteArrayView bytes);
    // Read from the file header only; an invalid size when the header does not tell.
    static QSize pixelSize(QByteArrayView bytes);
    // The bytes themselves for PNG and JPEG, other images converted to PNG, and nothing for
    // bytes that are no image.
    static QByteArray embeddable(const QByteArray &bytes);
};
