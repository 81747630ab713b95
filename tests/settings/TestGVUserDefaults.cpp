#include "settings/GVUserDefaults.h"
#include "settings/SNUserDefaults.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestFiles.h"

#include <QFile>
#include <QSettings>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// Settings in a suite of their own, with two defaults.
class SuiteDefaults final : public GVUserDefaults
{
    Q_OBJECT
public:
    using GVUserDefaults::GVUserDefaults;

protected:
    QString suiteName() const override { return u"Suite"_s; }
    QVariantMap setupDefaults() const override
    {
        return { { u"flag"_s, true }, { u"title"_s, u"Plain"_s } };
    }
};

} // namespace

class TestGVUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_environment = std::make_unique<QWTestEnvironment>(); }
    void cleanup() { m_environment.reset(); }

    // A suite has a file of its own and its keys a prefix; the defaults stay in memory.
    void suiteFileAndDefaults()
    {
        auto suite = GVUserDefaults::make<SuiteDefaults>();
        QCOMPARE(suite->boolForKey(u"flag"_s), true);
        QCOMPARE(suite->stringForKey(u"title"_s), u"Plain"_s);
        suite->setIntegerForKey(3, u"count"_s);
        suite->userDefaults().sync();
        const QString path = m_environment->configHome() + u"/Vellumo/Suite.conf"_s;
        QCOMPARE(suite->userDefaults().fileName(), path);
        QCOMPARE(fileBytes(path), "[General]\nSuite.count=3\n");
        QVERIFY(!QFile::exists(GVUserDefaults::standardStorePath()));

        // A written value wins over the default, also when it is the empty value.
        suite->setBoolForKey(false, u"flag"_s);
        suite->setStringForKey(QString(), u"title"_s);
        QCOMPARE(suite->boolForKey(u"flag"_s), false);
        QCOMPARE(suite->stringForKey(u"title"_s), QString());
    }

    // The file holds text: each type reads its textual form, and whatever cannot be read is
    // false, zero or empty.
    void typeRules()
    {
        {
            QSettings store(GVUserDefaults::storePathForSuite(u"Suite"_s), QSettings::IniFormat);
            store.setValue(u"Suite.count"_s, u"4294967301"_s);
            store.setValue(u"Suite.total"_s, u"9000000000"_s);
            store.setValue(u"Suite.flag"_s, u"no"_s);
        }
        auto suite = GVUserDefaults::make<SuiteDefaults>();
        QCOMPARE(suite->integerForKey(u"count"_s), 5); // cut to 32 bits
        QCOMPARE(suite->longLongForKey(u"total"_s), Q_INT64_C(9000000000));
        QCOMPARE(suite->boolForKey(u"flag"_s), false);

        suite->setFloatForKey(0.95f, u"ratio"_s);
        suite->setDoubleForKey(0.1, u"alpha"_s);
        suite->setStringForKey(u"Ünïcode, = ;"_s, u"title"_s);
        const QStringList list { u"a"_s, u"b"_s };
        suite->setObjectForKey(list, u"list"_s);
        suite->userDefaults().sync();
        QVERIFY(fileBytes(suite->userDefaults().fileName())
                    .contains("Suite.ratio=0.949999988079071\n"));
        suite = GVUserDefaults::make<SuiteDefaults>();
        QCOMPARE(suite->floatForKey(u"ratio"_s), 0.95f);
        QCOMPARE(suite->doubleForKey(u"alpha"_s), 0.1);
        QCOMPARE(suite->stringForKey(u"title"_s), u"Ünïcode, = ;"_s);
        QCOMPARE(suite->objectForKey(u"list"_s).toStringList(), list);

        QCOMPARE(GVUserDefaults::toLongLong(u"many"_s), 0);
        QCOMPARE(GVUserDefaults::toLongLong(1e300), std::numeric_limits<qint64>::max());
        QCOMPARE(GVUserDefaults::toLongLong(u"-3.9"_s), -3);
        QCOMPARE(GVUserDefaults::toBool(QVariant()), false);
        QCOMPARE(GVUserDefaults::toBool(u"2"_s), true);
        QCOMPARE(GVUserDefaults::toDouble(QVariant(list)), 0.0);
        QCOMPARE(GVUserDefaults::toString(QVariant(QVariantMap())), QString());
    }

    // Observers hear of every write, unchanged values too, and read the old value before it.
    void everyWriteIsAnnounced()
    {
        auto suite = GVUserDefaults::make<SuiteDefaults>();
        QStringList events;
        connect(suite.get(), &GVUserDefaults::willChangeValueForKey, this, [&](const QString &key) {
            events.append(key + u" was "_s + suite->stringForKey(key));
        });
        connect(suite.get(), &GVUserDefaults::didChangeValueForKey, this,
            [&](const QString &key) { events.append(key + u" is "_s + suite->stringForKey(key)); });
        suite->setStringForKey(u"One"_s, u"title"_s);
        suite->setStringForKey(u"One"_s, u"title"_s);
        QCOMPARE(events,
            (QStringList {
                u"title was Plain"_s, u"title is One"_s, u"title was One"_s, u"title is One"_s }));
    }

private:
    std::unique_ptr<QWTestEnvironment> m_environment;
};

QTEST_GUILESS_MAIN(TestGVUserDefaults)
#include "TestGVUserDefaults.moc"
