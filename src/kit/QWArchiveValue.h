#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <memory>
#include <utility>
#include <variant>
#include <vector>

// One value of a keyed archive: what an object writes under a key, and what a reader finds
// there. Objects keep their keys in the order they were written, because that order is
// visible in the file and other tools show it.
class QWArchiveValue final
{
public:
    enum class Kind { Invalid, Bool, Integer, Float, Double, String, Data, Date, Array, Object };

    using Array = std::vector<QWArchiveValue>;
    using Entry = std::pair<QString, QWArchiveValue>;
    using Entries = std::vector<Entry>;

    QWArchiveValue() = default; // Invalid: "nothing here"

    static QWArchiveValue fromBool(bool value);
    static QWArchiveValue fromInteger(qint64 value);
    static QWArchiveValue fromFloat(float value);
    static QWArchiveValue fromDouble(double value);
    static QWArchiveValue fromString(const QString &value);
    static QWArchiveValue fromData(const QByteArray &value);
    // A date is seconds since 1970-01-01 UTC, as a double.
    static QWArchiveValue fromDate(const QDateTime &value);
    static QWArchiveValue fromDateSeconds(double secondsSince1970);
    static QWArchiveValue fromArray(Array values);
    static QWArchiveValue fromObject(const QString &className, Entries entries);

    Kind kind() const { return static_cast<Kind>(m_value.index()); }
    bool isValid() const { return kind() != Kind::Invalid; }
    bool isObject() const { return kind() == Kind::Object; }
    bool isArray() const { return kind() == Kind::Array; }

    // Each accessor answers the empty value of its type when the kind differs.
    bool toBool() const;
    qint64 toInteger() const;
    float toFloat() const;
    double toDouble() const;
    QString toString() const;
    QByteArray toData() const;
    double toDateSeconds() const;
    QDateTime toDate() const; // invalid QDateTime when the kind differs
    const Array &toArray() const;
    const QString &className() const; // empty unless an object
    const Entries &entries() const; // empty unless an object
    // The value written under the key in an object, or nullptr.
    const QWArchiveValue *valueForKey(QStringView key) const;

    // Appends or replaces a key of an object (no effect on other kinds).
    void setValueForKey(const QString &key, QWArchiveValue value);

    friend bool operator==(const QWArchiveValue &, const QWArchiveValue &);

private:
    struct Date
    {
        double seconds = 0.0;
        friend bool operator==(const Date &, const Date &) = default;
    };
    struct Object;

    // The order of the alternatives follows Kind. Containers are shared, so copying a value
    // tree is cheap; the rare change to one copies it first.
    using Storage = std::variant<std::monostate, bool, qint64, float, double, QString, QByteArray,
        Date, std::shared_ptr<const Array>, std::shared_ptr<const Object>>;
    explicit QWArchiveValue(Storage value) : m_value(std::move(value)) { }

    Storage m_value;
};
