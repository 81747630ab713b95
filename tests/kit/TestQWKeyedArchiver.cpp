#include "kit/QWColor.h"
#include "kit/QWFont.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QCborStreamWriter>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

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

    static QString className() { return QStringLiteral("Sample"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const
    {
        coder.encodeBoolForKey(flag, QStringLiteral("flag"));
        coder.encodeIntegerForKey(count, QStringLiteral("count"));
        coder.encodeFloatForKey(alpha, QStringLiteral("alpha"));
        coder.encodeDoubleForKey(ratio, QStringLiteral("ratio"));
        if (title)
            coder.encodeStringForKey(*title, QStringLiteral("title"));
        if (payload)
            coder.encodeDataForKey(*payload, QStringLiteral("payload"));
        if (created)
            coder.encodeDateForKey(*created, QStringLiteral("created"));
        coder.encodeArrayOfObjectsForKey(colors, QStringLiteral("colors"));
        if (font)
            coder.encodeObjectForKey(*font, QStringLiteral("font"));
    }
    static std::optional<Sample> initWithCoder(const QWKeyedUnarchiver &coder)
    {
        Sample sample;
        sample.flag = coder.decodeBoolForKey(QStringLiteral("flag"));
        sample.count = coder.decodeIntegerForKey(QStringLiteral("count"));
        sample.alpha = coder.decodeFloatForKey(QStringLiteral("alpha"));
        sample.ratio = coder.decodeDoubleForKey(QStringLiteral("ratio"));
        sample.title = coder.decodeStringForKey(QStringLiteral("title"));
        sample.payload = coder.decodeDataForKey(QStringLiteral("payload"));
        sample.created = coder.decodeDateForKey(QStringLiteral("created"));
        sample.colors = coder.decodeArrayOfObjectsOfClassForKey<QWColor>(QStringLiteral("colors"))
                            .value_or(QList<QWColor> {});
        sample.font = coder.decodeObjectOfClassForKey<QWFont>(QStringLiteral("font"));
        return sample;
    }
    friend bool operator==(const Sample &, const Sample &) = default;
};

// Shared objects of a small class tree, decoded through the class registry.
struct Shape
{
    virtual ~Shape() = default;
    virtual QString className() const = 0;
    virtual void encodeWithCoder(QWKeyedArchiver &coder) const
    {
        coder.encodeStringForKey(name, QStringLiteral("name"));
    }
    QString name;
};
struct Circle final : Shape
{
    QString className() const override { return QStringLiteral("Circle"); }
};
struct Square final : Shape
{
    QString className() const override { return QStringLiteral("Square"); }
};

template <class T> void registerShape()
{
    QWKeyedUnarchiver::registerClass(
        T().className(), [](const QWKeyedUnarchiver &coder) -> std::any {
            auto shape = std::make_shared<T>();
            shape->name = coder.decodeStringForKey(QStringLiteral("name")).value_or(QString());
            return std::shared_ptr<Shape>(shape);
        });
}

Sample fullSample()
{
    Sample sample;
    sample.flag = true;
    sample.count = -1234567890123LL;
    sample.alpha = 0.85f;
    sample.ratio = 0.949999988079071;
    sample.title = QStringLiteral("Grüße, #work ✓ 🗒");
    sample.payload = QByteArray("\x00\x01\xff binary", 10);
    sample.created = QDateTime::fromMSecsSinceEpoch(1700000000123LL, Qt::UTC);
    sample.colors = { QWColor(1.0, 0.8706, 0.4078), QWColor(0.0627, 0.2471, 0.9843, 0.5) };
    sample.font = QWFont(QStringLiteral("Helvetica Neue"), 14.0, true, false);
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
    void roundTripsEveryKind();
    void floatsKeepTheirSinglePrecision();
    void keysStayInTheOrderWritten();
    void wrongKindsReadAsMissingKeys();
    void classRegistryDecodesSharedObjects();
    void readableByAnotherCborDecoder();
    void damagedInputReadsAsMissingValues();
    void hostileInputIsBounded();
};

void TestQWKeyedArchiver::roundTripsEveryKind()
{
    const Sample sample = fullSample();
    QString error;
    const std::optional<Sample> read
        = readSample(QWKeyedArchiver::archivedDataWithRootObject(sample), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QVERIFY(read);
    QCOMPARE(*read, sample);

    // Unset optional fields stay unset, an empty array stays an empty array.
    const std::optional<Sample> empty
        = readSample(QWKeyedArchiver::archivedDataWithRootObject(Sample()));
    QVERIFY(empty);
    QCOMPARE(*empty, Sample());
    QVERIFY(!empty->title);

    // Arrays at the root, and a nested archive inside a byte string.
    const QList<QWColor> colors { QWColor::white(), QWColor::black() };
    const QWKeyedUnarchiver::ParseResult list
        = QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(colors));
    QVERIFY(list.isComplete());
    QCOMPARE(QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<QWColor>(list.root), colors);
}

void TestQWKeyedArchiver::floatsKeepTheirSinglePrecision()
{
    Sample sample;
    sample.alpha = 0.85f;
    sample.ratio = 0.85;
    const QByteArray data = QWKeyedArchiver::archivedDataWithRootObject(sample);
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data);
    const QWKeyedUnarchiver coder(result.root);
    QCOMPARE(coder.valueForKey(QStringLiteral("alpha"))->kind(), QWArchiveValue::Kind::Float);
    QCOMPARE(coder.decodeDoubleForKey(QStringLiteral("alpha")), double(0.85f));
    QVERIFY(coder.decodeDoubleForKey(QStringLiteral("alpha")) != 0.85);
    QCOMPARE(coder.decodeDoubleForKey(QStringLiteral("ratio")), 0.85);
    // 0xfa: a CBOR single-precision float followed by the four bytes of 0.85f.
    QVERIFY(data.contains(QByteArray::fromHex("fa3f59999a")));
}

