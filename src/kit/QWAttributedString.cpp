#include "kit/QWAttributedString.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <QUrl>

#include <algorithm>
#include <utility>

struct QWAttributedString::Data : QSharedData
{
    QString string;
    QList<QWTextRun> runs;
};

namespace {

const QString stringKey = QStringLiteral("string");
const QString runsKey = QStringLiteral("runs");
const QString locationKey = QStringLiteral("location");
const QString lengthKey = QStringLiteral("length");

// The scheme of the resource names under which a document holds our attachments.
const QString attachmentScheme = QStringLiteral("vellumo-attachment");

struct Span
{
    qsizetype start = 0;
    qsizetype end = 0;
};

// The part of [location, location + length) inside [0, size), computed without overflow
// whatever the values (they may come from a damaged file). An empty result sits at the clamped
// location, which is where an insertion at that location goes.
Span clipRange(qsizetype location, qsizetype length, qsizetype size)
{
    const qsizetype start = std::clamp(location, qsizetype(0), size);
    if (length <= 0 || location >= size)
        return { start, start };
    if (location < 0) {
        length += location; // opposite signs: cannot overflow
        location = 0;
        if (length <= 0)
            return { 0, 0 };
    }
    const qsizetype end = length >= size - location ? size : location + length;
    return { location, end };
}

// The position in runs of the run holding index, or -1.
qsizetype runIndexAt(const QList<QWTextRun> &runs, qsizetype index)
{
    if (runs.isEmpty() || index < 0 || index >= runs.constLast().end())
        return -1;
    const auto after = std::upper_bound(runs.cbegin(), runs.cend(), index,
        [](qsizetype value, const QWTextRun &run) { return value < run.location; });
    return std::distance(runs.cbegin(), after) - 1;
}

// Appends a run after the last one, extending that one instead when the attributes are equal.
void appendRun(QList<QWTextRun> &runs, qsizetype location, qsizetype length,
    const QWTextAttributes &attributes)
{
    if (length <= 0)
        return;
    if (!runs.isEmpty() && runs.constLast().attributes == attributes)
        runs.last().length += length;
    else
        runs.append(QWTextRun { location, length, attributes });
}

QList<QWTextRun> normalizedRuns(qsizetype size, QList<QWTextRun> runs)
{
    QList<QWTextRun> clipped;
    clipped.reserve(runs.size());
    for (QWTextRun &run : runs) {
        const Span span = clipRange(run.location, run.length, size);
        if (span.end > span.start)
            clipped.append(
                QWTextRun { span.start, span.end - span.start, std::move(run.attributes) });
    }
    std::stable_sort(clipped.begin(), clipped.end(),
        [](const QWTextRun &a, const QWTextRun &b) { return a.location < b.location; });

    QList<QWTextRun> result;
    qsizetype covered = 0;
    for (const QWTextRun &run : std::as_const(clipped)) {
        const qsizetype start = std::max(run.location, covered);
        if (run.end() <= start)
            continue;
        appendRun(result, covered, start - covered, QWTextAttributes());
        appendRun(result, start, run.end() - start, run.attributes);
        covered = run.end();
    }
    appendRun(result, covered, size - covered, QWTextAttributes());
    return result;
}

bool isParagraphBreak(QChar c)
{
    return c == u'\n' || c == u'\r' || c == QChar::ParagraphSeparator;
}

// The bytes of an image the document shows: ours come back as they were added; an image the
// editor added (pasted) is a QImage and is stored as PNG.
QByteArray imageFileBytes(const QTextDocument &document, const QString &name)
{
    if (name.isEmpty())
        return {};
    const QVariant resource = document.resource(QTextDocument::ImageResource, QUrl(name));
    QImage image;
    switch (resource.typeId()) {
    case QMetaType::QByteArray:
        return resource.toByteArray();
    case QMetaType::QImage:
        image = resource.value<QImage>();
        break;
    case QMetaType::QPixmap:
        image = resource.value<QPixmap>().toImage();
        break;
    default:
        return {};
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        return {};
    return bytes;
}

// What the characters of one fragment format read as: ordinary characters, and the U+FFFC of an
// image.
struct FragmentAttributes
{
    QWTextAttributes text;
    std::optional<QWTextAttributes> image;
};

FragmentAttributes fragmentAttributes(const QTextDocument &document, const QTextCharFormat &format)
{
    FragmentAttributes result { QWTextAttributes::fromCharFormat(format), std::nullopt };
    if (format.isImageFormat()) {
        QWTextAttributes image = result.text;
        image.setAttachment(imageFileBytes(document, format.toImageFormat().name()));
        image.setAttachmentFileName(
            format.stringProperty(QWTextAttributes::AttachmentFileNameProperty));
        result.image = std::move(image);
    }
    return result;
}

} // namespace

// QWTextRun

void QWTextRun::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeIntegerForKey(location, locationKey);
    coder.encodeIntegerForKey(length, lengthKey);
    attributes.encodeWithCoder(coder);
}

