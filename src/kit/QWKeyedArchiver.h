#pragma once

#include "kit/QWArchiveValue.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <concepts>
#include <memory>
#include <ranges>

class QWKeyedArchiver;

// Anything that writes itself into an archive: a class name and encodeWithCoder().
template <class T>
concept QWEncodable = requires(const T &object, QWKeyedArchiver &coder)
{
    object.encodeWithCoder(coder);
    {
        object.className()
        } -> std::convertible_to<QString>;
};

// Writes keyed archives: CBOR (RFC 8949) files that any CBOR tool can read. See
// docs/archive-format.md. An object encodes its keys with the encode...ForKey calls in the
// order it wants them on disk; archivedDataWithRootObject() gives the bytes of a whole file.
class QWKeyedArchiver final
{
public:
    static const QString archiverName; // "QWKeyedArchiver"
    static constexpr qint64 formatVersion = 1;

    QWKeyedArchiver() = default;

    void encodeBoolForKey(bool value, const QString &key);
    void encodeIntegerForKey(qint64 value, const QString &key);
    void encodeFloatForKey(float value, const QString &key);
    void encodeDoubleForKey(double value, const QString &key);
    void encodeStringForKey(const QString &value, const QString &key);
    void encodeDataForKey(const QByteArray &value, const QString &key);
    void encodeDateForKey(const QDateTime &value, const QString &key);
    void encodeValueForKey(QWArchiveValue value, const QString &key);

    template <class T> void encodeObjectForKey(const T &object, const QString &key)
    {
        encodeValueForKey(archivedValue(object), key);
    }

    template <std::ranges::input_range Range>
    void encodeArrayOfObjectsForKey(const Range &objects, const QString &key)
    {
        encodeValueForKey(archivedArray(objects), key);
    }

    const QWArchiveValue::Entries &entries() const { return m_entries; }
    QWArchiveValue::Entries takeEntries() { return std::move(m_entries); }

    // The archive value of one object; a null pointer gives the invalid value.
    template <QWEncodable T> static QWArchiveValue archivedValue(const T &object)
    {
        QWKeyedArchiver coder;
        object.encodeWithCoder(coder);
        return QWArchiveValue::fromObject(object.className(), coder.takeEntries());
    }
    template <QWEncodable T> static QWArchiveValue archivedValue(const std::shared_ptr<T> &object)
    {
        return object ? archivedValue(*object) : QWArchiveValue();
    }

    // An array of objects; null elements are left out.
    template <std::ranges::input_range Range>
    static QWArchiveValue archivedArray(const Range &objects)
    {
        QWArchiveValue::Array values;
        for (const auto &object : objects) {
            QWArchiveValue value = archivedValue(object);
            if (value.isValid())
                values.push_back(std::move(value));
        }
        return QWArchiveValue::fromArray(std::move(values));
    }

    // A whole archive file: self-describe tag, then {"$archiver", "$version", "$top"}.
    static QByteArray archivedDataWithRootValue(const QWArchiveValue &root);

    template <class T> static QByteArray archivedDataWithRootObject(const T &root)
    {
        if constexpr (std::ranges::input_range<T> && !QWEncodable<T>)
            return archivedDataWithRootValue(archivedArray(root));
        else
            return archivedDataWithRootValue(archivedValue(root));
    }

private:
    QWArchiveValue::Entries m_entries;
};
