#pragma once

#include "kit/QWArchiveValue.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <any>
#include <concepts>
#include <functional>
#include <memory>
#include <optional>

class QWKeyedUnarchiver;

// A value type that reads itself from an archive: T::className() and T::initWithCoder().
template <class T>
concept QWDecodableValue = requires(const QWKeyedUnarchiver &coder)
{
    {
        T::className()
        } -> std::convertible_to<QString>;
    {
        T::initWithCoder(coder)
        } -> std::same_as<std::optional<T>>;
};

// A shared object type that reads itself from an archive.
template <class T>
concept QWDecodableShared = requires(const QWKeyedUnarchiver &coder)
{
    {
        T::className()
        } -> std::convertible_to<QString>;
    {
        T::initWithCoder(coder)
        } -> std::same_as<std::shared_ptr<T>>;
};

// Reads keyed archives written by QWKeyedArchiver, defensively: a value of the wrong kind
// reads as a missing key, an object of an unknown class as no object, and no input can
// crash the reader or make it allocate without bound. A damaged file yields whatever could
// be read before the damage, together with an error text, so that callers can save the
// rest of the user's data.
class QWKeyedUnarchiver final
{
public:
    // Limits that keep hostile files harmless. Real archives stay far below them.
    static constexpr int maximumDepth = 32;
    static constexpr qsizetype maximumArchiveSize = qsizetype(512) * 1024 * 1024;

    struct ParseResult
    {
        QWArchiveValue root; // the "$top" value, as far as it could be read
        QString error; // empty when the whole archive was read
        bool isComplete() const { return error.isEmpty(); }
    };

    // Reads the bytes of a whole archive.
    static ParseResult parse(const QByteArray &data);

    // The decoder view of one object of an archive; the object must outlive the view.
    explicit QWKeyedUnarchiver(const QWArchiveValue &object) : m_object(&object) { }

    const QString &className() const { return m_object->className(); }
    bool containsValueForKey(const QString &key) const;
    const QWArchiveValue *valueForKey(const QString &key) const;

    bool decodeBoolForKey(const QString &key) const;
    qint64 decodeIntegerForKey(const QString &key) const;
    float decodeFloatForKey(const QString &key) const; // a double is narrowed
    double decodeDoubleForKey(const QString &key) const; // a float is widened
    std::optional<QString> decodeStringForKey(const QString &key) const;
    std::optional<QByteArray> decodeDataForKey(const QString &key) const;
    std::optional<QDateTime> decodeDateForKey(const QString &key) const;
    std::optional<QWArchiveValue::Array> decodeArrayForKey(const QString &key) const;

    // Objects of a class that registered itself, of any class.
    std::any decodeObjectForKey(const QString &key) const;

    template <class T> std::optional<T> decodeObjectOfClassForKey(const QString &key) const
    {
        const QWArchiveValue *value = valueForKey(key);
        return value ? decodeObjectOfClass<T>(*value) : std::nullopt;
    }

    // The elements that decode as T; other elements are skipped.
    template <class T>
    std::optional<QList<T>> decodeArrayOfObjectsOfClassForKey(const QString &key) const
    {
        const QWArchiveValue *value = valueForKey(key);
        if (!value || !value->isArray())
            return std::nullopt;
        return decodeArrayOfObjectsOfClass<T>(*value);
    }

    template <class T> static QList<T> decodeArrayOfObjectsOfClass(const QWArchiveValue &array)
    {
        QList<T> result;
        for (const QWArchiveValue &element : array.toArray()) {
            if (std::optional<T> object = decodeObjectOfClass<T>(element))
                result.append(std::move(*object));
        }
        return result;
    }

    template <class T> static std::optional<T> decodeObjectOfClass(const QWArchiveValue &value)
    {
        if (!value.isObject())
            return std::nullopt;
        if constexpr (QWDecodableValue<T>) {
            if (value.className() == T::className())
                return T::initWithCoder(QWKeyedUnarchiver(value));
        } else if constexpr (requires { requires QWDecodableShared<typename T::element_type>; }) {
            using Element = typename T::element_type;
            if (value.className() == Element::className()) {
                if (T object = Element::initWithCoder(QWKeyedUnarchiver(value)))
                    return object;
                return std::nullopt;
            }
        }
        std::any object = decodeObject(value);
        if (T *typed = std::any_cast<T>(&object))
            return std::move(*typed);
        return std::nullopt;
    }

    // The class registry: class name to decoder. A decoder answers an empty std::any when
    // the object cannot be read. Registration is thread-safe and may replace an entry.
    using Decoder = std::function<std::any(const QWKeyedUnarchiver &)>;
    static void registerClass(const QString &className, Decoder decoder);
    static bool isClassRegistered(const QString &className);
    // Decodes an object through the registry; empty for unknown classes and non-objects.
    static std::any decodeObject(const QWArchiveValue &value);

private:
    const QWArchiveValue *m_object;
};