std::optional<QWTextRun> QWTextRun::initWithCoder(const QWKeyedUnarchiver &coder)
{
    const QWArchiveValue *location = coder.valueForKey(locationKey);
    const QWArchiveValue *length = coder.valueForKey(lengthKey);
    if (!location || location->kind() != QWArchiveValue::Kind::Integer || !length
        || length->kind() != QWArchiveValue::Kind::Integer)
        return std::nullopt;
    return QWTextRun { location->toInteger(), length->toInteger(),
        QWTextAttributes::decodeFromCoder(coder) };
}

// QWAttributedString

QWAttributedString::QWAttributedString()
{
    // Empty strings are common (new notes, defaults of records): they share one block.
    static const QSharedDataPointer<Data> empty(new Data);
    d = empty;
}

QWAttributedString::QWAttributedString(const QString &string, const QWTextAttributes &attributes)
    : d(new Data)
{
    d->string = string;
    appendRun(d->runs, 0, string.size(), attributes);
}

QWAttributedString::QWAttributedString(const QString &string, QList<QWTextRun> runs) : d(new Data)
{
    d->string = string;
    d->runs = normalizedRuns(string.size(), std::move(runs));
}

QWAttributedString::QWAttributedString(const QString &string, QList<QWTextRun> runs, Normalized)
    : d(new Data)
{
    d->string = string;
    d->runs = std::move(runs);
}

QWAttributedString::QWAttributedString(const QWAttributedString &other) = default;
QWAttributedString &QWAttributedString::operator=(const QWAttributedString &other) = default;

// A moved-from string stays a usable empty one, as Qt's own values do.
QWAttributedString::QWAttributedString(QWAttributedString &&other) noexcept : QWAttributedString()
{
    d.swap(other.d);
}

QWAttributedString &QWAttributedString::operator=(QWAttributedString &&other) noexcept
{
    d.swap(other.d);
    return *this;
}
QWAttributedString::~QWAttributedString() = default;

const QString &QWAttributedString::string() const
{
    return d->string;
}

qsizetype QWAttributedString::length() const
{
    return d->string.size();
}

bool QWAttributedString::isEmpty() const
{
    return d->string.isEmpty();
}

const QList<QWTextRun> &QWAttributedString::runs() const
{
    return d->runs;
}

QWTextRun QWAttributedString::runAtIndex(qsizetype index) const
{
    const qsizetype position = runIndexAt(d->runs, index);
    return position < 0 ? QWTextRun { index, 0, QWTextAttributes() } : d->runs.at(position);
}

QWTextAttributes QWAttributedString::attributesAtIndex(qsizetype index) const
{
    const qsizetype position = runIndexAt(d->runs, index);
    return position < 0 ? QWTextAttributes() : d->runs.at(position).attributes;
}

QWAttributedString QWAttributedString::attributedSubstringFromRange(
    qsizetype location, qsizetype length) const
{
    const Span span = clipRange(location, length, d->string.size());
    if (span.start == 0 && span.end == d->string.size())
        return *this;
    QList<QWTextRun> runs;
    for (qsizetype i = std::max(runIndexAt(d->runs, span.start), qsizetype(0));
         i < d->runs.size() && d->runs.at(i).location < span.end; ++i) {
        const QWTextRun &run = d->runs.at(i);
        const qsizetype start = std::max(run.location, span.start);
        const qsizetype end = std::min(run.end(), span.end);
        runs.append(QWTextRun { start - span.start, end - start, run.attributes });
    }
    // Cutting runs short keeps neighbours different, so the runs are still in normal form.
    return QWAttributedString(
        d->string.sliced(span.start, span.end - span.start), std::move(runs), Normalized());
}

