#pragma once

#include "kit/QWAttributedString.h"

#include <QByteArray>
#include <QString>

#include <functional>

// Writes rich text as an RTF document that word processors open with the same text and
// formatting: a font and a colour table, per run the font, size, bold, italic, underline,
// strikethrough and colour, links as HYPERLINK fields, every non-ASCII character as "\uN" with a
// Windows-1252 or "?" fallback, and image attachments as PNG or JPEG pictures. Nothing is
// written about the document itself (no information group, no page setup), so what opens it
// decides that.
//
// RTF has no room for a few attributes: the stroke colour, the hashtag marker, colour alpha,
// font sizes between half points, and the by-word flag or a pattern of underline and
// strikethrough styles it has no keyword for (the closest keyword is written).
class QWRtfWriter final
{
public:
    // For an RTFD package: the file name under which an attachment is stored beside the text,
    // or an empty string to leave the attachment out.
    using AttachmentNamer = std::function<QString(const QWTextAttributes &attachment)>;

    // The font of the text that names none.
    void setDefaultFontFamily(const QString &family) { m_defaultFontFamily = family; }
    // With a namer, attachments become references to files instead of embedded pictures.
    void setAttachmentNamer(AttachmentNamer namer) { m_attachmentNamer = std::move(namer); }

    QByteArray write(const QWAttributedString &text) const;

private:
    QString m_defaultFontFamily = QStringLiteral("Helvetica");
    AttachmentNamer m_attachmentNamer;
};
