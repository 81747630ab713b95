#include "import/SNKNotesMessage.h"

#include "import/SNImportFile.h"
#include "import/SNImportTitledText.h"
#include "import/SNKNotesHtml.h"

#include <QCoreApplication>
#include <QList>
#include <QRegularExpression>
#include <QStringDecoder>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNKNotesMessage", text);
}

struct Part
{
    QList<std::pair<QByteArray, QByteArray>> headers; // lower-case name, unfolded value
    QByteArray body;

    QByteArray header(const QByteArray &name) const
    {
        for (const auto &[key, value] : headers) {
            if (key == name)
                return value;
        }
        return {};
    }
};

// Headers end at the first empty line; lines that start with white space continue the one
// before. Lines end in LF or CRLF.
Part splitPart(const QByteArray &bytes)
{
    Part part;
    qsizetype at = 0;
    while (at < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', at);
        if (end < 0)
            end = bytes.size();
        QByteArray line = bytes.mid(at, end - at);
        if (line.endsWith('\r'))
            line.chop(1);
        at = end + 1;
        if (line.isEmpty()) {
            part.body = at < bytes.size() ? bytes.mid(at) : QByteArray();
            return part;
        }
        if ((line.startsWith(' ') || line.startsWith('\t')) && !part.headers.isEmpty()) {
            part.headers.last().second += ' ' + line.trimmed();
            continue;
        }
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            continue;
        part.headers.append(
            { line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed() });
    }
    return part;
}

// "text/plain; charset=\"utf-8\"" → the type and one parameter.
QByteArray mimeType(const QByteArray &contentType)
{
    return contentType.split(';').value(0).trimmed().toLower();
}

QByteArray parameter(const QByteArray &contentType, const QByteArray &name)
{
    const QList<QByteArray> fields = contentType.split(';');
    for (qsizetype i = 1; i < fields.size(); ++i) {
        const QByteArray field = fields[i].trimmed();
        const qsizetype equals = field.indexOf('=');
        if (equals <= 0 || field.left(equals).trimmed().toLower() != name)
            continue;
        QByteArray value = field.mid(equals + 1).trimmed();
        if (value.size() >= 2 && value.startsWith('"') && value.endsWith('"'))
            value = value.mid(1, value.size() - 2);
        return value;
    }
    return {};
}

QByteArray decodeQuotedPrintable(const QByteArray &bytes, bool underscoreIsSpace)
{
    QByteArray out;
    out.reserve(bytes.size());
    const auto hex = [](char c) -> int {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        return -1;
    };
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '_' && underscoreIsSpace) {
            out += ' ';
        } else if (c != '=') {
            out += c;
        } else if (i + 1 < bytes.size() && bytes[i + 1] == '\n') {
            i += 1; // soft line break
        } else if (i + 2 < bytes.size() && bytes[i + 1] == '\r' && bytes[i + 2] == '\n') {
            i += 2;
        } else if (i + 2 < bytes.size() && hex(bytes[i + 1]) >= 0 && hex(bytes[i + 2]) >= 0) {
            out += char(hex(bytes[i + 1]) * 16 + hex(bytes[i + 2]));
            i += 2;
        } else {
            out += c; // a stray "=" is kept, as mail readers do
        }
    }
    return out;
}

QByteArray decodeTransfer(const QByteArray &body, const QByteArray &encoding)
{
    const QByteArray name = encoding.trimmed().toLower();
    if (name == "quoted-printable")
        return decodeQuotedPrintable(body, false);
    if (name == "base64")
        return QByteArray::fromBase64(body);
    return body;
}

// Text in its charset; without one, or with one Qt does not know, UTF-8 else Latin-1.
QString decodeCharset(const QByteArray &bytes, const QByteArray &charset)
{
    if (!charset.isEmpty()) {
        QStringDecoder decoder(charset.constData(), QStringDecoder::Flag::Stateless);
        if (decoder.isValid()) {
            QString text = decoder.decode(bytes);
            if (!decoder.hasError())
                return text;
        }
    }
    return SNImportFile::decodeText(bytes);
}

// The part a notes program shows: the message itself when it is text, else the first text
// part of a multipart message, looked for depth first.
std::optional<Part> textPart(const Part &part, int depth)
{
    const QByteArray type = mimeType(part.header("content-type"));
    if (type.isEmpty() || type.startsWith("text/"))
        return part;
    if (!type.startsWith("multipart/") || depth >= SNKNotesMessage::maximumPartDepth)
        return std::nullopt;
    const QByteArray boundary = parameter(part.header("content-type"), "boundary");
    if (boundary.isEmpty())
        return std::nullopt;
    const QByteArray delimiter = "--" + boundary;
    qsizetype at = part.body.indexOf(delimiter);
    while (at >= 0) {
        qsizetype start = part.body.indexOf('\n', at);
        if (start < 0 || part.body.mid(at + delimiter.size(), 2) == "--")
            break;
        ++start;
        const qsizetype next = part.body.indexOf(delimiter, start);
        QByteArray bytes = part.body.mid(start, next < 0 ? -1 : next - start);
        if (bytes.endsWith('\n'))
            bytes.chop(bytes.endsWith("\r\n") ? 2 : 1);
        if (std::optional<Part> found = textPart(splitPart(bytes), depth + 1))
            return found;
        at = next;
    }
    return std::nullopt;
}