QWAttributedString QWAttributedString::fromTextDocument(
    const QTextDocument &document, const QTextCharFormat &base)
{
    const auto withBase = [&base](const QTextCharFormat &format) {
        if (base.properties().isEmpty())
            return format;
        QTextCharFormat merged = base;
        merged.merge(format);
        return merged;
    };
    QWMutableAttributedString result;
    // Documents reuse few formats for many fragments; convert each once.
    QHash<int, FragmentAttributes> formats;
    const auto attributesOf = [&](int formatIndex, const QTextCharFormat &format) {
        auto found = formats.constFind(formatIndex);
        if (found == formats.cend())
            found = formats.insert(formatIndex, fragmentAttributes(document, withBase(format)));
        return *found;
    };

    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        // The separator that ends the previous block carries this block's char format.
        if (block != document.begin())
            result.appendString(QStringLiteral("\n"),
                QWTextAttributes::fromCharFormat(withBase(block.charFormat())));
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (!fragment.isValid())
                continue;
            const FragmentAttributes attributes
                = attributesOf(fragment.charFormatIndex(), fragment.charFormat());
            const QString text = fragment.text();
            if (!attributes.image) {
                result.appendString(text, attributes.text);
                continue;
            }
            // Text typed after an image can share its format; only U+FFFC is the image.
            qsizetype start = 0;
            for (qsizetype i = 0; i < text.size(); ++i) {
                if (text.at(i) != QChar::ObjectReplacementCharacter)
                    continue;
                result.appendString(text.sliced(start, i - start), attributes.text);
                result.appendString(text.sliced(i, 1), *attributes.image);
                start = i + 1;
            }
            result.appendString(text.sliced(start), attributes.text);
        }
    }
    return result.attributedString();
}

void QWAttributedString::toTextDocument(QTextDocument &document) const
{
    // Filling the document is not an edit the user can undo.
    const bool undoRedoEnabled = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.clear();

    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    const QTextBlockFormat blockFormat = cursor.blockFormat();
    const QString &text = d->string;
    qsizetype index = 0; // runs back to back; a "\r\n" may swallow the first character of a run
    for (const QWTextRun &run : std::as_const(d->runs)) {
        const QTextCharFormat format = run.attributes.toCharFormat();
        qsizetype segmentStart = std::max(index, run.location);
        const auto flushSegment = [&](qsizetype end) {
            if (end > segmentStart)
                cursor.insertText(text.sliced(segmentStart, end - segmentStart), format);
        };
        for (index = segmentStart; index < run.end(); ++index) {
            const QChar c = text.at(index);
            if (isParagraphBreak(c)) {
                flushSegment(index);
                if (c == u'\r' && index + 1 < text.size() && text.at(index + 1) == u'\n')
                    ++index;
                cursor.insertBlock(blockFormat, format);
                segmentStart = index + 1;
            } else if (c == QChar::ObjectReplacementCharacter && run.attributes.hasAttachment()) {
                flushSegment(index);
                const QByteArray &bytes = run.attributes.attachment();
                // Named by content: equal images share one resource, different ones never do.
                const QString name = attachmentScheme + u':'
                    + QString::fromLatin1(
                        QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex());
                document.addResource(QTextDocument::ImageResource, QUrl(name), bytes);
                QTextImageFormat imageFormat;
                imageFormat.merge(format);
                imageFormat.setName(name);
                if (!run.attributes.attachmentFileName().isEmpty())
                    imageFormat.setProperty(QWTextAttributes::AttachmentFileNameProperty,
                        run.attributes.attachmentFileName());
                cursor.insertImage(imageFormat);
                segmentStart = index + 1;
            }
        }
        flushSegment(std::min(run.end(), text.size()));
        index = std::max(index, run.end());
    }
    cursor.endEditBlock();
    document.setUndoRedoEnabled(undoRedoEnabled);
}

void QWAttributedString::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeStringForKey(d->string, stringKey);
    coder.encodeArrayOfObjectsForKey(d->runs, runsKey);
}

std::optional<QWAttributedString> QWAttributedString::initWithCoder(const QWKeyedUnarchiver &coder)
{
    std::optional<QString> string = coder.decodeStringForKey(stringKey);
    if (!string)
        return std::nullopt;
    QList<QWTextRun> runs
        = coder.decodeArrayOfObjectsOfClassForKey<QWTextRun>(runsKey).value_or(QList<QWTextRun>());
    return QWAttributedString(*string, std::move(runs));
}

QByteArray QWAttributedString::archivedData() const
{
    return QWKeyedArchiver::archivedDataWithRootObject(*this);
}

std::optional<QWAttributedString> QWAttributedString::fromArchivedData(const QByteArray &data)
{
    // A damaged archive still gives whatever text could be read from it.
    const QWKeyedUnarchiver::ParseResult parsed = QWKeyedUnarchiver::parse(data);
    return QWKeyedUnarchiver::decodeObjectOfClass<QWAttributedString>(parsed.root);
}

