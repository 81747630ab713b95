#include "kit/QWKeyedArchiver.h"

#include <QCborStreamWriter>

const QString QWKeyedArchiver::archiverName = QStringLiteral("QWKeyedArchiver");

namespace {

void writeValue(QCborStreamWriter &writer, const QWArchiveValue &value)
{
    switch (value.kind()) {
    case QWArchiveValue::Kind::Invalid:
        writer.append(nullptr);
        break;
    case QWArchiveValue::Kind::Bool:
        writer.append(value.toBool());
        break;
    case QWArchiveValue::Kind::Integer:
        writer.append(value.toInteger());
        break;
    case QWArchiveValue::Kind::Float:
        writer.append(value.toFloat()); // single precision on disk, on purpose
        break;
    case QWArchiveValue::Kind::Double:
        writer.append(value.toDouble());
        break;
    case QWArchiveValue::Kind::String:
        writer.append(value.toString());
        break;
    case QWArchiveValue::Kind::Data:
        writer.append(value.toData());
        break;
    case QWArchiveValue::Kind::Date:
        writer.append(QCborKnownTags::UnixTime_t);
        writer.append(value.toDateSeconds());
        break;
    case QWArchiveValue::Kind::Array: {
        const QWArchiveValue::Array &elements = value.toArray();
        writer.startArray(quint64(elements.size()));
        for (const QWArchiveValue &element : elements)
            writeValue(writer, element);
        writer.endArray();
        break;
    }
    case QWArchiveValue::Kind::Object: {
        const QWArchiveValue::Entries &entries = value.entries();
        writer.startMap(quint64(entries.size()) + 1);
        writer.append(QLatin1StringView("$class"));
        writer.append(value.className());
        for (const QWArchiveValue::Entry &entry : entries) {
            writer.append(entry.first);
            writeValue(writer, entry.second);
        }
        writer.endMap();
        break;
    }
    }
}

} // namespace

void QWKeyedArchiver::encodeBoolForKey(bool value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromBool(value), key);
}

void QWKeyedArchiver::encodeIntegerForKey(qint64 value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromInteger(value), key);
}

void QWKeyedArchiver::encodeFloatForKey(float value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromFloat(value), key);
}

void QWKeyedArchiver::encodeDoubleForKey(double value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromDouble(value), key);
}

void QWKeyedArchiver::encodeStringForKey(const QString &value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromString(value), key);
}

void QWKeyedArchiver::encodeDataForKey(const QByteArray &value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromData(value), key);
}

void QWKeyedArchiver::encodeDateForKey(const QDateTime &value, const QString &key)
{
    encodeValueForKey(QWArchiveValue::fromDate(value), key);
}

void QWKeyedArchiver::encodeValueForKey(QWArchiveValue value, const QString &key)
{
    // Nothing is written for a missing value: readers see a missing key, as for nil.
    if (!value.isValid())
        return;
    for (QWArchiveValue::Entry &entry : m_entries) {
        if (entry.first == key) {
            entry.second = std::move(value);
            return;
        }
    }
    m_entries.emplace_back(key, std::move(value));
}

QByteArray QWKeyedArchiver::archivedDataWithRootValue(const QWArchiveValue &root)
{
    QByteArray data;
    QCborStreamWriter writer(&data);
    writer.append(QCborKnownTags::Signature);
    writer.startMap(3);
    writer.append(QLatin1StringView("$archiver"));
    writer.append(archiverName);
    writer.append(QLatin1StringView("$version"));
    writer.append(formatVersion);
    writer.append(QLatin1StringView("$top"));
    writeValue(writer, root);
    writer.endMap();
    return data;
}
