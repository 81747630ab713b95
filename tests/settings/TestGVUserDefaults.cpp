#include "settings/GVUserDefaults.h"
#include "support/QWTestEnvironment.h"

#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

namespace {

using Type = GVUserDefaults::PropertyType;

// One property of every type, in a suite of its own.
class TypedDefaults final : public GVUserDefaults
{
    Q_OBJECT
public:
    using GVUserDefaults::GVUserDefaults;

protected:
    QString suiteName() const override { return QStringLiteral("TypedSuite"); }
    QList<Property> declaredProperties() const override
    {
        return {
            { QStringLiteral("flag"), Type::Bool },
            { QStringLiteral("count"), Type::Int32 },
            { QStringLiteral("total"), Type::Int64 },
            { QStringLiteral("mask"), Type::UInt64 },
            { QStringLiteral("ratio"), Type::Float },
            { QStringLiteral("alpha"), Type::Double },
            { QStringLiteral("title"), Type::String },
            { QStringLiteral("list"), Type::Object },
            { QStringLiteral("shown"), Type::Bool, QStringLiteral("isShown"),
                QStringLiteral("setShownFlag:") },
            { QStringLiteral("frame"), Type::Unsupported },
            { QStringLiteral("custom"), Type::Bool, {}, {}, true },
        };
    }
    QVariantMap setupDefaults() const override
    {
        return { { QStringLiteral("flag"), true },
            { QStringLiteral("title"), QStringLiteral("Plain") } };
    }
};

class MisspeltSuiteDefaults final : public GVUserDefaults
{
    Q_OBJECT
public:
    using GVUserDefaults::GVUserDefaults;

protected:
    QString suitName() const override { return QStringLiteral("Misspelt"); }
    QString suiteName() const override { return QStringLiteral("Correct"); }
};

class PlainDefaults final : public GVUserDefaults
{
    Q_OBJECT
public:
    using GVUserDefaults::GVUserDefaults;
};

QByteArray fileText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestGVUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void suiteGivesPrefixAndFile();
    void accessorMapping();
    void typeRules();
    void registeredDefaultsStayInMemory();
    void everyWriteIsAnnounced();
    void oneSharedInstancePerClass();
};

void TestGVUserDefaults::suiteGivesPrefixAndFile()
{
    QWTestEnvironment environment;
    auto typed = GVUserDefaults::make<TypedDefaults>();
    QCOMPARE(typed->prefix(), QStringLiteral("TypedSuite"));
    QCOMPARE(typed->transformKey(QStringLiteral("flag")), QStringLiteral("TypedSuite.flag"));
    typed->setBoolForKey(false, QStringLiteral("flag"));
    typed->userDefaults().sync();
    const QString suitePath = environment.configHome() + QStringLiteral("/Vellumo/TypedSuite.conf");
    QCOMPARE(GVUserDefaults::storePathForSuite(QStringLiteral("TypedSuite")), suitePath);
    QVERIFY(fileText(suitePath).contains("TypedSuite.flag=false"));
    QVERIFY(!QFile::exists(GVUserDefaults::standardStorePath()));

    QCOMPARE(GVUserDefaults::make<MisspeltSuiteDefaults>()->prefix(), QStringLiteral("Misspelt"));
    auto plain = GVUserDefaults::make<PlainDefaults>();
    QCOMPARE(plain->prefix(), QString());
    QCOMPARE(plain->transformKey(QStringLiteral("flag")), QStringLiteral("flag"));
    QCOMPARE(plain->userDefaults().fileName(),
        environment.configHome() + QStringLiteral("/Vellumo/Vellumo.conf"));
}