bool operator==(const QWAttributedString &a, const QWAttributedString &b)
{
    return a.d == b.d || (a.d->string == b.d->string && a.d->runs == b.d->runs);
}

// QWMutableAttributedString

QWMutableAttributedString::QWMutableAttributedString(const QWAttributedString &string)
    : m_string(string.string()), m_runs(string.runs())
{ }

QWTextAttributes QWMutableAttributedString::attributesAtIndex(qsizetype index) const
{
    const qsizetype position = runIndexAt(m_runs, index);
    return position < 0 ? QWTextAttributes() : m_runs.at(position).attributes;
}

QWAttributedString QWMutableAttributedString::attributedString() const
{
    return QWAttributedString(m_string, m_runs, QWAttributedString::Normalized());
}

void QWMutableAttributedString::appendString(
    const QString &text, const QWTextAttributes &attributes)
{
    appendRun(m_runs, m_string.size(), text.size(), attributes);
    m_string += text;
}

void QWMutableAttributedString::appendAttributedString(const QWAttributedString &text)
{
    for (const QWTextRun &run : text.runs())
        appendRun(m_runs, m_string.size() + run.location, run.length, run.attributes);
    m_string += text.string();
}

void QWMutableAttributedString::setAttributesRange(
    const QWTextAttributes &attributes, qsizetype location, qsizetype length)
{
    modifyAttributesRange(
        location, length, [&attributes](QWTextAttributes &current) { current = attributes; });
}

void QWMutableAttributedString::modifyAttributesRange(
    qsizetype location, qsizetype length, const std::function<void(QWTextAttributes &)> &modify)
{
    const Span span = clipRange(location, length, m_string.size());
    if (span.end == span.start)
        return;
    const qsizetype first = splitAt(span.start);
    const qsizetype last = splitAt(span.end);
    for (qsizetype i = first; i < last; ++i)
        modify(m_runs[i].attributes);
    mergeEqualRuns();
}

void QWMutableAttributedString::replaceCharactersInRangeWithString(
    qsizetype location, qsizetype length, const QString &text)
{
    const Span span = clipRange(location, length, m_string.size());
    const qsizetype source
        = span.end > span.start ? span.start : std::max(span.start - 1, qsizetype(0));
    replaceCharactersInRangeWithAttributedString(
        span.start, span.end - span.start, QWAttributedString(text, attributesAtIndex(source)));
}

void QWMutableAttributedString::replaceCharactersInRangeWithAttributedString(
    qsizetype location, qsizetype length, const QWAttributedString &text)
{
    const Span span = clipRange(location, length, m_string.size());
    const qsizetype first = splitAt(span.start);
    const qsizetype last = splitAt(span.end);
    const qsizetype delta = text.length() - (span.end - span.start);

    QList<QWTextRun> runs;
    runs.reserve(m_runs.size() - (last - first) + text.runs().size());
    for (qsizetype i = 0; i < first; ++i)
        runs.append(m_runs.at(i));
    for (const QWTextRun &run : text.runs())
        runs.append(QWTextRun { run.location + span.start, run.length, run.attributes });
    for (qsizetype i = last; i < m_runs.size(); ++i) {
        runs.append(m_runs.at(i));
        runs.last().location += delta;
    }
    m_runs = std::move(runs);
    m_string.replace(span.start, span.end - span.start, text.string());
    mergeEqualRuns();
}

void QWMutableAttributedString::deleteCharactersInRange(qsizetype location, qsizetype length)
{
    replaceCharactersInRangeWithAttributedString(location, length, QWAttributedString());
}

qsizetype QWMutableAttributedString::splitAt(qsizetype index)
{
    const qsizetype position = runIndexAt(m_runs, index);
    if (position < 0)
        return m_runs.size(); // the end of the text
    if (m_runs.at(position).location == index)
        return position;
    QWTextRun &run = m_runs[position];
    QWTextRun tail { index, run.end() - index, run.attributes };
    run.length = index - run.location;
    m_runs.insert(position + 1, std::move(tail));
    return position + 1;
}

void QWMutableAttributedString::mergeEqualRuns()
{
    qsizetype kept = 0;
    for (qsizetype i = 0; i < m_runs.size(); ++i) {
        if (m_runs.at(i).length <= 0)
            continue;
        if (kept > 0 && m_runs.at(kept - 1).attributes == m_runs.at(i).attributes) {
            m_runs[kept - 1].length += m_runs.at(i).length;
            continue;
        }
        if (kept != i)
            m_runs[kept] = std::move(m_runs[i]);
        ++kept;
    }
    m_runs.resize(kept);
}