void TestQWKeyedArchiver::keysStayInTheOrderWritten()
{
    const QByteArray data = QWKeyedArchiver::archivedDataWithRootObject(fullSample());
    const QStringList keys { QStringLiteral("$class"), QStringLiteral("flag"),
        QStringLiteral("count"), QStringLiteral("alpha"), QStringLiteral("ratio"),
        QStringLiteral("title"), QStringLiteral("payload"), QStringLiteral("created"),
        QStringLiteral("colors"), QStringLiteral("font") };
    qsizetype last = -1;
    for (const QString &key : keys) {
        const qsizetype at = data.indexOf(key.toUtf8(), last + 1);
        QVERIFY2(at > last, qPrintable(key));
        last = at;
    }
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data);
    QCOMPARE(result.root.entries().front().first, QStringLiteral("flag"));
    QCOMPARE(result.root.entries().back().first, QStringLiteral("font"));
    // The file starts with the self-describe tag, then the header map.
    QVERIFY(data.startsWith(QByteArray::fromHex("d9d9f7a3")));
}

void TestQWKeyedArchiver::wrongKindsReadAsMissingKeys()
{
    QWArchiveValue object = QWArchiveValue::fromObject(QStringLiteral("Sample"),
        { { QStringLiteral("flag"), QWArchiveValue::fromString(QStringLiteral("yes")) },
            { QStringLiteral("count"), QWArchiveValue::fromDouble(3.5) },
            { QStringLiteral("title"), QWArchiveValue::fromInteger(7) },
            { QStringLiteral("payload"), QWArchiveValue::fromString(QStringLiteral("text")) },
            { QStringLiteral("created"), QWArchiveValue::fromString(QStringLiteral("2024-01-01")) },
            { QStringLiteral("colors"),
                QWArchiveValue::fromArray({ QWArchiveValue::fromInteger(1),
                    QWKeyedArchiver::archivedValue(QWColor::white()),
                    QWKeyedArchiver::archivedValue(QWFont(QStringLiteral("Menlo"), 13)) }) },
            { QStringLiteral("font"), QWKeyedArchiver::archivedValue(QWColor::black()) } });
    const std::optional<Sample> read
        = readSample(QWKeyedArchiver::archivedDataWithRootValue(object));
    QVERIFY(read);
    QCOMPARE(read->flag, false);
    QCOMPARE(read->count, 0);
    QVERIFY(!read->title);
    QVERIFY(!read->payload);
    QVERIFY(!read->created);
    QCOMPARE(
        read->colors, QList<QWColor> { QWColor::white() }); // only the element of the right class
    QVERIFY(!read->font);

    // An object of a class nobody registered is no object.
    const QWArchiveValue unknown = QWArchiveValue::fromObject(QStringLiteral("NSObject"), {});
    QVERIFY(!QWKeyedUnarchiver::decodeObject(unknown).has_value());
    QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(unknown));
}

