#include "import/SNTomboyNoteParser.h"

#include "import/SNImportFile.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QUrl>
#include <QXmlStreamReader>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString tomboyNamespace = u"http://beatniksoftware.com/tomboy"_s;
const QString linkNamespace = u"http://beatniksoftware.com/tomboy/link"_s;
const QString sizeNamespace = u"http://beatniksoftware.com/tomboy/size"_s;

// The default note font; the programs' sizes are scales of their own default.
constexpr double defaultPointSize = 14.0;

QString tr(const char *text)
{
    return QCoreApplication::translate("SNTomboyNoteParser", text);
}

// Files of the three programs are UTF-8 whatever they declare; a file saved by hand in Latin-1
// under a UTF-8 declaration still reads, as the programs' users would expect it to.
bool declaresOtherEncodingThanUtf8(const QByteArray &bytes)
{
    static const QRegularExpression declaration(
        uR"(^\s*<\?xml[^>]*encoding\s*=\s*["']([A-Za-z0-9._-]+)["'])"_s);
    const QRegularExpressionMatch match = declaration.match(QString::fromLatin1(bytes.left(200)));
    if (!match.hasMatch())
        return false;
    const QString name = match.captured(1).toLower();
    return name != u"utf-8"_s && name != u"utf8"_s;
}

bool isUtf16(const QByteArray &bytes)
{
    return bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
}

// Elements of the note's own vocabulary come with the Tomboy namespace, or none in files
// written by hand.
bool isNoteElement(const QXmlStreamReader &xml, QStringView name)
{
    return xml.name() == name
        && (xml.namespaceUri() == tomboyNamespace || xml.namespaceUri().isEmpty());
}

// How the programs open a link's text: their link tags take "www." as a web address, a path as
// a file and an address with "@" as mail.
QString linkForText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    static const QRegularExpression scheme(u"^[A-Za-z][A-Za-z0-9+.-]*:"_s);
    if (scheme.match(trimmed).hasMatch())
        return trimmed;
    if (trimmed.startsWith(u"www."_s, Qt::CaseInsensitive))
        return u"http://"_s + trimmed;
    if (trimmed.startsWith(u'/'))
        return QUrl::fromLocalFile(trimmed).toString();
    if (trimmed.contains(u'@'))
        return u"mailto:"_s + trimmed;
    return trimmed;
}

// Turns the markup of <note-content> into attributed text.
class ContentBuilder
{
public:
    enum class Kind {
        Bold,
        Italic,
        Strikethrough,
        Underline,
        Monospace,
        SmallSize,
        NormalSize,
        LargeSize,
        HugeSize,
        UrlLink,
        DateTime,
        List,
        ListItem,
        Other,
    };

    void start(const QXmlStreamReader &xml)
    {
        const Kind kind = kindOf(xml);
        m_stack.append({ kind, m_text.length() });
        if (kind == Kind::List)
            ++m_listDepth;
        // A line's bullet belongs to the deepest list its first item opens in.
        if (kind == Kind::ListItem && m_atLineStart)
            m_pendingBulletDepth = std::max(m_pendingBulletDepth, m_listDepth);
    }

    void end()
    {
        if (m_stack.isEmpty())
            return;
        const Element element = m_stack.takeLast();
        if (element.kind == Kind::List)
            --m_listDepth;
        if (element.kind == Kind::UrlLink) {
            const QString link
                = linkForText(m_text.string().mid(element.start, m_text.length() - element.start));
            if (!link.isEmpty()) {
                m_text.modifyAttributesRange(element.start, m_text.length() - element.start,
                    [&link](QWTextAttributes &attributes) { attributes.setLink(link); });
            }
        }
    }

    void characters(QStringView text)
    {
        const QWTextAttributes attributes = currentAttributes();
        qsizetype at = 0;
        while (at < text.size()) {
            beginLine();
            const qsizetype newline = text.indexOf(u'\n', at);
            const qsizetype end = newline < 0 ? text.size() : newline + 1;
            m_text.appendString(text.mid(at, end - at).toString(), attributes);
            m_atLineStart = newline >= 0;
            at = end;
        }
    }

