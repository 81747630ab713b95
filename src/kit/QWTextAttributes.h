#pragma once

#include "kit/QWColor.h"
#include "kit/QWFont.h"

#include <QByteArray>
#include <QString>
#include <QTextFormat>

#include <optional>

class QWKeyedArchiver;
class QWKeyedUnarchiver;

// The character attributes of one run of rich text. Every attribute has an "unset" value (empty
// string, 0, false, no colour), so a default-constructed value means plain text in the
// surrounding font and colour.
class QWTextAttributes final
{
public:
    // Underline and strikethrough styles: a line style in the low byte, a pattern in the next
    // bits, and a by-word flag. The values are those that rich-text files and older notes use.
    enum LineStyle : int {
        LineStyleNone = 0x00,
        LineStyleSingle = 0x01,
        LineStyleThick = 0x02,
        LineStyleDouble = 0x09,

        LinePatternSolid = 0x0000,
        LinePatternDot = 0x0100,
        LinePatternDash = 0x0200,
        LinePatternDashDot = 0x0300,
        LinePatternDashDotDot = 0x0400,
        LinePatternWave = 0x1000,

        LineByWord = 0x8000,
    };
    static constexpr int lineStyleMask = 0x00FF;
    static constexpr int linePatternMask = 0x0700;

    // Properties a QTextCharFormat carries for what Qt's own formats cannot hold exactly.
    enum FormatProperty : int {
        ExactForegroundColorProperty = QTextFormat::UserProperty + 0x5601,
        ExactUnderlineStyleProperty,
        ExactStrikethroughStyleProperty,
        StrokeColorProperty,
        TagNameProperty,
        AttachmentFileNameProperty,
    };

    QWTextAttributes() = default;

    const QString &fontFamily() const { return m_fontFamily; }
    void setFontFamily(const QString &family) { m_fontFamily = family; }
    double fontSize() const { return m_fontSize; }
    void setFontSize(double pointSize) { m_fontSize = pointSize; }
    bool isBold() const { return m_bold; }
    void setBold(bool bold) { m_bold = bold; }
    bool isItalic() const { return m_italic; }
    void setItalic(bool italic) { m_italic = italic; }

    // The four font attributes together; hasFont() is false when none of them is set.
    bool hasFont() const;
    QWFont font() const;
    void setFont(const QWFont &font);

    const std::optional<QWColor> &foregroundColor() const { return m_foregroundColor; }
    void setForegroundColor(const std::optional<QWColor> &color) { m_foregroundColor = color; }
    int underlineStyle() const { return m_underlineStyle; }
    void setUnderlineStyle(int style) { m_underlineStyle = style; }
    int strikethroughStyle() const { return m_strikethroughStyle; }
    void setStrikethroughStyle(int style) { m_strikethroughStyle = style; }
    const std::optional<QWColor> &strokeColor() const { return m_strokeColor; }
    void setStrokeColor(const std::optional<QWColor> &color) { m_strokeColor = color; }
    const QString &link() const { return m_link; }
    void setLink(const QString &url) { m_link = url; }
    // The hashtag marker: the tag's text ("#work") on the characters of a tag occurrence.
    const QString &tagName() const { return m_tagName; }
    void setTagName(const QString &name) { m_tagName = name; }

    // An attachment is the bytes of an image file (PNG, JPEG) on one U+FFFC character.
    bool hasAttachment() const { return !m_attachment.isEmpty(); }
    const QByteArray &attachment() const { return m_attachment; }
    void setAttachment(const QByteArray &fileBytes) { m_attachment = fileBytes; }
    const QString &attachmentFileName() const { return m_attachmentFileName; }
    void setAttachmentFileName(const QString &name) { m_attachmentFileName = name; }

    bool isEmpty() const { return *this == QWTextAttributes(); }

    // The Qt underline style that shows a style value; NoUnderline only for 0.
    static QTextCharFormat::UnderlineStyle qtUnderlineStyle(int style);

    // The character format that shows these attributes, attachments left out: unset attributes
    // are left unset so that the document's default font and colour show through. The exact
    // values that Qt would round are kept in the FormatProperty properties.
    QTextCharFormat toCharFormat() const;
    // The attributes of a character format, attachments left out. Where the format was changed
    // after toCharFormat() (recoloured, underline switched), what is visible wins over the
    // exact values remembered in the custom properties.
    static QWTextAttributes fromCharFormat(const QTextCharFormat &format);

    // The keys of the attributes that are set, for an archive object that holds them.
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    // Reads what encodeWithCoder() wrote; keys of the wrong kind or with unusable values
    // are left unset.
    static QWTextAttributes decodeFromCoder(const QWKeyedUnarchiver &coder);

    friend bool operator==(const QWTextAttributes &, const QWTextAttributes &) = default;

private:
    QString m_fontFamily;
    double m_fontSize = 0.0;
    bool m_bold = false;
    bool m_italic = false;
    std::optional<QWColor> m_foregroundColor;
    int m_underlineStyle = LineStyleNone;
    int m_strikethroughStyle = LineStyleNone;
    std::optional<QWColor> m_strokeColor;
    QString m_link;
    QString m_tagName;
    QByteArray m_attachment;
    QString m_attachmentFileName;
};
