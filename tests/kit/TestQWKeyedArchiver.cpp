#include "kit/QWColor.h"
#include "kit/QWFont.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QCborStreamWriter>
#include <QTest>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

// A record with one field of every kind the archive knows.
struct Sample final
{
    bool flag = false;
    qint64 count = 0;
    float alpha = 0.0f;
    double ratio = 0.0;
    std::optional<QString> title;
    std::optional<QByteArray> payload;
    std::optional<QDateTime> created;
    QList<QWColor> colors;
    std::optional<QWFont> font;

    static QString className() { return u"Sample"_s; }
    void encodeWithCoder(QWKeyedArchiver &coder) const
    {
        coder.encodeBoolForKey(flag, u"flag"_s);
        coder.encodeIntegerForKey(count, u"count"_s);
        coder.encodeFloatForKey(alpha, u"alpha"_s);
        coder.encodeDoubleForKey(ratio, u"ratio"_s);
        if (title)
            coder.encodeStringForKey(*title, u"title"_s);
        if (payload)
            coder.encodeDataForKey(*payload, u"payload"_s);
        if (created)
            coder.encodeDateForKey(*created, u"created"_s);
        coder.encodeArrayOfObjectsForKey(colors, u"colors"_s);
        if (font)
            coder.encodeObjectForKey(*font, u"font"_s);
    }
    static std::optional<Sample> initWithCoder(const QWKeyedUnarchiver &coder)
    {
        Sample sample;
        sample.flag = coder.decodeBoolForKey(u"flag"_s);
        sample.count = coder.decodeIntegerForKey(u"count"_s);
        sample.alpha = coder.decodeFloatForKey(u"alpha"_s);
        sample.ratio = coder.decodeDoubleForKey(u"ratio"_s);
        sample.title = coder.decodeStringForKey(u"title"_s);
        sample.payload = coder.decodeDataForKey(u"payload"_s);
        sample.created = coder.decodeDateForKey(u"created"_s);
        sample.colors = coder.decodeArrayOfObjectsOfClassForKey<QWColor>(u"colors"_s)
                            .value_or(QList<QWColor> {});
        sample.font = coder.decodeObjectOfClassForKey<QWFont>(u"font"_s);
        return sample;
    }
    friend bool operator==(const Sample &, const Sample &) = default;
};

Sample fullSample()
{
    Sample sample;
    sample.flag = true;
    sample.count = -1234567890123LL;
    sample.alpha = 0.85f;
    sample.ratio = 0.949999988079071;
    sample.title = u"Grüße, #work ✓ 🗒"_s;
    sample.payload = QByteArray("\x00\x01\xff binary", 10);
    sample.created = QDateTime::fromMSecsSinceEpoch(1700000000123LL, Qt::UTC);
    sample.colors = { QWColor(1.0, 0.8706, 0.4078), QWColor(0.0627, 0.2471, 0.9843, 0.5) };
    sample.font = QWFont(u"Helvetica Neue"_s, 14.0, true, false);
    return sample;
}

std::optional<Sample> readSample(const QByteArray &data, QString *error = nullptr)
{
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data);
    if (error)
        *error = result.error;
    return QWKeyedUnarchiver::decodeObjectOfClass<Sample>(result.root);
}

} // namespace