    QWAttributedString finish()
    {
        if (m_atLineStart && m_pendingBulletDepth > 0)
            beginLine();
        return m_text.attributedString();
    }

private:
    struct Element
    {
        Kind kind;
        qsizetype start;
    };

    static Kind kindOf(const QXmlStreamReader &xml)
    {
        const QStringView name = xml.name();
        if (xml.namespaceUri() == sizeNamespace) {
            if (name == u"small")
                return Kind::SmallSize;
            if (name == u"normal")
                return Kind::NormalSize;
            if (name == u"large")
                return Kind::LargeSize;
            if (name == u"huge")
                return Kind::HugeSize;
            return Kind::Other;
        }
        if (xml.namespaceUri() == linkNamespace)
            return name == u"url" ? Kind::UrlLink : Kind::Other; // internal links stay text
        if (xml.namespaceUri() != tomboyNamespace && !xml.namespaceUri().isEmpty())
            return Kind::Other;
        static const QHash<QString, Kind> kinds {
            { u"bold"_s, Kind::Bold },
            { u"italic"_s, Kind::Italic },
            { u"strikethrough"_s, Kind::Strikethrough },
            { u"strikeout"_s, Kind::Strikethrough },
            { u"underline"_s, Kind::Underline },
            { u"monospace"_s, Kind::Monospace },
            { u"datetime"_s, Kind::DateTime },
            { u"list"_s, Kind::List },
            { u"list-item"_s, Kind::ListItem },
        };
        return kinds.value(name.toString(), Kind::Other);
    }

    QWTextAttributes currentAttributes() const
    {
        QWTextAttributes attributes;
        for (const Element &element : m_stack) {
            switch (element.kind) {
            case Kind::Bold:
                attributes.setBold(true);
                break;
            case Kind::Italic:
                attributes.setItalic(true);
                break;
            case Kind::Strikethrough:
                attributes.setStrikethroughStyle(QWTextAttributes::LineStyleSingle);
                break;
            case Kind::Underline:
                attributes.setUnderlineStyle(QWTextAttributes::LineStyleSingle);
                break;
            case Kind::Monospace:
                attributes.setFontFamily(u"Monospace"_s);
                break;
            // The inner size wins, as in the programs' text views.
            case Kind::SmallSize:
                attributes.setFontSize(defaultPointSize * 0.8333);
                break;
            case Kind::NormalSize:
                attributes.setFontSize(0.0);
                break;
            case Kind::LargeSize:
                attributes.setFontSize(defaultPointSize * 1.44);
                break;
            case Kind::HugeSize:
                attributes.setFontSize(defaultPointSize * 1.728);
                break;
            // An inserted time stamp is shown small and italic.
            case Kind::DateTime:
                attributes.setItalic(true);
                attributes.setFontSize(defaultPointSize * 0.8333);
                break;
            case Kind::UrlLink:
            case Kind::List:
            case Kind::ListItem:
            case Kind::Other:
                break;
            }
        }
        return attributes;
    }

    bool insideListItem() const
    {
        return std::any_of(m_stack.cbegin(), m_stack.cend(),
            [](const Element &element) { return element.kind == Kind::ListItem; });
    }

    // Before a line's first character (its newline, for an empty line): the bullet, indented
    // two spaces for each level below the first.
    void beginLine()
    {
        if (!m_atLineStart)
            return;
        const int depth = std::max(m_pendingBulletDepth, insideListItem() ? m_listDepth : 0);
        if (depth > 0)
            m_text.appendString(QString(2 * (depth - 1), u' ') + u"• "_s);
        m_atLineStart = false;
        m_pendingBulletDepth = 0;
    }

    QWMutableAttributedString m_text;
    QList<Element> m_stack;
    int m_listDepth = 0;
    bool m_atLineStart = true;
    int m_pendingBulletDepth = 0;
};

std::optional<int> integerText(const QString &text)
{
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}

} // namespace

