#include "kit/rtf/QWRtfReader.h"

#include "kit/rtf/QWRtfCharacterFormat.h"
#include "kit/rtf/QWRtfCodePage.h"
#include "kit/rtf/QWRtfColorTable.h"
#include "kit/rtf/QWRtfField.h"
#include "kit/rtf/QWRtfFontTable.h"
#include "kit/rtf/QWRtfKeyword.h"
#include "kit/rtf/QWRtfPicture.h"
#include "kit/rtf/QWRtfPictureData.h"
#include "kit/rtf/QWRtfTextBuilder.h"
#include "kit/rtf/QWRtfTokenizer.h"

#include <QList>

#include <algorithm>
#include <optional>
#include <utility>

namespace {

using Token = QWRtfTokenizer::Token;
using Keyword = QWRtfKeyword;
using Action = QWRtfKeyword::Action;

// Names of shape properties and attachment files are short; anything longer is damage.
constexpr qsizetype maximumNameLength = 1024;
constexpr qsizetype maximumInstructionLength = 8192;

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

struct Group
{
    Destination destination = Destination::Text;
    QWRtfCharacterFormat format;
    int unicodeSkip = 1; // "\ucN": fallback characters after each "\uN"
    int field = -1;
    QString link;
    bool inTable = false; // "\intbl": the paragraph is part of a table cell
    // An RTFD file reference is followed by one character standing for the attachment.
    bool dropPlaceholder = false;
};

class Parser final
{
public:
    Parser(QByteArrayView input, const QWRtfReader::AttachmentLoader &loader)
        : m_tokenizer(input), m_loader(loader), m_builder([this] { return currentAttributes(); })
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
    void controlSymbol(char symbol);
    void text(QByteArrayView bytes);
    void binary(QByteArrayView bytes);
    void byte(unsigned char byte);
    // Separators of the font and colour tables count only as plain text, not as "\uN".
    void character(char16_t c, bool isPlainText = false);
    QWRtfCodePage codePage();

    void output(char16_t c);
    QWTextAttributes currentAttributes();

    void commitFont();

    QWRtfTokenizer m_tokenizer;
    const QWRtfReader::AttachmentLoader &m_loader;
    QList<Group> m_groups;
    bool m_afterGroupStart = false;
    bool m_ignorableNext = false;
    int m_fallbackLeft = 0;

    QWRtfCodePage m_documentPage;
    int m_defaultFont = 0;
    QWRtfFontTable m_fonts;
    QWRtfColorTable m_colors;
    QList<QString> m_fieldInstructions;
    QWRtfPictureData m_picture;
    QString m_pictureName;
    QString m_shapePropertyName;
    QString m_shapePropertyValue;
    QString m_attachmentName;
    QWRtfTextBuilder m_builder;
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
    return { m_builder.take(), error };
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
    m_builder.invalidateAttributes();
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
        if (inText && QWRtfPicture::formatOf(m_picture.bytes()) != QWRtfPicture::Format::Unknown)
            m_builder.appendAttachment(m_picture.bytes(), m_pictureName);
        m_picture.clear();
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
                m_builder.appendAttachment(bytes, name);
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
        m_fonts.begin();
        return true;
    case Action::ColorTable:
        current.destination = Destination::ColorTable;
        return true;
    case Action::Picture:
        current.destination = Destination::Picture;
        m_picture.clear();
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
            m_builder.invalidateAttributes();
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
            m_builder.paragraphInCell();
        else
            character(u'\n');
        return false;
    case Action::Cell:
        if (!current.format.hidden)
            m_builder.cellDidEnd();
        return false;
    case Action::Row:
        if (!current.format.hidden) {
            m_builder.rowDidEnd();
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
        if (current.format.apply(keyword, token))
            m_builder.invalidateAttributes();
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
        if (action == Action::Font) {
            commitFont();
            m_fonts.defineFont(token.hasParameter ? parameter : -1);
        } else if (action == Action::FontCharset) {
            m_fonts.setCharset(parameter);
        } else if (action == Action::FontCodePage) {
            m_fonts.setCodePage(parameter);
        }
        return false;
    case Destination::ColorTable:
        if (action == Action::Red)
            m_colors.setComponent(0, parameter);
        else if (action == Action::Green)
            m_colors.setComponent(1, parameter);
        else if (action == Action::Blue)
            m_colors.setComponent(2, parameter);
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
        m_picture.appendHexDigits(bytes);
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
                m_builder.appendPlain(bytes.sliced(at, end - at));
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
        m_picture.appendBinary(bytes);
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
        return m_fonts.pendingCodePage().value_or(m_documentPage);
    const QWRtfFontTable::Font *font
        = m_fonts.font(current.format.font >= 0 ? current.format.font : m_defaultFont);
    if (font && font->codePage)
        return *font->codePage;
    return m_documentPage;
}

void Parser::character(char16_t c, bool isPlainText)
{
    // Names and link targets are single lines.
    const bool isNameCharacter = c >= 0x20 && c != 0x7F;
    const auto appendBounded = [c, isNameCharacter](QString &string, qsizetype limit) {
        if (string.size() < limit && isNameCharacter)
            string.append(QChar(c));
    };
    switch (group().destination) {
    case Destination::Text:
        output(c);
        break;
    case Destination::FontTable:
        if (c == u';' && isPlainText)
            commitFont();
        else if (isNameCharacter)
            m_fonts.appendToName(c);
        break;
    case Destination::ColorTable:
        if (c == u';' && isPlainText) {
            m_colors.commitColor();
            m_builder.invalidateAttributes();
        }
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
    m_builder.appendCharacter(c);
}

QWTextAttributes Parser::currentAttributes()
{
    const Group &current = group();
    QWTextAttributes attributes = current.format.attributes(m_fonts, m_colors);
    attributes.setLink(current.link);
    return attributes;
}

void Parser::commitFont()
{
    if (m_fonts.commitFont())
        m_builder.invalidateAttributes();
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