void TestQWKeyedArchiver::classRegistryDecodesSharedObjects()
{
    registerShape<Circle>();
    registerShape<Square>();
    auto circle = std::make_shared<Circle>();
    circle->name = QStringLiteral("round");
    auto square = std::make_shared<Square>();
    square->name = QStringLiteral("boxy");
    const QList<std::shared_ptr<Shape>> shapes { circle, nullptr, square };
    const QWKeyedUnarchiver::ParseResult result
        = QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(shapes));
    QVERIFY(result.isComplete());
    const QList<std::shared_ptr<Shape>> read
        = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<Shape>>(result.root);
    QCOMPARE(read.size(), 2); // the null element was never written
    QCOMPARE(read[0]->className(), QStringLiteral("Circle"));
    QCOMPARE(read[0]->name, QStringLiteral("round"));
    QCOMPARE(read[1]->className(), QStringLiteral("Square"));
    QVERIFY(QWKeyedUnarchiver::isClassRegistered(QStringLiteral("Square")));
}

void TestQWKeyedArchiver::readableByAnotherCborDecoder()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("sample.db"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QWKeyedArchiver::archivedDataWithRootObject(QList<Sample> { fullSample() }));
    file.close();

    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
        { QStringLiteral(VELLUMO_TEST_DATA_DIR "/read_archive.py"), path });
    QVERIFY(python.waitForFinished(60000));
    const QString output = QString::fromUtf8(python.readAllStandardOutput());
    QVERIFY2(python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0,
        qPrintable(QString::fromUtf8(python.readAllStandardError())));
    const QStringList lines = output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.value(0), QStringLiteral("archiver QWKeyedArchiver 1"));
    QCOMPARE(lines.value(1),
        QStringLiteral("keys $class flag count alpha ratio title payload created colors font"));
    QCOMPARE(lines.value(2), QStringLiteral("class Sample"));
    QCOMPARE(lines.value(3), QStringLiteral("title Grüße, #work ✓ 🗒"));
    QCOMPARE(lines.value(4), QStringLiteral("alpha 0.8500000238418579")); // the float, widened
    QCOMPARE(lines.value(5), QStringLiteral("created 2023-11-14T22:13:20.123000+00:00"));
    QCOMPARE(lines.value(6), QStringLiteral("payload 0001ff2062696e617279"));
    QCOMPARE(lines.value(7), QStringLiteral("colors QWColor QWColor"));
}

void TestQWKeyedArchiver::damagedInputReadsAsMissingValues()
{
    const QList<Sample> samples { fullSample(), fullSample() };
    const QByteArray data = QWKeyedArchiver::archivedDataWithRootObject(samples);

    // Every truncation parses without crashing; whatever was complete before the cut is kept.
    int recoveredBoth = 0;
    for (qsizetype length = 0; length < data.size(); ++length) {
        const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data.left(length));
        QVERIFY2(!result.isComplete(), qPrintable(QString::number(length)));
        const QList<Sample> read
            = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<Sample>(result.root);
        QVERIFY(read.size() <= 2);
        if (!read.isEmpty() && read.front() == samples.front())
            ++recoveredBoth;
    }
    QVERIFY(recoveredBoth > 0);

    // Bytes after the archive, other files, and archives of another maker are reported.
    QVERIFY(!QWKeyedUnarchiver::parse(data + QByteArray("\x00", 1)).isComplete());
    QVERIFY(!QWKeyedUnarchiver::parse(QByteArray("{\\rtf1\\ansi hello}")).isComplete());
    QVERIFY(!QWKeyedUnarchiver::parse(QByteArray()).isComplete());
    QByteArray foreign;
    {
        QCborStreamWriter writer(&foreign);
        writer.startMap(2);
        writer.append(QLatin1StringView("$archiver"));
        writer.append(QLatin1StringView("NSKeyedArchiver"));
        writer.append(QLatin1StringView("$top"));
        writer.append(1);
        writer.endMap();
    }
    const QWKeyedUnarchiver::ParseResult other = QWKeyedUnarchiver::parse(foreign);
    QVERIFY(!other.isComplete());
    QVERIFY(!other.root.isValid());

    // Random bytes, and random damage to a real archive, never crash the reader.
    QRandomGenerator random(20261121);
    for (int round = 0; round < 2000; ++round) {
        QByteArray damaged = data;
        const int flips = 1 + int(random.bounded(8));
        for (int flip = 0; flip < flips; ++flip)
            damaged[random.bounded(damaged.size())] = char(random.bounded(256));
        const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(damaged);
        QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<Sample>(result.root);
        QByteArray noise(int(random.bounded(200)), Qt::Uninitialized);
        for (char &byte : noise)
            byte = char(random.bounded(256));
        QWKeyedUnarchiver::parse(QByteArray::fromHex("d9d9f7") + noise);
    }
}

