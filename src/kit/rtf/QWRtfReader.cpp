#include "kit/rtf/QWRtfReader.h"

#include "kit/rtf/QWRtfCodePage.h"
#include "kit/rtf/QWRtfField.h"
#include "kit/rtf/QWRtfKeyword.h"
#include "kit/rtf/QWRtfPicture.h"
#include "kit/rtf/QWRtfTokenizer.h"

#include <QHash>
#include <QList>

#include <algorithm>
#include <optional>
#include <utility>

namespace {

using A = QWTextAttributes;
using Token = QWRtfTokenizer::Token;
using Keyword = QWRtfKeyword;
using Action = QWRtfKeyword::Action;

// Names of fonts, shape properties and attachment files are short; anything longer is damage.
constexpr qsizetype maximumNameLength = 1024;
constexpr qsizetype maximumInstructionLength = 8192;
constexpr char16_t attachmentCharacter = 0xFFFC;

// Where the text of a group goes.
enum class Destination {
    Text,
    Skip,
    FontTable,
    ColorTable,
    FieldInstruction,
    Picture, // hex digits or "\bin" data of an image
    PictureProperty, // shape properties of a picture, for its name
    ShapePropertyName,
    ShapePropertyValue,
    AttachmentName, // an RTFD file reference
    UnicodePair, // "\upr": only the Unicode half ("\ud") is read
};

// Destinations whose text is a name or an instruction, which "\uN" may spell.
bool collectsText(Destination destination)
{
    return destination == Destination::FontTable || destination == Destination::FieldInstruction
        || destination == Destination::ShapePropertyName
        || destination == Destination::ShapePropertyValue
        || destination == Destination::AttachmentName;
}

bool isBreak(char16_t c)
{
    return c == u'\n' || c == u'\t' || c == 0x2028;
}

struct CharacterFormat
{
    int font = -1; // none given: the reader's default font shows
    int halfPoints = 0;
    bool bold = false;
    bool italic = false;
    int underline = A::LineStyleNone;
    int strikethrough = A::LineStyleNone;
    int color = -1;
    bool hidden = false;
};

struct Group
{
    Destination destination = Destination::Text;
    CharacterFormat format;
    int unicodeSkip = 1; // "\ucN": fallback characters after each "\uN"
    int field = -1;
    QString link;
    bool inTable = false; // "\intbl": the paragraph is part of a table cell
    // An RTFD file reference is followed by one character standing for the attachment.
    bool dropPlaceholder = false;
};

struct Font
{
    QString name;
    std::optional<QWRtfCodePage> codePage;
};

class Parser final
{
public:
    Parser(QByteArrayView input, const QWRtfReader::AttachmentLoader &loader)
        : m_tokenizer(input), m_loader(loader)
    { }

    QWRtfReadResult run();

private:
    using Error = QWRtfReadResult::Error;

    Group &group() { return m_groups.last(); }
    bool startGroup();
    void endGroup();
    void finishDestination(const Group &ended);
    void controlWord(const Token &token);
    bool applyKeyword(const Keyword &keyword, const Token &token);
    bool applyInDestination(const Keyword &keyword, const Token &token);
    void applyFormat(const Keyword &keyword, const Token &token);
    void controlSymbol(char symbol);
    void text(QByteArrayView bytes);
    void binary(QByteArrayView bytes);
    void byte(unsigned char byte);
    // Separators of the font and colour tables count only as plain text, not as "\uN".
    void character(char16_t c, bool isPlainText = false);
    QWRtfCodePage codePage();

    void output(char16_t c);
    void outputAttachment(const QByteArray &bytes, const QString &name);
    void flushTable();
    void append(char16_t c);
    void appendPlain(QByteArrayView ascii);
    QWTextAttributes currentAttributes();

    void defineFont(int number);
    void commitFont();
    void commitColor();
    void pictureData(QByteArrayView hex);

