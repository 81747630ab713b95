#include "kit/QWKeyedUnarchiver.h"

#include "kit/QWKeyedArchiver.h"

#include <QCborStreamReader>
#include <QHash>
#include <QReadLocker>
#include <QReadWriteLock>
#include <QWriteLocker>

#include <limits>

namespace {

// However large the file, the value tree stays bounded: beyond this many values the rest
// of the file is treated as damage.
constexpr qsizetype maximumValueCount = 8 * 1024 * 1024;

const QString classKey = QStringLiteral("$class");

class ArchiveParser final
{
public:
    explicit ArchiveParser(const QByteArray &data) : m_reader(data), m_size(data.size()) { }

    QWKeyedUnarchiver::ParseResult parseArchive();

private:
    QWArchiveValue parseValue(int depth);
    QWArchiveValue parseArray(int depth);
    QWArchiveValue parseMap(int depth);
    QWArchiveValue parseTagged(int depth);
    std::optional<QString> readText();
    std::optional<QByteArray> readBytes();
    bool advance();
    bool fail(const QString &message);
    bool failed() const { return !m_error.isEmpty(); }
    qsizetype remaining() const { return m_size - qsizetype(m_reader.currentOffset()); }

    QCborStreamReader m_reader;
    qsizetype m_size;
    qsizetype m_valueCount = 0;
    QString m_error;
};

bool ArchiveParser::fail(const QString &message)
{
    if (m_error.isEmpty()) {
        m_error = message;
        if (m_reader.lastError() != QCborError::NoError)
            m_error += QStringLiteral(" (%1)").arg(m_reader.lastError().toString());
        m_error += QStringLiteral(" at byte %1").arg(m_reader.currentOffset());
    }
    return false;
}

bool ArchiveParser::advance()
{
    if (!m_reader.next())
        return fail(QStringLiteral("damaged value"));
    return true;
}

std::optional<QString> ArchiveParser::readText()
{
    QString text;
    for (;;) {
        // Every chunk must fit in what is left of the file, whatever its header claims.
        const qsizetype chunkSize = m_reader.currentStringChunkSize();
        if (chunkSize > remaining()) {
            fail(QStringLiteral("text longer than the file"));
            return std::nullopt;
        }
        QCborStreamReader::StringResult<QString> chunk = m_reader.readString();
        if (chunk.status == QCborStreamReader::Error) {
            fail(QStringLiteral("damaged text"));
            return std::nullopt;
        }
        if (chunk.status == QCborStreamReader::EndOfString)
            return text;
        text += chunk.data;
    }
}

std::optional<QByteArray> ArchiveParser::readBytes()
{
    QByteArray bytes;
    for (;;) {
        const qsizetype chunkSize = m_reader.currentStringChunkSize();
        if (chunkSize > remaining()) {
            fail(QStringLiteral("data longer than the file"));
            return std::nullopt;
        }
        QCborStreamReader::StringResult<QByteArray> chunk = m_reader.readByteArray();
        if (chunk.status == QCborStreamReader::Error) {
            fail(QStringLiteral("damaged data"));
            return std::nullopt;
        }
        if (chunk.status == QCborStreamReader::EndOfString)
            return bytes;
        bytes += chunk.data;
    }
}

QWArchiveValue ArchiveParser::parseValue(int depth)
{
    if (depth > QWKeyedUnarchiver::maximumDepth) {
        fail(QStringLiteral("values nested too deeply"));
        return {};
    }
    if (++m_valueCount > maximumValueCount) {
        fail(QStringLiteral("too many values"));
        return {};
    }

    switch (m_reader.type()) {
    case QCborStreamReader::UnsignedInteger: {
        const quint64 value = m_reader.toUnsignedInteger();
        if (!advance())
            return {};
        // Beyond the signed 64-bit range no field of ours can hold it: a wrong kind.
        if (value > quint64(std::numeric_limits<qint64>::max()))
            return {};
        return QWArchiveValue::fromInteger(qint64(value));
    }
    case QCborStreamReader::NegativeInteger: {
        // Qt gives the magnitude: 1 for -1, up to 2^64, which wraps to 0.
        const quint64 magnitude = quint64(m_reader.toNegativeInteger());
        if (!advance())
            return {};
        constexpr quint64 largestMagnitude = quint64(1) << 63;
        if (magnitude == 0 || magnitude > largestMagnitude)
            return {};
        return QWArchiveValue::fromInteger(magnitude == largestMagnitude
                ? std::numeric_limits<qint64>::min()
                : -qint64(magnitude));
    }
    case QCborStreamReader::ByteArray: {
        std::optional<QByteArray> bytes = readBytes();
        return bytes ? QWArchiveValue::fromData(*bytes) : QWArchiveValue();
    }
    case QCborStreamReader::TextString: {
        std::optional<QString> text = readText();
        return text ? QWArchiveValue::fromString(*text) : QWArchiveValue();
    }
    case QCborStreamReader::Array:
        return parseArray(depth);
    case QCborStreamReader::Map:
        return parseMap(depth);
    case QCborStreamReader::Tag:
        return parseTagged(depth);
    case QCborStreamReader::SimpleType: {
        const QCborSimpleType type = m_reader.toSimpleType();
        if (!advance())
            return {};
        if (type == QCborSimpleType::False || type == QCborSimpleType::True)
            return QWArchiveValue::fromBool(type == QCborSimpleType::True);
        return {}; // null, undefined and the rest: no value
    }
    case QCborStreamReader::Float16: {
        const float value = float(m_reader.toFloat16());
        return advance() ? QWArchiveValue::fromFloat(value) : QWArchiveValue();
    }
    case QCborStreamReader::Float: {
        const float value = m_reader.toFloat();
        return advance() ? QWArchiveValue::fromFloat(value) : QWArchiveValue();
    }
    case QCborStreamReader::Double: {
        const double value = m_reader.toDouble();
        return advance() ? QWArchiveValue::fromDouble(value) : QWArchiveValue();
    }
    case QCborStreamReader::Invalid:
        break;
    }
    fail(QStringLiteral("damaged or truncated archive"));
    return {};
}

QWArchiveValue ArchiveParser::parseArray(int depth)
{
    // A declared length is only a claim: each element takes at least one byte.
    if (m_reader.isLengthKnown() && m_reader.length() > quint64(remaining())) {
        fail(QStringLiteral("array longer than the file"));
        return {};
    }
    if (!m_reader.enterContainer()) {
        fail(QStringLiteral("damaged array"));
        return {};
    }
    QWArchiveValue::Array elements;
    while (!failed() && m_reader.lastError() == QCborError::NoError && m_reader.hasNext()) {
        QWArchiveValue element = parseValue(depth + 1);
        if (failed()) {
            // Keep what was read before the damage; a half-read element is still worth
            // handing on, because the reader of a note prefers part of it to nothing.
            if (element.isValid())
                elements.push_back(std::move(element));
            break;
        }
        elements.push_back(std::move(element));
    }
    if (!failed() && !m_reader.leaveContainer())
        fail(QStringLiteral("truncated array"));
    return QWArchiveValue::fromArray(std::move(elements));
}

QWArchiveValue ArchiveParser::parseMap(int depth)
{
    if (m_reader.isLengthKnown() && m_reader.length() > quint64(remaining()) / 2) {
        fail(QStringLiteral("map longer than the file"));
        return {};
    }
    if (!m_reader.enterContainer()) {
        fail(QStringLiteral("damaged map"));
        return {};
    }
    QString className;
    QWArchiveValue::Entries entries;
    bool first = true;
    while (!failed() && m_reader.lastError() == QCborError::NoError && m_reader.hasNext()) {
        std::optional<QString> key;
        if (m_reader.isString()) {
            key = readText();
        } else {
            parseValue(depth + 1); // a key we cannot use: read past it and its value
        }
        if (failed())
            break;
        QWArchiveValue value = parseValue(depth + 1);
        if (key) {
            if (first && *key == classKey) {
                className = value.toString();
            } else if (*key != classKey) {
                bool known = false;
                for (const QWArchiveValue::Entry &entry : entries)
                    known = known || entry.first == *key;
                if (!known && value.isValid()) // the first of repeated keys counts
                    entries.emplace_back(*key, std::move(value));
            }
        }
        first = false;
    }
    if (!failed() && !m_reader.leaveContainer())
        fail(QStringLiteral("truncated map"));
    return QWArchiveValue::fromObject(className, std::move(entries));
}

QWArchiveValue ArchiveParser::parseTagged(int depth)
{
    const QCborTag tag = m_reader.toTag();
    if (!advance())
        return {};
    QWArchiveValue inner = parseValue(depth + 1);
    // The self-describe tag only marks the file, so a damaged file's partial content passes on.
    if (quint64(tag) == quint64(QCborKnownTags::Signature))
        return inner;
    if (failed())
        return {};
    switch (quint64(tag)) {
    case quint64(QCborKnownTags::UnixTime_t):
        switch (inner.kind()) {
        case QWArchiveValue::Kind::Double:
            return QWArchiveValue::fromDateSeconds(inner.toDouble());
        case QWArchiveValue::Kind::Float:
            return QWArchiveValue::fromDateSeconds(inner.toFloat());
        case QWArchiveValue::Kind::Integer:
            return QWArchiveValue::fromDateSeconds(double(inner.toInteger()));
        default:
            return {};
        }
    default:
        return {}; // a tag we do not know: a value of no kind of ours
    }
}

QWKeyedUnarchiver::ParseResult ArchiveParser::parseArchive()
{
    QWKeyedUnarchiver::ParseResult result;
    if (m_size == 0) {
        result.error = QStringLiteral("empty archive");
        return result;
    }
    if (m_size > QWKeyedUnarchiver::maximumArchiveSize) {
        result.error = QStringLiteral("archive larger than %1 bytes")
                           .arg(QWKeyedUnarchiver::maximumArchiveSize);
        return result;
    }
    // The header map is read like an object; its keys say what the file is.
    const QWArchiveValue header = parseValue(0);
    const QWArchiveValue *archiver = header.valueForKey(u"$archiver");
    const QWArchiveValue *version = header.valueForKey(u"$version");
    const QWArchiveValue *top = header.valueForKey(u"$top");

    if (!header.isObject() || !archiver || archiver->toString() != QWKeyedArchiver::archiverName) {
        result.error = failed() ? m_error : QStringLiteral("not a keyed archive");
        return result;
    }
    if (!version || version->kind() != QWArchiveValue::Kind::Integer
        || version->toInteger() != QWKeyedArchiver::formatVersion) {
        result.error
            = QStringLiteral("archive format version %1 is not supported")
                  .arg(version ? QString::number(version->toInteger()) : QStringLiteral("?"));
        return result;
    }
    if (top)
        result.root = *top;
    if (failed())
        result.error = m_error;
    else if (!top)
        result.error = QStringLiteral("archive without a root value");
    else if (m_reader.lastError() != QCborError::NoError || remaining() > 0)
        result.error = QStringLiteral("unexpected bytes after the archive");
    return result;
}

struct ClassRegistry
{
    QReadWriteLock lock;
    QHash<QString, QWKeyedUnarchiver::Decoder> decoders;
};

ClassRegistry &classRegistry()
{
    static ClassRegistry registry;
    return registry;
}

} // namespace