void TestQWKeyedArchiver::hostileInputIsBounded()
{
    const QByteArray header = QByteArray::fromHex("a3"
                                                  "69"
                                                  "246172636869766572"
                                                  "6f"
                                                  "51574b65796564417263686976657"
                                                  "2"
                                                  "68"
                                                  "2476657273696f6e"
                                                  "01"
                                                  "64"
                                                  "24746f70");
    QVERIFY(QWKeyedUnarchiver::parse(header + QByteArray::fromHex("f5"))
                .isComplete()); // the header is right

    // Lengths that claim far more than the file holds.
    for (const char *claim : { "5bffffffffffffffff", "7bffffffffffffff00", "9bffffffffffffffff",
             "bb7fffffffffffffff", "5a7fffffff", "9a7fffffff" }) {
        const QWKeyedUnarchiver::ParseResult result
            = QWKeyedUnarchiver::parse(header + QByteArray::fromHex(claim));
        QVERIFY2(!result.isComplete(), claim);
    }

    // Nesting far deeper than any archive of ours.
    const QByteArray deep = header + QByteArray(100000, char(0x81)) + QByteArray::fromHex("01");
    const QWKeyedUnarchiver::ParseResult nested = QWKeyedUnarchiver::parse(deep);
    QVERIFY(!nested.isComplete());
    QVERIFY(nested.error.contains(QStringLiteral("nested")));

    // Integers beyond the signed 64-bit range, unknown tags and nulls are values of no kind.
    QWArchiveValue big
        = QWKeyedUnarchiver::parse(header + QByteArray::fromHex("1bffffffffffffffff")).root;
    QVERIFY(!big.isValid());
    QCOMPARE(QWKeyedUnarchiver::parse(header + QByteArray::fromHex("3b7ffffffffffffffe"))
                 .root.toInteger(),
        std::numeric_limits<qint64>::min() + 1);
    QCOMPARE(QWKeyedUnarchiver::parse(header + QByteArray::fromHex("3b7fffffffffffffff"))
                 .root.toInteger(),
        std::numeric_limits<qint64>::min());
    QVERIFY(!QWKeyedUnarchiver::parse(header + QByteArray::fromHex("3bffffffffffffffff"))
                 .root.isValid());
    QVERIFY(!QWKeyedUnarchiver::parse(header + QByteArray::fromHex("c24101")).root.isValid());
    QVERIFY(!QWKeyedUnarchiver::parse(header + QByteArray::fromHex("f6")).root.isValid());
    // A date far outside the calendar reads as no date.
    const QWArchiveValue farDate
        = QWKeyedUnarchiver::parse(header + QByteArray::fromHex("c1fb7fefffffffffffff")).root;
    QCOMPARE(farDate.kind(), QWArchiveValue::Kind::Date);
    QVERIFY(!farDate.toDate().isValid());
}

QTEST_APPLESS_MAIN(TestQWKeyedArchiver)
#include "TestQWKeyedArchiver.moc"
