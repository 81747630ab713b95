#include "kit/rtf/QWRtfWriter.h"

#include "kit/rtf/QWRtfCodePage.h"
#include "kit/rtf/QWRtfField.h"
#include "kit/rtf/QWRtfPicture.h"
#include "kit/rtf/QWRtfReader.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using A = QWTextAttributes;

constexpr char16_t attachmentCharacter = 0xFFFC;
// Twips per pixel, taking pixels at 96 per inch as word processors do.
constexpr qint64 pictureTwipsPerPixel = 15;
// RTFD file references give their size in twips at 72 pixels per inch.
constexpr qint64 referenceTwipsPerPixel = 20;
constexpr qsizetype hexBytesPerLine = 64;

const char *underlineKeyword(int style)
{
    const int line = style & A::lineStyleMask;
    const bool thick = line == A::LineStyleThick;
    if (style & A::LinePatternWave)
        return line == A::LineStyleDouble ? "\\ululdbwave" : thick ? "\\ulhwave" : "\\ulwave";
    switch (style & A::linePatternMask) {
    case A::LinePatternDot:
        return thick ? "\\ulthd" : "\\uld";
    case A::LinePatternDash:
        return thick ? "\\ulthdash" : "\\uldash";
    case A::LinePatternDashDot:
        return thick ? "\\ulthdashd" : "\\uldashd";
    case A::LinePatternDashDotDot:
        return thick ? "\\ulthdashdd" : "\\uldashdd";
    default:
        break;
    }
    if (line == A::LineStyleDouble)
        return "\\uldb";
    if (thick)
        return "\\ulth";
    return (style & A::LineByWord) ? "\\ulw" : "\\ul";
}

int colorComponent(double value)
{
    if (!std::isfinite(value))
        return 0;
    return std::clamp(int(std::lround(value * 255.0)), 0, 255);
}

int colorKey(const QWColor &color)
{
    return (colorComponent(color.redComponent()) << 16)
        | (colorComponent(color.greenComponent()) << 8) | colorComponent(color.blueComponent());
}

int twips(int pixels, qint64 perPixel)
{
    return int(std::min<qint64>(pixels * perPixel, std::numeric_limits<int>::max()));
}

class Writer final
{
public:
    Writer(const QString &defaultFontFamily, const QWRtfWriter::AttachmentNamer &namer)
        : m_namer(namer)
    {
        m_fonts.append(defaultFontFamily);
        m_fontNumbers.insert(defaultFontFamily, 0);
    }

    QByteArray write(const QWAttributedString &text);

private:
    void collectTables(const QWAttributedString &text);
    void writeHeader();
    void writeRun(const QString &string, const QWTextRun &run);
    QByteArray formatWords(const A &attributes) const;
    void writeText(QStringView text);
    void writeCharacter(char16_t c);
    void writeName(QStringView name);
    void writeUnicode(char16_t c);
    void writeAttachment(const A &attributes);
    void writePicture(const A &attributes);
    void writeReference(const A &attributes);

    const QWRtfWriter::AttachmentNamer &m_namer;
    QStringList m_fonts;
    QHash<QString, int> m_fontNumbers;
    QList<int> m_colors;
    QHash<int, int> m_colorNumbers;
    QByteArray m_out;
    char16_t m_previous = 0;
    const QWRtfCodePage m_fallbackPage;
};

QByteArray Writer::write(const QWAttributedString &text)
{
    collectTables(text);
    m_out.reserve(text.length() + text.length() / 4 + 256);
    writeHeader();
    const QList<QWTextRun> &runs = text.runs();
    for (qsizetype i = 0; i < runs.size();) {
        const QString &link = runs.at(i).attributes.link();
        if (link.isEmpty()) {
            writeRun(text.string(), runs.at(i++));
            continue;
        }
        // Neighbouring runs with one target make one link.
        m_out.append("{\\field{\\*\\fldinst{");
        writeName(QWRtfField::instructionForLink(link));
        m_out.append("}}{\\fldrslt ");
        for (; i < runs.size() && runs.at(i).attributes.link() == link; ++i)
            writeRun(text.string(), runs.at(i));
        m_out.append("}}");
    }
    m_out.append("}\n");
    return m_out;
}