QWKeyedUnarchiver::ParseResult QWKeyedUnarchiver::parse(const QByteArray &data)
{
    return ArchiveParser(data).parseArchive();
}

bool QWKeyedUnarchiver::containsValueForKey(const QString &key) const
{
    return m_object->valueForKey(key) != nullptr;
}

const QWArchiveValue *QWKeyedUnarchiver::valueForKey(const QString &key) const
{
    return m_object->valueForKey(key);
}

bool QWKeyedUnarchiver::decodeBoolForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    return value && value->toBool();
}

qint64 QWKeyedUnarchiver::decodeIntegerForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    return value ? value->toInteger() : 0;
}

float QWKeyedUnarchiver::decodeFloatForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    if (!value)
        return 0.0f;
    if (value->kind() == QWArchiveValue::Kind::Double)
        return float(value->toDouble());
    return value->toFloat();
}

double QWKeyedUnarchiver::decodeDoubleForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    if (!value)
        return 0.0;
    if (value->kind() == QWArchiveValue::Kind::Float)
        return double(value->toFloat());
    return value->toDouble();
}

std::optional<QString> QWKeyedUnarchiver::decodeStringForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    if (!value || value->kind() != QWArchiveValue::Kind::String)
        return std::nullopt;
    return value->toString();
}