void TestGVUserDefaults::accessorMapping()
{
    QWTestEnvironment environment;
    auto typed = GVUserDefaults::make<TypedDefaults>();
    QCOMPARE(typed->mapping().size(), 22);
    QCOMPARE(
        typed->defaultsKeyForSelector(QStringLiteral("count")), QStringLiteral("TypedSuite.count"));
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("setCount:")),
        QStringLiteral("TypedSuite.count"));
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("setCount")),
        QStringLiteral("TypedSuite.count"));
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("isShown")),
        QStringLiteral("TypedSuite.shown"));
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("setShownFlag:")),
        QStringLiteral("TypedSuite.shown"));
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("shown")), QString());
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("setShown:")), QString());
    // Unsupported and hand-written properties are mapped, never served.
    QCOMPARE(typed->defaultsKeyForSelector(QStringLiteral("setFrame:")),
        QStringLiteral("TypedSuite.frame"));
    QSignalSpy did(typed.get(), &GVUserDefaults::didChangeValueForKey);
    QVERIFY(!typed->setValueForProperty(QStringLiteral("frame"), 1));
    QVERIFY(!typed->setValueForProperty(QStringLiteral("custom"), true));
    QVERIFY(!typed->setValueForProperty(QStringLiteral("missing"), true));
    QVERIFY(!typed->valueForProperty(QStringLiteral("custom")).isValid());
    QCOMPARE(did.count(), 0);
}

void TestGVUserDefaults::typeRules()
{
    QWTestEnvironment environment;
    {
        QSettings store(
            GVUserDefaults::storePathForSuite(QStringLiteral("TypedSuite")), QSettings::IniFormat);
        store.setValue(QStringLiteral("TypedSuite.count"), QStringLiteral("4294967301"));
        store.setValue(QStringLiteral("TypedSuite.total"), QStringLiteral("9000000000"));
        store.setValue(QStringLiteral("TypedSuite.mask"), QStringLiteral("18446744073709551615"));
        store.setValue(QStringLiteral("TypedSuite.flag"), QStringLiteral("no"));
    }
    auto typed = GVUserDefaults::make<TypedDefaults>();
    QCOMPARE(typed->integerForKey(QStringLiteral("count")), 5);
    QCOMPARE(typed->valueForProperty(QStringLiteral("count")), QVariant(qint32(5)));
    QCOMPARE(typed->longLongForKey(QStringLiteral("total")), Q_INT64_C(9000000000));
    QCOMPARE(typed->valueForProperty(QStringLiteral("mask")), QVariant(qint64(-1)));
    QCOMPARE(typed->boolForKey(QStringLiteral("flag")), false);

    QVERIFY(typed->setValueForProperty(QStringLiteral("count"), Q_INT64_C(0x100000007)));
    QVERIFY(typed->setValueForProperty(QStringLiteral("flag"), QStringLiteral("true")));
    QVERIFY(typed->setValueForProperty(QStringLiteral("ratio"), 0.95));
    QVERIFY(typed->setValueForProperty(QStringLiteral("alpha"), 0.1));
    QVERIFY(typed->setValueForProperty(QStringLiteral("title"), QStringLiteral("Ünïcode, = ;")));
    const QStringList list { QStringLiteral("a"), QStringLiteral("b") };
    QVERIFY(typed->setValueForProperty(QStringLiteral("list"), list));
    typed->userDefaults().sync();
    const QByteArray text = fileText(typed->userDefaults().fileName());
    QVERIFY2(text.contains("TypedSuite.ratio=0.949999988079071\n"), text.constData());
    QVERIFY(text.contains("TypedSuite.count=7\n"));
    typed.reset();

    // A fresh instance reads what the file holds as text.
    typed = GVUserDefaults::make<TypedDefaults>();
    QCOMPARE(typed->integerForKey(QStringLiteral("count")), 7);
    QCOMPARE(typed->boolForKey(QStringLiteral("flag")), true);
    QCOMPARE(typed->floatForKey(QStringLiteral("ratio")), 0.95f);
    QCOMPARE(typed->doubleForKey(QStringLiteral("ratio")), double(0.95f));
    QCOMPARE(typed->valueForProperty(QStringLiteral("ratio")).typeId(), int(QMetaType::Float));
    QCOMPARE(typed->doubleForKey(QStringLiteral("alpha")), 0.1);
    QCOMPARE(typed->stringForKey(QStringLiteral("title")), QStringLiteral("Ünïcode, = ;"));
    QCOMPARE(typed->objectForKey(QStringLiteral("list")).toStringList(), list);

    // Whatever cannot be read is false, zero or empty.
    QCOMPARE(GVUserDefaults::toLongLong(QStringLiteral("many")), 0);
    QCOMPARE(GVUserDefaults::toLongLong(1e300), std::numeric_limits<qint64>::max());
    QCOMPARE(GVUserDefaults::toLongLong(QStringLiteral("-3.9")), -3);
    QCOMPARE(GVUserDefaults::toBool(QVariant()), false);
    QCOMPARE(GVUserDefaults::toBool(QStringLiteral("2")), true);
    QCOMPARE(GVUserDefaults::toDouble(QVariant(list)), 0.0);
    QCOMPARE(GVUserDefaults::toString(QVariant(QVariantMap())), QString());
}