    QWRtfTokenizer m_tokenizer;
    const QWRtfReader::AttachmentLoader &m_loader;
    QList<Group> m_groups;
    bool m_afterGroupStart = false;
    bool m_ignorableNext = false;
    int m_fallbackLeft = 0;

    QWRtfCodePage m_documentPage;
    int m_defaultFont = 0;
    QHash<int, Font> m_fonts;
    int m_fontNumber = -1;
    QString m_fontName;
    std::optional<QWRtfCodePage> m_fontPage;
    QList<std::optional<QWColor>> m_colors;
    int m_components[3] = { -1, -1, -1 };
    QList<QString> m_fieldInstructions;
    QByteArray m_picture;
    int m_pictureNibble = -1;
    QString m_pictureName;
    QString m_shapePropertyName;
    QString m_shapePropertyValue;
    QString m_attachmentName;
    int m_pendingCells = 0;
    int m_pendingBreaks = 0;

    QString m_text;
    QList<QWTextRun> m_runs;
    QWTextAttributes m_attributes;
    bool m_attributesStale = true;
    bool m_lastRunMatches = false;
};

QWRtfReadResult Parser::run()
{
    Error error = Error::None;
    for (;;) {
        const Token token = m_tokenizer.next();
        const bool groupStart = token.type == Token::Type::GroupStart;
        switch (token.type) {
        case Token::Type::End:
            error = Error::Truncated;
            break;
        case Token::Type::GroupStart:
            if (!startGroup())
                error = Error::NestingTooDeep;
            break;
        case Token::Type::GroupEnd:
            endGroup();
            break;
        case Token::Type::ControlWord:
            controlWord(token);
            break;
        case Token::Type::ControlSymbol:
            controlSymbol(token.symbol);
            break;
        case Token::Type::Text:
            text(token.bytes);
            break;
        case Token::Type::HexByte:
            byte(static_cast<unsigned char>(token.symbol));
            break;
        case Token::Type::Binary:
            binary(token.bytes);
            break;
        }
        m_afterGroupStart = groupStart;
        if (error != Error::None || m_groups.isEmpty())
            break;
    }
    if (error == Error::None && m_tokenizer.binaryWasTruncated())
        error = Error::Truncated;
    return { QWAttributedString(m_text, std::move(m_runs)), error };
}

bool Parser::startGroup()
{
    if (m_groups.size() >= QWRtfReader::maximumGroupDepth)
        return false;
    m_groups.append(m_groups.isEmpty() ? Group() : group());
    group().dropPlaceholder = false;
    m_fallbackLeft = 0;
    return true;
}

void Parser::endGroup()
{
    m_fallbackLeft = 0;
    m_ignorableNext = false;
    m_attributesStale = true;
    const Group ended = m_groups.takeLast();
    if (m_groups.isEmpty())
        return;
    if (ended.destination != group().destination)
        finishDestination(ended);
    else if (ended.destination == Destination::FontTable)
        commitFont(); // "{\f1 Name}" without the semicolon
}

void Parser::finishDestination(const Group &ended)
{
    const bool inText = group().destination == Destination::Text && !group().format.hidden;
    switch (ended.destination) {
    case Destination::FontTable:
        commitFont();
        break;
    case Destination::Picture:
        if (inText && QWRtfPicture::formatOf(m_picture) != QWRtfPicture::Format::Unknown)
            outputAttachment(m_picture, m_pictureName);
        m_picture = QByteArray();
        break;
    case Destination::ShapePropertyValue:
        if (m_shapePropertyName == u"wzName")
            m_pictureName = m_shapePropertyValue.trimmed();
        break;
    case Destination::AttachmentName: {
        const QString name = m_attachmentName.trimmed();
        if (inText && m_loader && !name.isEmpty()) {
            const QByteArray bytes = m_loader(name);
            if (QWRtfPicture::formatOf(bytes) != QWRtfPicture::Format::Unknown)
                outputAttachment(bytes, name);
        }
        group().dropPlaceholder = true;
        break;
    }
    default:
        break;
    }
}

void Parser::controlWord(const Token &token)
{
    if (m_fallbackLeft > 0) {
        --m_fallbackLeft; // whatever stands in for a "\uN" character is skipped whole
        return;
    }
    const bool ignorable = std::exchange(m_ignorableNext, false);
    const Destination destination = group().destination;
    if (destination == Destination::Skip)
        return;
    const Keyword *keyword = QWRtfKeyword::find(token.bytes);
    const bool read = keyword && applyKeyword(*keyword, token);
    // "\*" marks a destination that a reader may skip when it does not know it.
    if (ignorable && !read)
        group().destination = Destination::Skip;
}

// Returns whether the keyword opened a destination that is read.
bool Parser::applyKeyword(const Keyword &keyword, const Token &token)
{
    const Destination destination = group().destination;
    const bool spellsText
        = keyword.action == Action::Unicode || keyword.action == Action::UnicodeSkip;
    if (destination != Destination::Text && !(spellsText && collectsText(destination)))
        return applyInDestination(keyword, token);

    Group &current = group();
    const int parameter = token.parameter;
    switch (keyword.action) {
    case Action::CodePage:
    case Action::AnsiCodePage: {
        const int number = keyword.action == Action::CodePage ? keyword.value : parameter;
        m_documentPage = QWRtfCodePage::fromNumber(number).value_or(m_documentPage);
        return false;
    }
    case Action::DefaultFont:
        m_defaultFont = parameter;
        return false;
    case Action::SkipDestination:
        current.destination = Destination::Skip;
        return false;
    case Action::FontTable:
        current.destination = Destination::FontTable;
        m_fontNumber = -1;
        m_fontName.clear();
        return true;
    case Action::ColorTable:
        current.destination = Destination::ColorTable;
        return true;
    case Action::Picture:
        current.destination = Destination::Picture;
        m_picture.clear();
        m_pictureNibble = -1;
        m_pictureName.clear();
        return true;
    case Action::Field:
        current.field = int(m_fieldInstructions.size());
        m_fieldInstructions.append(QString());
        return false;
    case Action::FieldInstruction:
        current.destination
            = current.field >= 0 ? Destination::FieldInstruction : Destination::Skip;
        return true;
    case Action::FieldResult:
        if (current.field >= 0) {
            const QString link
                = QWRtfField::linkFromInstruction(m_fieldInstructions[current.field]);
            if (!link.isEmpty())
                current.link = link;
            m_fieldInstructions[current.field].clear();
            m_attributesStale = true;
        }
        return true;
    case Action::AttachmentName:
        current.destination = Destination::AttachmentName;
        m_attachmentName.clear();
        return true;
    case Action::UnicodePair:
        current.destination = Destination::UnicodePair;
        return true;
    case Action::ReadThrough:
        return true;
    case Action::Character:
        character(char16_t(keyword.value));
        return false;
    case Action::ParagraphDefaults:
        current.inTable = false;
        return false;
    case Action::InTable:
        current.inTable = true;
        return false;
    case Action::Paragraph:
        // The last paragraph of a cell ends with the cell, not with a line of its own.
        if (current.inTable && !current.format.hidden)
            ++m_pendingBreaks;
        else
            character(u'\n');
        return false;
    case Action::Cell:
        if (!current.format.hidden) {
            m_pendingBreaks = 0;
            ++m_pendingCells;
        }
        return false;
    case Action::Row:
        if (!current.format.hidden) {
            m_pendingCells = 0;
            m_pendingBreaks = 0;
            output(u'\n');
        }
        return false;
    case Action::Unicode: {
        const int value = parameter < 0 ? parameter + 0x10000 : parameter;
        if (token.hasParameter && value >= 0 && value <= 0xFFFF)
            character(char16_t(value));
        m_fallbackLeft = current.unicodeSkip;
        return false;
    }
    case Action::UnicodeSkip:
        // Real writers use 0 to 2; the bound keeps a hostile value from eating the document.
        current.unicodeSkip = std::clamp(parameter, 0, 16);
        return false;
    default:
        applyFormat(keyword, token);
        return false;
    }
}

// Inside the tables and pictures only their own keywords count.
bool Parser::applyInDestination(const Keyword &keyword, const Token &token)
{
    Group &current = group();
    const Action action = keyword.action;
    const int parameter = token.parameter;
    switch (current.destination) {
    case Destination::FontTable:
        if (action == Action::Font)
            defineFont(token.hasParameter ? parameter : -1);
        else if (action == Action::FontCharset && !m_fontPage)
            m_fontPage = QWRtfCodePage::fromCharset(parameter);
        else if (action == Action::FontCodePage && QWRtfCodePage::fromNumber(parameter))
            m_fontPage = QWRtfCodePage::fromNumber(parameter);
        return false;
    case Destination::ColorTable:
        if (action == Action::Red)
            m_components[0] = std::clamp(parameter, 0, 255);
        else if (action == Action::Green)
            m_components[1] = std::clamp(parameter, 0, 255);
        else if (action == Action::Blue)
            m_components[2] = std::clamp(parameter, 0, 255);
        return false;
    case Destination::Picture:
        if (action != Action::PictureProperty)
            return false;
        current.destination = Destination::PictureProperty;
        return true;
    case Destination::PictureProperty:
        if (action == Action::ShapePropertyName) {
            current.destination = Destination::ShapePropertyName;
            m_shapePropertyName.clear();
            return true;
        }
        if (action == Action::ShapePropertyValue) {
            current.destination = Destination::ShapePropertyValue;
            m_shapePropertyValue.clear();
            return true;
        }
        return false;
    case Destination::UnicodePair:
        if (action != Action::UnicodeAlternative)
            return false;
        current.destination = Destination::Text;
        return true;
    default:
        return false;
    }
}

void Parser::applyFormat(const Keyword &keyword, const Token &token)
{
    CharacterFormat &format = group().format;
    // "\b", "\b1" switch on, "\b0" off.
    const bool on = !token.hasParameter || token.parameter != 0;
    switch (keyword.action) {
    case Action::Font:
        if (token.hasParameter)
            format.font = token.parameter;
        break;
    case Action::Plain:
        format = CharacterFormat();
        break;
    case Action::Bold:
        format.bold = on;
        break;
    case Action::Italic:
        format.italic = on;
        break;
    case Action::FontSize:
        if (!token.hasParameter)
            format.halfPoints = 24;
        else if (token.parameter > 0)
            format.halfPoints = std::min(token.parameter, QWRtfReader::maximumHalfPoints);
        break;
    case Action::Underline:
        format.underline = on ? keyword.value : int(A::LineStyleNone);
        break;
    case Action::Strikethrough:
        format.strikethrough = on ? keyword.value : int(A::LineStyleNone);
        break;
    case Action::ForegroundColor:
        format.color = token.hasParameter ? token.parameter : -1;
        break;
    case Action::Hidden:
        format.hidden = on;
        break;
    default:
        return;
    }
    m_attributesStale = true;
}

void Parser::controlSymbol(char symbol)
{
    if (symbol == '*') {
        if (m_afterGroupStart && group().destination != Destination::Skip)
            m_ignorableNext = true;
        return;
    }
    m_ignorableNext = false;
    if (m_fallbackLeft > 0) {
        --m_fallbackLeft;
        return;
    }
    switch (symbol) {
    case '\\':
    case '{':
    case '}':
        character(char16_t(symbol));
        break;
    case '~':
        character(0x00A0);
        break;
    case '_':
        character(0x2011);
        break;
    case '\n':
    case '\r':
        character(u'\n');
        break;
    default:
        break; // "\-" optional hyphen, "\|", "\:" and the like show nothing
    }
}

void Parser::text(QByteArrayView bytes)
{
    m_ignorableNext = false;
    if (group().destination == Destination::Picture) {
        pictureData(bytes);
        return;
    }
    // Most text is printable ASCII in the body; it goes in whole.
    qsizetype at = 0;
    while (at < bytes.size()) {
        const Group &current = group();
        if (m_fallbackLeft == 0 && current.destination == Destination::Text
            && !current.format.hidden && !current.dropPlaceholder) {
            qsizetype end = at;
            while (end < bytes.size() && bytes[end] >= 0x20 && bytes[end] < 0x7F)
                ++end;
            if (end > at) {
                flushTable();
                appendPlain(bytes.sliced(at, end - at));
                at = end;
                continue;
            }
        }
        byte(static_cast<unsigned char>(bytes[at++]));
    }
}

void Parser::binary(QByteArrayView bytes)
{
    m_ignorableNext = false;
    if (m_fallbackLeft > 0) {
        --m_fallbackLeft;
        return;
    }
    if (group().destination == Destination::Picture) {
        m_picture.append(bytes);
        m_pictureNibble = -1;
    }
}

void Parser::byte(unsigned char byte)
{
    if (m_fallbackLeft > 0) {
        --m_fallbackLeft;
        return;
    }
    if (byte == '\t')
        character(u'\t');
    else if (byte >= 0x20 && byte != 0x7F)
        character(codePage().toUnicode(byte), true);
}

QWRtfCodePage Parser::codePage()
{
    const Group &current = group();
    if (current.destination == Destination::FontTable)
        return m_fontPage.value_or(m_documentPage);
    const auto font
        = m_fonts.constFind(current.format.font >= 0 ? current.format.font : m_defaultFont);
    if (font != m_fonts.cend() && font->codePage)
        return *font->codePage;
    return m_documentPage;
}

void Parser::character(char16_t c, bool isPlainText)
{
    // Names and link targets are single lines.
    const auto appendBounded = [c](QString &string, qsizetype limit) {
        if (string.size() < limit && c >= 0x20 && c != 0x7F)
            string.append(QChar(c));
    };
    switch (group().destination) {
    case Destination::Text:
        output(c);
        break;
    case Destination::FontTable:
        if (c == u';' && isPlainText)
            commitFont();
        else
            appendBounded(m_fontName, maximumNameLength);
        break;
    case Destination::ColorTable:
        if (c == u';' && isPlainText)
            commitColor();
        break;
    case Destination::FieldInstruction:
        appendBounded(m_fieldInstructions[group().field], maximumInstructionLength);
        break;
    case Destination::ShapePropertyName:
        appendBounded(m_shapePropertyName, maximumNameLength);
        break;
    case Destination::ShapePropertyValue:
        appendBounded(m_shapePropertyValue, maximumNameLength);
        break;
    case Destination::AttachmentName:
        appendBounded(m_attachmentName, maximumNameLength);
        break;
    case Destination::Skip:
    case Destination::Picture:
    case Destination::PictureProperty:
    case Destination::UnicodePair:
        break;
    }
}

void Parser::output(char16_t c)
{
    Group &current = group();
    // Control characters can only come from "\uN" here; they have no place in a note.
    if (current.format.hidden || (c < 0x20 && !isBreak(c)) || c == 0x7F)
        return;
    if (c == 0x2029) // paragraph separator
        c = u'\n';
    if (current.dropPlaceholder) {
        current.dropPlaceholder = false;
        if (!isBreak(c))
            return;
    }
    flushTable();
    append(c);
}

void Parser::outputAttachment(const QByteArray &bytes, const QString &name)
{
    flushTable();
    QWTextAttributes attributes = currentAttributes();
    attributes.setAttachment(bytes);
    attributes.setAttachmentFileName(name);
    m_runs.append({ m_text.size(), 1, attributes });
    m_text.append(QChar(attachmentCharacter));
    m_lastRunMatches = false;
}

// The cells of a table row are read as tab-separated text. Tabs and the paragraph ends inside
// a cell wait for the text that follows them, so that a row's last cell adds no tab and a
// cell's last paragraph no line.
void Parser::flushTable()
{
    for (; m_pendingCells > 0; --m_pendingCells)
        append(u'\t');
    for (; m_pendingBreaks > 0; --m_pendingBreaks)
        append(u'\n');
}

void Parser::append(char16_t c)
{
    if (m_attributesStale) {
        m_attributesStale = false;
        m_attributes = currentAttributes();
        m_lastRunMatches = !m_runs.isEmpty() && m_runs.last().attributes == m_attributes;
    }
    if (!m_lastRunMatches) {
        m_runs.append({ m_text.size(), 0, m_attributes });
        m_lastRunMatches = true;
    }
    ++m_runs.last().length;
    m_text.append(QChar(c));
}

void Parser::appendPlain(QByteArrayView ascii)
{
    append(char16_t(ascii.front()));
    m_runs.last().length += ascii.size() - 1;
    m_text.append(QLatin1StringView(ascii.sliced(1)));
}

QWTextAttributes Parser::currentAttributes()
{
    const Group &current = group();
    const CharacterFormat &format = current.format;
    QWTextAttributes attributes;
    if (const auto font = m_fonts.constFind(format.font); font != m_fonts.cend())
        attributes.setFontFamily(font->name);
    if (format.halfPoints > 0)
        attributes.setFontSize(format.halfPoints / 2.0);
    attributes.setBold(format.bold);
    attributes.setItalic(format.italic);
    attributes.setUnderlineStyle(format.underline);
    attributes.setStrikethroughStyle(format.strikethrough);
    if (format.color >= 0 && format.color < m_colors.size())
        attributes.setForegroundColor(m_colors.at(format.color));
    attributes.setLink(current.link);
    return attributes;
}

void Parser::defineFont(int number)
{
    commitFont();
    m_fontNumber = number;
    m_fontPage.reset();
}

void Parser::commitFont()
{
    const QString name = m_fontName.trimmed();
    m_fontName.clear();
    if (m_fontNumber < 0 || name.isEmpty())
        return;
    m_fonts.insert(m_fontNumber, { name, m_fontPage });
    m_attributesStale = true;
}

void Parser::commitColor()
{
    const bool isAuto = m_components[0] < 0 && m_components[1] < 0 && m_components[2] < 0;
    std::optional<QWColor> color;
    if (!isAuto) {
        const auto component
            = [this](int index) { return std::max(m_components[index], 0) / 255.0; };
        color = QWColor(component(0), component(1), component(2));
    }
    m_colors.append(color);
    std::fill(std::begin(m_components), std::end(m_components), -1);
    m_attributesStale = true;
}

void Parser::pictureData(QByteArrayView hex)
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
        if (m_pictureNibble < 0) {
            m_pictureNibble = value;
        } else {
            m_picture.append(char(m_pictureNibble * 16 + value));
            m_pictureNibble = -1;
        }
    }
}

qsizetype documentStart(QByteArrayView bytes)
{
    qsizetype start = bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    while (start < bytes.size()
        && (bytes[start] == ' ' || bytes[start] == '\t' || bytes[start] == '\r'
            || bytes[start] == '\n'))
        ++start;
    return start;
}

} // namespace

QWRtfReadResult QWRtfReader::read(QByteArrayView rtf) const
{
    if (!isRtf(rtf))
        return { QWAttributedString(), QWRtfReadResult::Error::NotRtf };
    return Parser(rtf.sliced(documentStart(rtf)), m_attachmentLoader).run();
}

bool QWRtfReader::isRtf(QByteArrayView bytes)
{
    return bytes.sliced(documentStart(bytes)).startsWith("{\\rtf");
}