void Writer::collectTables(const QWAttributedString &text)
{
    for (const QWTextRun &run : text.runs()) {
        const QString &family = run.attributes.fontFamily();
        if (!family.isEmpty() && !m_fontNumbers.contains(family)) {
            m_fontNumbers.insert(family, int(m_fonts.size()));
            m_fonts.append(family);
        }
        if (const std::optional<QWColor> &color = run.attributes.foregroundColor()) {
            const int key = colorKey(*color);
            if (!m_colorNumbers.contains(key)) {
                // Entry 0 of the table is the automatic colour.
                m_colorNumbers.insert(key, int(m_colors.size()) + 1);
                m_colors.append(key);
            }
        }
    }
}

void Writer::writeHeader()
{
    m_out.append("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n{\\fonttbl");
    for (qsizetype i = 0; i < m_fonts.size(); ++i) {
        m_out.append("{\\f" + QByteArray::number(i) + "\\fnil\\fcharset0 ");
        writeName(m_fonts.at(i));
        m_out.append(";}");
    }
    m_out.append("}\n{\\colortbl;");
    for (const int key : std::as_const(m_colors)) {
        m_out.append("\\red" + QByteArray::number((key >> 16) & 0xFF) + "\\green"
            + QByteArray::number((key >> 8) & 0xFF) + "\\blue" + QByteArray::number(key & 0xFF)
            + ';');
    }
    m_out.append("}\n");
}

void Writer::writeRun(const QString &string, const QWTextRun &run)
{
    const QByteArray words = formatWords(run.attributes);
    if (!words.isEmpty())
        m_out.append('{' + words + ' ');
    const QStringView text = QStringView(string).sliced(run.location, run.length);
    if (run.attributes.hasAttachment()) {
        // Only U+FFFC stands for the image; other characters of the run are text.
        for (const QChar c : text) {
            if (c == QChar(attachmentCharacter))
                writeAttachment(run.attributes);
            else
                writeCharacter(c.unicode());
        }
    } else {
        writeText(text);
    }
    if (!words.isEmpty())
        m_out.append('}');
}

QByteArray Writer::formatWords(const A &attributes) const
{
    QByteArray words;
    if (!attributes.fontFamily().isEmpty())
        words += "\\f" + QByteArray::number(m_fontNumbers.value(attributes.fontFamily()));
    const double size = attributes.fontSize();
    if (std::isfinite(size) && size > 0.0) {
        const double halfPoints
            = std::clamp(std::round(size * 2.0), 1.0, double(QWRtfReader::maximumHalfPoints));
        words += "\\fs" + QByteArray::number(int(halfPoints));
    }
    if (attributes.isBold())
        words += "\\b";
    if (attributes.isItalic())
        words += "\\i";
    if (attributes.underlineStyle() != A::LineStyleNone)
        words += underlineKeyword(attributes.underlineStyle());
    if (attributes.strikethroughStyle() != A::LineStyleNone) {
        const bool isDouble
            = (attributes.strikethroughStyle() & A::lineStyleMask) == A::LineStyleDouble;
        words += isDouble ? "\\striked1" : "\\strike";
    }
    if (const std::optional<QWColor> &color = attributes.foregroundColor())
        words += "\\cf" + QByteArray::number(m_colorNumbers.value(colorKey(*color)));
    return words;
}

void Writer::writeText(QStringView text)
{
    for (const QChar c : text)
        writeCharacter(c.unicode());
}

