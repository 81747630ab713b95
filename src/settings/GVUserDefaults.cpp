#include "settings/GVUserDefaults.h"

#include <QSettings>
#include <QStandardPaths>

#include <cmath>
#include <limits>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace {

bool isTextual(const QVariant &value)
{
    return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray;
}

bool isFloatingPoint(const QVariant &value)
{
    return value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float;
}

// Out-of-range casts from floating point are undefined, so they are clamped first; like the
// integer value of a number, the fraction is cut off.
qint64 clampedLongLong(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (std::isnan(value))
        return 0;
    if (value >= limit)
        return std::numeric_limits<qint64>::max();
    if (value < -limit)
        return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(value);
}

// The words a settings file may hold for a boolean; nullopt for anything else.
std::optional<bool> booleanWord(const QString &text)
{
    const QString word = text.trimmed().toLower();
    if (word == QLatin1String("true") || word == QLatin1String("yes"))
        return true;
    if (word == QLatin1String("false") || word == QLatin1String("no"))
        return false;
    return std::nullopt;
}

struct SharedInstances
{
    // Recursive, so that building one class's instance may ask for another's.
    std::recursive_mutex mutex;
    std::unordered_map<std::type_index, std::unique_ptr<GVUserDefaults>> instances;
};

SharedInstances &sharedInstances()
{
    static SharedInstances shared;
    return shared;
}

} // namespace

GVUserDefaults::GVUserDefaults(ConstructionKey) { }

// QSettings flushes what is still pending when it goes.
GVUserDefaults::~GVUserDefaults() = default;

GVUserDefaults &GVUserDefaults::sharedInstance(
    std::type_index type, std::unique_ptr<GVUserDefaults> (*factory)())
{
    SharedInstances &shared = sharedInstances();
    std::lock_guard locker(shared.mutex);
    const auto found = shared.instances.find(type);
    if (found != shared.instances.end())
        return *found->second;
    std::unique_ptr<GVUserDefaults> instance = factory();
    GVUserDefaults &result = *instance;
    shared.instances.emplace(type, std::move(instance));
    return result;
}

QString GVUserDefaults::standardStorePath()
{
    return storePathForSuite(QStringLiteral("Vellumo"));
}

QString GVUserDefaults::storePathForSuite(const QString &suiteName)
{
    QString fileName = suiteName;
    fileName.replace(u'/', u'_'); // one file in the folder, whatever the name
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/Vellumo/") + fileName + QStringLiteral(".conf");
}

void GVUserDefaults::initialise()
{
    QString suite = suitName();
    if (suite.isEmpty())
        suite = suiteName();
    if (suite.isEmpty()) {
        m_storePath = standardStorePath();
    } else {
        m_storePath = storePathForSuite(suite);
        m_prefix = suite;
    }
    userDefaults();

    const QVariantMap defaults = setupDefaults();
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it)
        m_registeredDefaults.insert(transformKey(it.key()), it.value());

    const QList<Property> properties = declaredProperties();
    for (const Property &property : properties) {
        const QString getter = property.getter.isEmpty() ? property.name : property.getter;
        const QString setter = property.setter.isEmpty()
            ? QStringLiteral("set") + property.name.left(1).toUpper() + property.name.mid(1) + u':'
            : property.setter;
        const QString key = defaultsKeyForPropertyNamed(property.name);
        m_mapping.insert(getter, key);
        m_mapping.insert(setter, key);
        m_properties.insert(property.name, property);
    }

    populateProperties();
}

QSettings &GVUserDefaults::userDefaults() const
{
    if (!m_userDefaults)
        m_userDefaults = std::make_unique<QSettings>(m_storePath, QSettings::IniFormat);
    return *m_userDefaults;
}

QString GVUserDefaults::transformKey(const QString &key) const
{
    return m_prefix.isEmpty() ? key : m_prefix + u'.' + key;
}

QString GVUserDefaults::defaultsKeyForPropertyNamed(const QString &name) const
{
    return transformKey(name);
}

QString GVUserDefaults::defaultsKeyForSelector(const QString &selector) const
{
    auto found = m_mapping.constFind(selector);
    if (found == m_mapping.cend() && !selector.endsWith(u':'))
        found = m_mapping.constFind(selector + u':');
    return found == m_mapping.cend() ? QString() : *found;
}

QVariant GVUserDefaults::objectForDefaultsKey(const QString &defaultsKey) const
{
    const QVariant stored = userDefaults().value(defaultsKey);
    return stored.isValid() ? stored : m_registeredDefaults.value(defaultsKey);
}

void GVUserDefaults::setObjectForDefaultsKey(const QVariant &value, const QString &defaultsKey)
{
    userDefaults().setValue(defaultsKey, value);
}

bool GVUserDefaults::toBool(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (isTextual(value)) {
        if (const std::optional<bool> word = booleanWord(value.toString()))
            return *word;
    }
    return toDouble(value) != 0.0;
}

qint32 GVUserDefaults::toInteger(const QVariant &value)
{
    return static_cast<qint32>(toLongLong(value));
}

qint64 GVUserDefaults::toLongLong(const QVariant &value)
{
    if (isTextual(value)) {
        const QString text = value.toString().trimmed();
        bool ok = false;
        if (const qint64 number = text.toLongLong(&ok); ok)
            return number;
        if (const quint64 number = text.toULongLong(&ok); ok)
            return static_cast<qint64>(number);
        if (const double number = text.toDouble(&ok); ok)
            return clampedLongLong(number);
        return booleanWord(text).value_or(false) ? 1 : 0;
    }
    if (isFloatingPoint(value))
        return clampedLongLong(value.toDouble());
    if (value.typeId() == QMetaType::ULongLong)
        return static_cast<qint64>(value.toULongLong());
    bool ok = false;
    const qint64 number = value.toLongLong(&ok);
    return ok ? number : 0;
}