std::optional<QByteArray> QWKeyedUnarchiver::decodeDataForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    if (!value || value->kind() != QWArchiveValue::Kind::Data)
        return std::nullopt;
    return value->toData();
}

std::optional<QDateTime> QWKeyedUnarchiver::decodeDateForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    if (!value)
        return std::nullopt;
    QDateTime date = value->toDate();
    if (!date.isValid())
        return std::nullopt;
    return date;
}

std::optional<QWArchiveValue::Array> QWKeyedUnarchiver::decodeArrayForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    if (!value || !value->isArray())
        return std::nullopt;
    return value->toArray();
}

std::any QWKeyedUnarchiver::decodeObjectForKey(const QString &key) const
{
    const QWArchiveValue *value = valueForKey(key);
    return value ? decodeObject(*value) : std::any();
}

void QWKeyedUnarchiver::registerClass(const QString &className, Decoder decoder)
{
    ClassRegistry &registry = classRegistry();
    QWriteLocker locker(&registry.lock);
    registry.decoders.insert(className, std::move(decoder));
}

bool QWKeyedUnarchiver::isClassRegistered(const QString &className)
{
    ClassRegistry &registry = classRegistry();
    QReadLocker locker(&registry.lock);
    return registry.decoders.contains(className);
}

std::any QWKeyedUnarchiver::decodeObject(const QWArchiveValue &value)
{
    if (!value.isObject() || value.className().isEmpty())
        return {};
    Decoder decoder;
    {
        ClassRegistry &registry = classRegistry();
        QReadLocker locker(&registry.lock);
        decoder = registry.decoders.value(value.className());
    }
    if (!decoder)
        return {};
    return decoder(QWKeyedUnarchiver(value));
}
