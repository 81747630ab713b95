#include "kit/QWArchiveValue.h"

struct QWArchiveValue::Object
{
    QString className;
    Entries entries;
};

#include <cmath>

QWArchiveValue QWArchiveValue::fromBool(bool value)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Bool)>, value));
}

QWArchiveValue QWArchiveValue::fromInteger(qint64 value)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Integer)>, value));
}

QWArchiveValue QWArchiveValue::fromFloat(float value)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Float)>, value));
}

QWArchiveValue QWArchiveValue::fromDouble(double value)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Double)>, value));
}

QWArchiveValue QWArchiveValue::fromString(const QString &value)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::String)>, value));
}

QWArchiveValue QWArchiveValue::fromData(const QByteArray &value)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Data)>, value));
}

QWArchiveValue QWArchiveValue::fromDate(const QDateTime &value)
{
    if (!value.isValid())
        return {};
    return fromDateSeconds(double(value.toMSecsSinceEpoch()) / 1000.0);
}

QWArchiveValue QWArchiveValue::fromDateSeconds(double secondsSince1970)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Date)>, Date { secondsSince1970 }));
}

QWArchiveValue QWArchiveValue::fromArray(Array values)
{
    return QWArchiveValue(Storage(
        std::in_place_index<int(Kind::Array)>, std::make_shared<const Array>(std::move(values))));
}

QWArchiveValue QWArchiveValue::fromObject(const QString &className, Entries entries)
{
    return QWArchiveValue(Storage(std::in_place_index<int(Kind::Object)>,
        std::make_shared<const Object>(Object { className, std::move(entries) })));
}

bool QWArchiveValue::toBool() const
{
    const bool *value = std::get_if<bool>(&m_value);
    return value && *value;
}

qint64 QWArchiveValue::toInteger() const
{
    const qint64 *value = std::get_if<qint64>(&m_value);
    return value ? *value : 0;
}

float QWArchiveValue::toFloat() const
{
    const float *value = std::get_if<float>(&m_value);
    return value ? *value : 0.0f;
}

double QWArchiveValue::toDouble() const
{
    const double *value = std::get_if<double>(&m_value);
    return value ? *value : 0.0;
}

QString QWArchiveValue::toString() const
{
    const QString *value = std::get_if<QString>(&m_value);
    return value ? *value : QString();
}

QByteArray QWArchiveValue::toData() const
{
    const QByteArray *value = std::get_if<QByteArray>(&m_value);
    return value ? *value : QByteArray();
}

double QWArchiveValue::toDateSeconds() const
{
    const Date *value = std::get_if<Date>(&m_value);
    return value ? value->seconds : 0.0;
}

QDateTime QWArchiveValue::toDate() const
{
    const Date *value = std::get_if<Date>(&m_value);
    if (!value || !std::isfinite(value->seconds))
        return {};
    // QDateTime keeps milliseconds; beyond its range there is no date to give.
    const double milliseconds = std::round(value->seconds * 1000.0);
    constexpr double limit = 8.64e18; // well inside qint64 and QDateTime's range
    if (milliseconds > limit || milliseconds < -limit)
        return {};
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds), Qt::UTC);
}

const QWArchiveValue::Array &QWArchiveValue::toArray() const
{
    static const Array empty;
    const auto *value = std::get_if<std::shared_ptr<const Array>>(&m_value);
    return value ? **value : empty;
}

const QString &QWArchiveValue::className() const
{
    static const QString empty;
    const auto *value = std::get_if<std::shared_ptr<const Object>>(&m_value);
    return value ? (*value)->className : empty;
}

const QWArchiveValue::Entries &QWArchiveValue::entries() const
{
    static const Entries empty;
    const auto *value = std::get_if<std::shared_ptr<const Object>>(&m_value);
    return value ? (*value)->entries : empty;
}

const QWArchiveValue *QWArchiveValue::valueForKey(QStringView key) const
{
    const auto *object = std::get_if<std::shared_ptr<const Object>>(&m_value);
    if (!object)
        return nullptr;
    for (const Entry &entry : (*object)->entries) {
        if (entry.first == key)
            return &entry.second;
    }
    return nullptr;
}

void QWArchiveValue::setValueForKey(const QString &key, QWArchiveValue value)
{
    const auto *shared = std::get_if<std::shared_ptr<const Object>>(&m_value);
    if (!shared)
        return;
    auto object = std::make_shared<Object>(**shared); // other copies keep the old object
    m_value = std::shared_ptr<const Object>(object);
    for (Entry &entry : object->entries) {
        if (entry.first == key) {
            entry.second = std::move(value);
            return;
        }
    }
    object->entries.emplace_back(key, std::move(value));
}

bool operator==(const QWArchiveValue &left, const QWArchiveValue &right)
{
    if (left.kind() != right.kind())
        return false;
    switch (left.kind()) {
    case QWArchiveValue::Kind::Array:
        return left.toArray() == right.toArray();
    case QWArchiveValue::Kind::Object:
        return left.className() == right.className() && left.entries() == right.entries();
    default:
        return left.m_value == right.m_value;
    }
}