class TestQWKeyedArchiver final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTripsEveryKind()
    {
        const Sample sample = fullSample();
        QString error;
        QCOMPARE(readSample(QWKeyedArchiver::archivedDataWithRootObject(sample), &error), sample);
        QCOMPARE(error, QString());
        // Unset optional fields stay unset, an empty array stays an empty array.
        QCOMPARE(readSample(QWKeyedArchiver::archivedDataWithRootObject(Sample())), Sample());
        const QList<QWColor> colors { QWColor::white(), QWColor::black() };
        const QWKeyedUnarchiver::ParseResult list
            = QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(colors));
        QCOMPARE(QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<QWColor>(list.root), colors);

        // A float stays a float, so that it reads back as the same single-precision value.
        Sample floats;
        floats.alpha = 0.85f;
        floats.ratio = 0.85;
        const QWKeyedUnarchiver::ParseResult result
            = QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(floats));
        const QWKeyedUnarchiver coder(result.root);
        QCOMPARE(coder.valueForKey(u"alpha"_s)->kind(), QWArchiveValue::Kind::Float);
        QCOMPARE(coder.decodeDoubleForKey(u"alpha"_s), double(0.85f));
        QCOMPARE(coder.decodeDoubleForKey(u"ratio"_s), 0.85);
    }

    void wrongKindsReadAsMissingKeys()
    {
        using V = QWArchiveValue;
        const V object = V::fromObject(u"Sample"_s,
            { { u"flag"_s, V::fromString(u"yes"_s) }, { u"count"_s, V::fromDouble(3.5) },
                { u"title"_s, V::fromInteger(7) }, { u"payload"_s, V::fromString(u"text"_s) },
                { u"created"_s, V::fromString(u"2024-01-01"_s) },
                { u"colors"_s,
                    V::fromArray(
                        { V::fromInteger(1), QWKeyedArchiver::archivedValue(QWColor::white()),
                            QWKeyedArchiver::archivedValue(QWFont(u"Menlo"_s, 13)) }) },
                { u"font"_s, QWKeyedArchiver::archivedValue(QWColor::black()) } });
        Sample expected;
        expected.colors = { QWColor::white() }; // only the element of the right class
        QCOMPARE(readSample(QWKeyedArchiver::archivedDataWithRootValue(object)), expected);

        // An object of a class nobody registered is no object.
        const V unknown = V::fromObject(u"NSObject"_s, {});
        QVERIFY(!QWKeyedUnarchiver::decodeObject(unknown).has_value());
        QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(unknown));
    }

    void damagedInputReadsAsMissingValues()
    {
        const QList<Sample> samples { fullSample(), fullSample() };
        const QByteArray data = QWKeyedArchiver::archivedDataWithRootObject(samples);

        // Every truncation parses without crashing; whatever was complete before the cut is kept.
        int recoveredFirst = 0;
        for (qsizetype length = 0; length < data.size(); ++length) {
            const QWKeyedUnarchiver::ParseResult result
                = QWKeyedUnarchiver::parse(data.left(length));
            QVERIFY2(!result.isComplete(), qPrintable(QString::number(length)));
            const QList<Sample> read
                = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<Sample>(result.root);
            QVERIFY(read.size() <= 2);
            if (!read.isEmpty() && read.front() == samples.front())
                ++recoveredFirst;
        }
        QVERIFY(recoveredFirst > 0);

        // Bytes after the archive, other files, and archives of another maker are reported.
        QVERIFY(!QWKeyedUnarchiver::parse(data + QByteArray("\x00", 1)).isComplete());
        QVERIFY(!QWKeyedUnarchiver::parse(QByteArray("{\\rtf1\\ansi hello}")).isComplete());
        QVERIFY(!QWKeyedUnarchiver::parse(QByteArray()).isComplete());
        QByteArray foreign;
        QCborStreamWriter writer(&foreign);
        writer.startMap(2);
        writer.append(QLatin1StringView("$archiver"));
        writer.append(QLatin1StringView("NSKeyedArchiver"));
        writer.append(QLatin1StringView("$top"));
        writer.append(1);
        writer.endMap();
        QVERIFY(!QWKeyedUnarchiver::parse(foreign).root.isValid());
    }

    void hostileInputIsBounded()
    {
        // An archive whose root is "true", less its root.
        const QByteArray header
            = QWKeyedArchiver::archivedDataWithRootValue(QWArchiveValue::fromBool(true)).chopped(1);
        const auto root = [&](const char *hex) {
            return QWKeyedUnarchiver::parse(header + QByteArray::fromHex(hex));
        };
        QVERIFY(root("f5").isComplete());

        // Lengths that claim far more than the file holds.
        for (const char *claim : { "5bffffffffffffffff", "7bffffffffffffff00", "9bffffffffffffffff",
                 "bb7fffffffffffffff", "5a7fffffff", "9a7fffffff" })
            QVERIFY2(!root(claim).isComplete(), claim);

        // Nesting far deeper than any archive of ours.
        const QWKeyedUnarchiver::ParseResult nested
            = QWKeyedUnarchiver::parse(header + QByteArray(100000, char(0x81)) + '\x01');
        QVERIFY(nested.error.contains(u"nested"_s));

        // Integers beyond the signed 64-bit range, unknown tags and nulls are values of no kind.
        QVERIFY(!root("1bffffffffffffffff").root.isValid());
        QCOMPARE(
            root("3b7ffffffffffffffe").root.toInteger(), std::numeric_limits<qint64>::min() + 1);
        QCOMPARE(root("3b7fffffffffffffff").root.toInteger(), std::numeric_limits<qint64>::min());
        QVERIFY(!root("3bffffffffffffffff").root.isValid());
        QVERIFY(!root("c24101").root.isValid());
        QVERIFY(!root("f6").root.isValid());
        // A date far outside the calendar reads as no date.
        const QWArchiveValue farDate = root("c1fb7fefffffffffffff").root;
        QCOMPARE(farDate.kind(), QWArchiveValue::Kind::Date);
        QVERIFY(!farDate.toDate().isValid());
    }
};

QTEST_APPLESS_MAIN(TestQWKeyedArchiver)
#include "TestQWKeyedArchiver.moc"