void TestGVUserDefaults::registeredDefaultsStayInMemory()
{
    QWTestEnvironment environment;
    auto typed = GVUserDefaults::make<TypedDefaults>();
    const QVariantMap expected { { QStringLiteral("TypedSuite.flag"), true },
        { QStringLiteral("TypedSuite.title"), QStringLiteral("Plain") } };
    QCOMPARE(typed->registeredDefaults(), expected);
    QCOMPARE(typed->boolForKey(QStringLiteral("flag")), true);
    QCOMPARE(typed->stringForKey(QStringLiteral("title")), QStringLiteral("Plain"));
    QCOMPARE(typed->integerForKey(QStringLiteral("count")), 0);

    typed->setIntegerForKey(3, QStringLiteral("count"));
    typed->userDefaults().sync();
    const QByteArray text = fileText(typed->userDefaults().fileName());
    QVERIFY(text.contains("count=3"));
    QVERIFY(!text.contains("flag"));
    QVERIFY(!text.contains("Plain"));

    // A written value wins over the default, also when it is the empty value.
    typed->setBoolForKey(false, QStringLiteral("flag"));
    typed->setStringForKey(QString(), QStringLiteral("title"));
    QCOMPARE(typed->boolForKey(QStringLiteral("flag")), false);
    QCOMPARE(typed->stringForKey(QStringLiteral("title")), QString());
}

void TestGVUserDefaults::everyWriteIsAnnounced()
{
    QWTestEnvironment environment;
    auto typed = GVUserDefaults::make<TypedDefaults>();
    QStringList events;
    connect(typed.get(), &GVUserDefaults::willChangeValueForKey, this, [&](const QString &key) {
        events.append(
            QStringLiteral("will %1 %2").arg(key, typed->valueForProperty(key).toString()));
    });
    connect(typed.get(), &GVUserDefaults::didChangeValueForKey, this, [&](const QString &key) {
        events.append(
            QStringLiteral("did %1 %2").arg(key, typed->valueForProperty(key).toString()));
    });
    typed->setStringForKey(QStringLiteral("One"), QStringLiteral("title"));
    typed->setStringForKey(QStringLiteral("One"), QStringLiteral("title"));
    typed->setValueForProperty(QStringLiteral("count"), 4);
    const QStringList expected {
        QStringLiteral("will title Plain"),
        QStringLiteral("did title One"),
        QStringLiteral("will title One"),
        QStringLiteral("did title One"),
        QStringLiteral("will count 0"),
        QStringLiteral("did count 4"),
    };
    QCOMPARE(events, expected);
}

void TestGVUserDefaults::oneSharedInstancePerClass()
{
    QWTestEnvironment environment;
    TypedDefaults &typed = GVUserDefaults::standardUserDefaults<TypedDefaults>();
    PlainDefaults &plain = GVUserDefaults::standardUserDefaults<PlainDefaults>();
    QCOMPARE(&GVUserDefaults::standardUserDefaults<TypedDefaults>(), &typed);
    QCOMPARE(&GVUserDefaults::standardUserDefaults<PlainDefaults>(), &plain);
    QVERIFY(static_cast<QObject *>(&typed) != static_cast<QObject *>(&plain));
    // The shared instance is built like any other.
    QCOMPARE(typed.prefix(), QStringLiteral("TypedSuite"));
    QCOMPARE(typed.boolForKey(QStringLiteral("flag")), true);
    auto fresh = GVUserDefaults::make<TypedDefaults>();
    QVERIFY(fresh.get() != &typed);
}

QTEST_GUILESS_MAIN(TestGVUserDefaults)
#include "TestGVUserDefaults.moc"