QDateTime dateOfHeader(const QByteArray &value)
{
    const QString text = QString::fromLatin1(value).simplified();
    if (text.isEmpty())
        return {};
    QDateTime date = QDateTime::fromString(text, Qt::RFC2822Date);
    return date.isValid() ? date : SNImportFile::dateFromIsoString(text);
}

} // namespace

QString SNKNotesMessage::decodeHeader(const QByteArray &value)
{
    static const QRegularExpression encodedWord(uR"(=\?([^?\s]+)\?([QqBb])\?([^?\s]*)\?=)"_s);
    // One character per byte, so that offsets are byte offsets; the text between encoded words
    // is decoded on its own, since raw 8-bit headers are UTF-8 in practice, else Latin-1.
    const QString text = QString::fromLatin1(value);
    QString out;
    qsizetype at = 0;
    bool lastWasEncoded = false;
    QRegularExpressionMatchIterator it = encodedWord.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        const QString between = SNImportFile::decodeText(value.mid(at, match.capturedStart() - at));
        // White space between two encoded words is not part of the text.
        if (!(lastWasEncoded && between.trimmed().isEmpty()))
            out += between;
        const QByteArray payload = match.captured(3).toLatin1();
        const QByteArray bytes = match.captured(2).compare(u"b"_s, Qt::CaseInsensitive) == 0
            ? QByteArray::fromBase64(payload)
            : decodeQuotedPrintable(payload, true);
        // RFC 2231 adds a language after "*" to the charset.
        out += decodeCharset(bytes, match.captured(1).section(u'*', 0, 0).toLatin1());
        at = match.capturedEnd();
        lastWasEncoded = true;
    }
    return out + SNImportFile::decodeText(value.mid(at));
}

QDateTime SNKNotesMessage::timeOfFileName(const QString &fileName)
{
    static const QRegularExpression leadingNumber(u"^(\\d{9,13})\\."_s);
    const QRegularExpressionMatch match = leadingNumber.match(fileName);
    if (!match.hasMatch())
        return {};
    const qint64 number = match.captured(1).toLongLong();
    const qint64 milliseconds = number > 100'000'000'000LL ? number : number * 1000;
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
}

SNImportReadResult SNKNotesMessage::read(
    const QByteArray &bytes, const QString &fileName, const QDateTime &fileTime)
{
    SNImportReadResult result;
    const Part message = splitPart(bytes);
    if (message.headers.isEmpty()) {
        result.problems.append(
            { fileName, tr("It is not a note: the file has no message headers.") });
        return result;
    }
    const std::optional<Part> part = textPart(message, 0);
    if (!part) {
        result.problems.append({ fileName,
            tr("The note has no text part (its type is %1).")
                .arg(QString::fromLatin1(mimeType(message.header("content-type")))) });
        return result;
    }

    SNImportedNote note;
    note.sourceId = fileName.section(u':', 0, 0);
    const QString title = decodeHeader(message.header("subject")).simplified();
    const QByteArray contentType = part->header("content-type");
    const QByteArray decoded
        = decodeTransfer(part->body, part->header("content-transfer-encoding"));
    const QString body = decodeCharset(decoded, parameter(contentType, "charset"));
    const QWAttributedString text = mimeType(contentType) == "text/html"
        ? SNKNotesHtml::toAttributedString(body)
        : QWAttributedString(QString(body).replace(u"\r\n"_s, u"\n"_s));
    // A new note's body is a single space. KNotes shows the title above the text; here it is
    // the text's first line.
    qsizetype start = 0;
    while (start < text.length() && text.string().at(start) == u' ')
        ++start;
    note.text = SNImportTitledText::make(
        title, text.attributedSubstringFromRange(start, text.length() - start));

    // KNotes rewrites Date on every save; other clients of the store keep Date as the creation
    // and add X-Akonotes-LastModified.
    const QDateTime date = dateOfHeader(message.header("date"));
    const QDateTime lastModified = dateOfHeader(message.header("x-akonotes-lastmodified"));
    const QDateTime stored = timeOfFileName(fileName);
    // A note rewritten in place keeps its file name: the name's time is when it was made.
    QDateTime modified = lastModified.isValid() ? lastModified : date;
    if (!modified.isValid())
        modified = fileTime.isValid() ? fileTime : stored;
    QDateTime created = lastModified.isValid() && date.isValid() ? date : stored;
    if (!created.isValid() || created > modified)
        created = modified;
    note.dateCreated = created;
    note.dateModified = modified;
    result.notes.append(note);
    return result;
}