void Writer::writeCharacter(char16_t c)
{
    const char16_t previous = std::exchange(m_previous, c);
    if (c >= 0x20 && c < 0x7F) {
        if (c == u'\\' || c == u'{' || c == u'}')
            m_out.append('\\');
        m_out.append(char(c));
        return;
    }
    switch (c) {
    case u'\n':
        if (previous != u'\r')
            m_out.append("\\par\n");
        return;
    case u'\r':
    case 0x2029: // paragraph separator
        m_out.append("\\par\n");
        return;
    case 0x2028: // line separator
    case 0x0B: // vertical tab, which some editors use for a line break
        m_out.append("\\line ");
        return;
    case u'\t':
        m_out.append("\\tab ");
        return;
    default:
        break;
    }
    if (c < 0x20 || c == 0x7F)
        return; // other control characters have no place in a document
    writeUnicode(c);
}

// Font names, link targets and file names are read as plain strings, where control words such
// as "\line" mean nothing: every character that is not printable ASCII is a "\uN".
void Writer::writeName(QStringView name)
{
    for (const QChar c : name) {
        const char16_t u = c.unicode();
        if (u == u';') // a plain one ends a font name
            writeUnicode(u);
        else if (u >= 0x20 && u < 0x7F)
            writeCharacter(u);
        else if (u > 0x7F)
            writeUnicode(u);
    }
}

void Writer::writeUnicode(char16_t c)
{
    // "\uN" takes a signed 16-bit number. The fallback for readers without Unicode is the
    // Windows-1252 byte or "?", always hex-escaped: some readers drop the space after a plain "?".
    m_out.append("\\u" + QByteArray::number(int(c > 0x7FFF ? c - 0x10000 : c)));
    const std::optional<unsigned char> fallback = m_fallbackPage.fromUnicode(c);
    m_out.append("\\'");
    m_out.append(QByteArray::number(fallback && *fallback >= 0x80 ? *fallback : '?', 16));
}

void Writer::writeAttachment(const A &attributes)
{
    if (m_namer)
        writeReference(attributes);
    else
        writePicture(attributes);
    m_previous = attachmentCharacter;
}

void Writer::writePicture(const A &attributes)
{
    const QByteArray bytes = QWRtfPicture::embeddable(attributes.attachment());
    if (bytes.isEmpty())
        return;
    m_out.append("{\\pict");
    if (!attributes.attachmentFileName().isEmpty()) {
        // The picture's shape name, which word processors show as the image name.
        m_out.append("{\\*\\picprop{\\sp{\\sn wzName}{\\sv ");
        writeName(attributes.attachmentFileName());
        m_out.append("}}}");
    }
    if (const QSize size = QWRtfPicture::pixelSize(bytes); size.isValid()) {
        m_out.append("\\picw" + QByteArray::number(size.width()) + "\\pich"
            + QByteArray::number(size.height()) + "\\picwgoal"
            + QByteArray::number(twips(size.width(), pictureTwipsPerPixel)) + "\\pichgoal"
            + QByteArray::number(twips(size.height(), pictureTwipsPerPixel)));
    }
    m_out.append(
        QWRtfPicture::formatOf(bytes) == QWRtfPicture::Format::Png ? "\\pngblip" : "\\jpegblip");
    for (qsizetype at = 0; at < bytes.size(); at += hexBytesPerLine) {
        m_out.append('\n');
        m_out.append(bytes.sliced(at, std::min(hexBytesPerLine, bytes.size() - at)).toHex());
    }
    m_out.append('}');
}

void Writer::writeReference(const A &attributes)
{
    const QString name = m_namer(attributes);
    if (name.isEmpty())
        return;
    m_out.append("{{\\NeXTGraphic ");
    writeName(name);
    if (const QSize size = QWRtfPicture::pixelSize(attributes.attachment()); size.isValid()) {
        m_out.append(" \\width" + QByteArray::number(twips(size.width(), referenceTwipsPerPixel))
            + " \\height" + QByteArray::number(twips(size.height(), referenceTwipsPerPixel)));
    }
    // The character that stands for the attachment in the text.
    m_out.append("}\\uc0\\u-4 }");
}

} // namespace

QByteArray QWRtfWriter::write(const QWAttributedString &text) const
{
    return Writer(m_defaultFontFamily, m_attachmentNamer).write(text);
}