float GVUserDefaults::toFloat(const QVariant &value)
{
    if (value.typeId() == QMetaType::Float)
        return value.toFloat();
    const double number = toDouble(value);
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<float>::max())
        return number > 0 ? std::numeric_limits<float>::infinity()
                          : -std::numeric_limits<float>::infinity();
    return static_cast<float>(number);
}

double GVUserDefaults::toDouble(const QVariant &value)
{
    if (isTextual(value)) {
        const QString text = value.toString().trimmed();
        bool ok = false;
        if (const double number = text.toDouble(&ok); ok)
            return number;
        return booleanWord(text).value_or(false) ? 1.0 : 0.0;
    }
    bool ok = false;
    const double number = value.toDouble(&ok);
    return ok ? number : 0.0;
}

QString GVUserDefaults::toString(const QVariant &value)
{
    return value.canConvert<QString>() ? value.toString() : QString();
}

QVariant GVUserDefaults::objectForKey(const QString &key) const
{
    return objectForDefaultsKey(defaultsKeyForPropertyNamed(key));
}

void GVUserDefaults::writeAnnounced(const QString &key, const QVariant &value)
{
    Q_EMIT willChangeValueForKey(key);
    setObjectForDefaultsKey(value, defaultsKeyForPropertyNamed(key));
    Q_EMIT didChangeValueForKey(key);
}

void GVUserDefaults::setObjectForKey(const QVariant &value, const QString &key)
{
    writeAnnounced(key, value);
}

bool GVUserDefaults::boolForKey(const QString &key) const
{
    return toBool(objectForKey(key));
}

void GVUserDefaults::setBoolForKey(bool value, const QString &key)
{
    writeAnnounced(key, value);
}

qint32 GVUserDefaults::integerForKey(const QString &key) const
{
    return toInteger(objectForKey(key));
}

void GVUserDefaults::setIntegerForKey(qint32 value, const QString &key)
{
    writeAnnounced(key, value);
}

qint64 GVUserDefaults::longLongForKey(const QString &key) const
{
    return toLongLong(objectForKey(key));
}

void GVUserDefaults::setLongLongForKey(qint64 value, const QString &key)
{
    writeAnnounced(key, value);
}

float GVUserDefaults::floatForKey(const QString &key) const
{
    return toFloat(objectForKey(key));
}

void GVUserDefaults::setFloatForKey(float value, const QString &key)
{
    // QSettings would write a float as binary; the widened double reads back as the same float.
    writeAnnounced(key, double(value));
}

double GVUserDefaults::doubleForKey(const QString &key) const
{
    return toDouble(objectForKey(key));
}

void GVUserDefaults::setDoubleForKey(double value, const QString &key)
{
    writeAnnounced(key, value);
}

QString GVUserDefaults::stringForKey(const QString &key) const
{
    return toString(objectForKey(key));
}

void GVUserDefaults::setStringForKey(const QString &value, const QString &key)
{
    writeAnnounced(key, value);
}

const GVUserDefaults::Property *GVUserDefaults::generatedProperty(const QString &name) const
{
    const auto found = m_properties.constFind(name);
    if (found == m_properties.cend() || found->handWritten
        || found->type == PropertyType::Unsupported)
        return nullptr;
    return &*found;
}

QVariant GVUserDefaults::valueForProperty(const QString &name) const
{
    const Property *property = generatedProperty(name);
    if (!property)
        return {};
    switch (property->type) {
    case PropertyType::Object:
        return objectForKey(name);
    case PropertyType::Bool:
        return boolForKey(name);
    case PropertyType::Int32:
        return integerForKey(name);
    case PropertyType::Int64:
    case PropertyType::UInt64:
        return longLongForKey(name);
    case PropertyType::Float:
        return floatForKey(name);
    case PropertyType::Double:
        return doubleForKey(name);
    case PropertyType::String:
        return stringForKey(name);
    case PropertyType::Unsupported:
        break;
    }
    return {};
}

bool GVUserDefaults::setValueForProperty(const QString &name, const QVariant &value)
{
    const Property *property = generatedProperty(name);
    if (!property)
        return false;
    switch (property->type) {
    case PropertyType::Object:
        setObjectForKey(value, name);
        return true;
    case PropertyType::Bool:
        setBoolForKey(toBool(value), name);
        return true;
    case PropertyType::Int32:
        setIntegerForKey(toInteger(value), name);
        return true;
    case PropertyType::Int64:
    case PropertyType::UInt64:
        setLongLongForKey(toLongLong(value), name);
        return true;
    case PropertyType::Float:
        setFloatForKey(toFloat(value), name);
        return true;
    case PropertyType::Double:
        setDoubleForKey(toDouble(value), name);
        return true;
    case PropertyType::String:
        setStringForKey(toString(value), name);
        return true;
    case PropertyType::Unsupported:
        break;
    }
    return false;
}

QList<GVUserDefaults::Property> GVUserDefaults::declaredProperties() const
{
    return {};
}

QVariantMap GVUserDefaults::setupDefaults() const
{
    return {};
}

QString GVUserDefaults::suitName() const
{
    return {};
}

QString GVUserDefaults::suiteName() const
{
    return {};
}

void GVUserDefaults::populateProperties() { }