std::optional<SNTomboyNoteParser::Note> SNTomboyNoteParser::parse(
    const QByteArray &bytes, QString *error)
{
    const auto fail = [error](const QString &why) -> std::optional<Note> {
        if (error)
            *error = why;
        return std::nullopt;
    };

    if (bytes.trimmed().isEmpty())
        return fail(tr("The file is empty."));
    QXmlStreamReader xml;
    if (isUtf16(bytes) || declaresOtherEncodingThanUtf8(bytes))
        xml.addData(bytes);
    else
        xml.addData(SNImportFile::decodeText(bytes));

    Note note;
    bool sawRoot = false;
    bool sawContent = false;
    std::optional<int> x, y, width, height;
    int depth = 0;
    // Which metadata element the reader is in, read as plain text.
    QString metadataName;
    QString metadataText;
    std::optional<ContentBuilder> content;
    int contentDepth = 0;
    bool inTags = false;

    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (++depth > maximumDepth)
                return fail(
                    tr("The note's markup is nested more than %1 levels deep.").arg(maximumDepth));
            if (depth == 1) {
                if (!isNoteElement(xml, u"note"))
                    return fail(tr("It is not a note: its XML holds <%1>.")
                                    .arg(xml.qualifiedName().toString()));
                sawRoot = true;
            } else if (content) {
                content->start(xml);
            } else if (isNoteElement(xml, u"note-content") && !sawContent) {
                content.emplace();
                contentDepth = depth;
                sawContent = true;
            } else if (depth == 2 && isNoteElement(xml, u"tags")) {
                inTags = true;
            } else if ((depth == 2 || (inTags && depth == 3)) && metadataName.isEmpty()
                && (xml.namespaceUri() == tomboyNamespace || xml.namespaceUri().isEmpty())) {
                metadataName = xml.name().toString();
                metadataText.clear();
            }
        } else if (token == QXmlStreamReader::Characters) {
            if (content)
                content->characters(xml.text());
            else if (!metadataName.isEmpty())
                metadataText += xml.text();
        } else if (token == QXmlStreamReader::EndElement) {
            if (content && depth == contentDepth) {
                note.text = content->finish();
                content.reset();
            } else if (content) {
                content->end();
            } else if (!metadataName.isEmpty() && (depth == 2 || (inTags && depth == 3))) {
                if (inTags && metadataName == u"tag"_s && !metadataText.trimmed().isEmpty())
                    note.tags.append(metadataText.trimmed());
                else if (metadataName == u"title"_s)
                    note.title = metadataText;
                else if (metadataName == u"create-date"_s)
                    note.created = SNImportFile::dateFromIsoString(metadataText);
                else if (metadataName == u"last-change-date"_s)
                    note.modified = SNImportFile::dateFromIsoString(metadataText);
                else if (metadataName == u"last-metadata-change-date"_s)
                    note.metadataModified = SNImportFile::dateFromIsoString(metadataText);
                else if (metadataName == u"x"_s)
                    x = integerText(metadataText);
                else if (metadataName == u"y"_s)
                    y = integerText(metadataText);
                else if (metadataName == u"width"_s)
                    width = integerText(metadataText);
                else if (metadataName == u"height"_s)
                    height = integerText(metadataText);
                else if (metadataName == u"open-on-startup"_s)
                    note.openOnStartup
                        = metadataText.trimmed().compare(u"true"_s, Qt::CaseInsensitive) == 0;
                metadataName.clear();
            } else if (depth == 2) {
                inTags = false;
            }
            --depth;
        }
    }
    if (xml.hasError()) {
        return fail(
            tr("The XML is damaged at line %1: %2").arg(xml.lineNumber()).arg(xml.errorString()));
    }
    if (!sawRoot)
        return fail(tr("The file holds no XML element."));
    if (!sawContent && note.title.isEmpty())
        return fail(tr("The note has neither a title nor a text."));

    // -1 is the programs' "never placed", 0 their "default size".
    if (x && y && !(*x == -1 && *y == -1))
        note.position = QPoint(*x, *y);
    if (width && height && *width > 0 && *height > 0)
        note.size = QSize(*width, *height);
    return note;
}
