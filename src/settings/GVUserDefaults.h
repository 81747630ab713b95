#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <memory>
#include <type_traits>
#include <typeindex>

class QSettings;

// Typed settings over an INI file. A subclass declares its settings as a table of properties
// and its defaults as a map; this class maps each property to a store key, keeps the
// defaults in memory as fallbacks (they are never written to the file), and serves every
// property the subclass does not serve itself through one typed getter and setter per type.
//
// "Key" in the accessors and change signals is the property name, the name observers know;
// the store key ("defaults key") is that name behind the prefix, if any.
//
// Instances are built in two phases, since the subclass's table cannot be read from inside a
// constructor: use make() for a fresh instance or standardUserDefaults() for the shared one.
class GVUserDefaults : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GVUserDefaults)

public:
    enum class PropertyType {
        Object, // any QVariant, stored as it is
        Bool, // bool or char
        Int32, // int: read cut to 32 bits
        Int64, // every other integer type, read as signed 64-bit
        UInt64, // likewise, read as signed 64-bit
        Float, // read and written as float
        Double, // read and written as double
        String, // QString
        Unsupported, // a type of its own (a struct): mapped, but never served here
    };

    struct Property
    {
        QString name;
        PropertyType type = PropertyType::Object;
        QString getter = {}; // empty: the property name
        QString setter = {}; // empty: "set" + capitalised name + ":"
        // The subclass implements both accessors itself; the generated ones stay out of its way.
        bool handWritten = false;
    };

    // Only this class can make one, so that nobody builds an instance and skips the second
    // phase. Subclass constructors take it and pass it on.
    class ConstructionKey
    {
        friend class GVUserDefaults;
        ConstructionKey() = default;
    };

    explicit GVUserDefaults(ConstructionKey key);
    ~GVUserDefaults() override;

    // A fresh, fully initialised instance of T, over the same files as the shared one.
    template <class T> static std::unique_ptr<T> make()
    {
        static_assert(std::is_base_of_v<GVUserDefaults, T>);
        auto instance = std::make_unique<T>(ConstructionKey {});
        static_cast<GVUserDefaults *>(instance.get())->initialise();
        return instance;
    }

    // The one instance of T in this process, built on first use.
    template <class T> static T &standardUserDefaults()
    {
        static_assert(std::is_base_of_v<GVUserDefaults, T>);
        return static_cast<T &>(
            sharedInstance(typeid(T), [] { return std::unique_ptr<GVUserDefaults>(make<T>()); }));
    }

    // "$XDG_CONFIG_HOME/Vellumo/Vellumo.conf", and the file of a named suite beside it.
    static QString standardStorePath();
    static QString storePathForSuite(const QString &suiteName);

    const QString &prefix() const { return m_prefix; }
    // Accessor name ("showMenuIcon", "setShowMenuIcon:") to store key.
    const QHash<QString, QString> &mapping() const { return m_mapping; }
    // The fallback values, by store key.
    const QVariantMap &registeredDefaults() const { return m_registeredDefaults; }
    // The store, built on first use.
    QSettings &userDefaults() const;

    QString transformKey(const QString &key) const;
    QString defaultsKeyForPropertyNamed(const QString &name) const;
    // Empty when the accessor is unknown. The member-name spelling without the trailing
    // colon ("setShowMenuIcon") is accepted for setters too.
    QString defaultsKeyForSelector(const QString &selector) const;

    // What the store holds under a store key, else its registered default, else nothing.
    QVariant objectForDefaultsKey(const QString &defaultsKey) const;

    // The type rules, shared by every reader. INI files hold text, so each also reads the
    // textual form ("true", "45", "0.95"). Whatever cannot be read gives false, 0 or empty.
    static bool toBool(const QVariant &value);
    static qint32 toInteger(const QVariant &value); // the 64-bit value cut to 32 bits
    static qint64 toLongLong(const QVariant &value);
    static float toFloat(const QVariant &value);
    static double toDouble(const QVariant &value);
    static QString toString(const QVariant &value);

    // The generated accessors, one pair per type, by property name. Every setter announces
    // the key before and after writing, whether or not the value changes, and leaves flushing
    // to QSettings.
    QVariant objectForKey(const QString &key) const;
    void setObjectForKey(const QVariant &value, const QString &key);
    bool boolForKey(const QString &key) const;
    void setBoolForKey(bool value, const QString &key);
    qint32 integerForKey(const QString &key) const;
    void setIntegerForKey(qint32 value, const QString &key);
    qint64 longLongForKey(const QString &key) const;
    void setLongLongForKey(qint64 value, const QString &key);
    float floatForKey(const QString &key) const;
    void setFloatForKey(float value, const QString &key);
    double doubleForKey(const QString &key) const;
    void setDoubleForKey(double value, const QString &key);
    QString stringForKey(const QString &key) const;
    void setStringForKey(const QString &value, const QString &key);

    // A declared property through the accessor pair its type picks: an invalid value (or
    // false) for unknown names, hand-written properties and unsupported types.
    QVariant valueForProperty(const QString &name) const;
    bool setValueForProperty(const QString &name, const QVariant &value);

Q_SIGNALS:
    void willChangeValueForKey(const QString &key);
    void didChangeValueForKey(const QString &key);

protected:
    // The subclass's own settings, in declaration order.
    virtual QList<Property> declaredProperties() const;
    // Default values by property name (or by store key without the prefix).
    virtual QVariantMap setupDefaults() const;
    // A non-empty suite name gives the subclass a store file of its own and a key prefix.
    // The misspelt name is asked first.
    virtual QString suitName() const;
    virtual QString suiteName() const;
    // Runs once the store, the defaults and the mapping are in place: the moment to read
    // settings the subclass keeps in fields.
    virtual void populateProperties();

    // Writes under a store key, with no change notice: for hand-written setters, which
    // announce their own key.
    void setObjectForDefaultsKey(const QVariant &value, const QString &defaultsKey);

private:
    void initialise();
    static GVUserDefaults &sharedInstance(
        std::type_index type, std::unique_ptr<GVUserDefaults> (*factory)());
    void writeAnnounced(const QString &key, const QVariant &value);
    const Property *generatedProperty(const QString &name) const;

    QString m_prefix;
    QString m_storePath;
    QHash<QString, QString> m_mapping;
    QVariantMap m_registeredDefaults;
    QHash<QString, Property> m_properties;
    mutable std::unique_ptr<QSettings> m_userDefaults;
};
