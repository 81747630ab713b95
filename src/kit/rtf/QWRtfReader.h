#pragma once

#include "kit/rtf/QWRtfReadResult.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>

// Reads an RTF document into rich text: the characters with their font, size, bold, italic,
// underline, strikethrough, colour and links, PNG and JPEG pictures as attachments, and the
// text of lists and tables as plain paragraphs and tabs. Headers, footers, notes, style sheets
// and document information are left out. Any bytes may come in: the reader's memory stays
// proportional to the input, nesting is bounded, and a damaged document gives what could be
// read of it.
class QWRtfReader final
{
public:
    // Gives the bytes of an image file an RTFD package holds beside its "TXT.rtf", as PNG or
    // JPEG, or nothing.
    using AttachmentLoader = std::function<QByteArray(const QString &fileName)>;

    // Real documents nest a few dozen groups at most.
    static constexpr int maximumGroupDepth = 256;
    // 1638 points, the largest size word processors offer; larger "\fs" values are cut to it.
    static constexpr int maximumHalfPoints = 3276;

    // Without a loader the file references of an RTFD text ("\NeXTGraphic") are dropped.
    void setAttachmentLoader(AttachmentLoader loader) { m_attachmentLoader = std::move(loader); }

    QWRtfReadResult read(QByteArrayView rtf) const;

    // Whether the bytes begin an RTF document, white space and a UTF-8 byte order mark aside.
    static bool isRtf(QByteArrayView bytes);

private:
    AttachmentLoader m_attachmentLoader;
};
