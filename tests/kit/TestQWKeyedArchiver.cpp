#include "kit/QWColor.h"
#include "kit/QWFont.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QCborMap>
#include <QCborValue>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

using V = QWArchiveValue;

class TestQWKeyedArchiver final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTripsEveryKind()
    {
        QWKeyedArchiver coder;
        coder.encodeBoolForKey(true, u"flag"_s);
        coder.encodeIntegerForKey(-1234567890123LL, u"count"_s);
        coder.encodeFloatForKey(0.85f, u"alpha"_s);
        coder.encodeDoubleForKey(0.85, u"ratio"_s);
        coder.encodeStringForKey(u"Grüße, #work ✓ 🗒"_s, u"title"_s);
        coder.encodeDataForKey(QByteArray("\x00\x01\xff binary", 10), u"payload"_s);
        coder.encodeDateForKey(
            QDateTime::fromMSecsSinceEpoch(1700000000123LL, Qt::UTC), u"created"_s);
        const QList<QWColor> colors { QWColor(1.0, 0.8706, 0.4078), QWColor(0.1, 0.2, 0.9, 0.5) };
        coder.encodeArrayOfObjectsForKey(colors, u"colors"_s);
        coder.encodeArrayOfObjectsForKey(QList<QWColor>(), u"none"_s);
        coder.encodeObjectForKey(QWFont(u"Helvetica Neue"_s, 14.0, true, false), u"font"_s);
        const V sample = V::fromObject(u"Sample"_s, coder.takeEntries());
        const QWKeyedUnarchiver::ParseResult read
            = QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootValue(sample));
        QCOMPARE(read.error, QString());
        QVERIFY(read.root == sample);

        const QWKeyedUnarchiver decoder(read.root);
        // A float stays a float, so that it reads back as the same single-precision value.
        QCOMPARE(decoder.valueForKey(u"alpha"_s)->kind(), V::Kind::Float);
        QCOMPARE(decoder.decodeDoubleForKey(u"alpha"_s), double(0.85f));
        QCOMPARE(decoder.decodeDateForKey(u"created"_s)->toMSecsSinceEpoch(), 1700000000123LL);
        QCOMPARE(decoder.decodeArrayOfObjectsOfClassForKey<QWColor>(u"colors"_s), colors);
        QCOMPARE(decoder.decodeArrayOfObjectsOfClassForKey<QWColor>(u"none"_s), QList<QWColor>());
        QCOMPARE(decoder.decodeObjectOfClassForKey<QWFont>(u"font"_s),
            QWFont(u"Helvetica Neue"_s, 14.0, true, false));
    }

    void wrongKindsReadAsMissingKeys()
    {
        const V object = V::fromObject(u"Sample"_s,
            { { u"flag"_s, V::fromString(u"yes"_s) }, { u"count"_s, V::fromDouble(3.5) },
                { u"title"_s, V::fromInteger(7) }, { u"payload"_s, V::fromString(u"text"_s) },
                { u"created"_s, V::fromString(u"2024-01-01"_s) },
                { u"colors"_s,
                    V::fromArray(
                        { V::fromInteger(1), QWKeyedArchiver::archivedValue(QWColor::white()),
                            QWKeyedArchiver::archivedValue(QWFont(u"Menlo"_s, 13)) }) },
                { u"font"_s, QWKeyedArchiver::archivedValue(QWColor::black()) } });
        const QWKeyedUnarchiver coder(object);
        QVERIFY(!coder.decodeBoolForKey(u"flag"_s));
        QCOMPARE(coder.decodeIntegerForKey(u"count"_s), 0);
        QVERIFY(!coder.decodeStringForKey(u"title"_s) && !coder.decodeDataForKey(u"payload"_s));
        QVERIFY(!coder.decodeDateForKey(u"created"_s));
        // Only the element of the right class.
        QCOMPARE(coder.decodeArrayOfObjectsOfClassForKey<QWColor>(u"colors"_s),
            QList<QWColor> { QWColor::white() });
        QVERIFY(!coder.decodeObjectOfClassForKey<QWFont>(u"font"_s));
        QVERIFY(!coder.decodeArrayOfObjectsOfClassForKey<QWColor>(u"missing"_s));

        // An object of a class nobody registered is no object.
        const V unknown = V::fromObject(u"NSObject"_s, {});
        QVERIFY(!QWKeyedUnarchiver::decodeObject(unknown).has_value());
        QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(unknown));
    }

    // Colour components outside 0...1 are clamped; a colour without components, or a font of a
    // size no font has, is none.
    void damagedColorsAndFonts()
    {
        const auto color = [](V::Entries components) {
            return QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(
                V::fromObject(QWColor::className(), std::move(components)));
        };
        QCOMPARE(color({ { u"red"_s, V::fromDouble(7.0) }, { u"green"_s, V::fromDouble(-1.0) },
                     { u"blue"_s, V::fromDouble(std::nan("")) } }),
            QWColor(1.0, 0.0, 0.0));
        QVERIFY(!color({}));
        for (double size : { 0.0, -3.0, 1e9, std::nan("") }) {
            const V damaged = V::fromObject(QWFont::className(),
                { { u"family"_s, V::fromString(u"Menlo"_s) },
                    { u"pointSize"_s, V::fromDouble(size) } });
            QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWFont>(damaged));
        }
    }

    void damagedInputReadsAsMissingValues()
    {
        const QList<QWFont> fonts { QWFont(u"Menlo"_s, 13),
            QWFont(u"Georgia"_s, 16.5, false, true) };
        const QByteArray data = QWKeyedArchiver::archivedDataWithRootObject(fonts);

        // Every truncation parses without crashing; whatever was complete before the cut is kept.
        int recoveredFirst = 0;
        for (qsizetype length = 0; length < data.size(); ++length) {
            const QWKeyedUnarchiver::ParseResult result
                = QWKeyedUnarchiver::parse(data.left(length));
            QVERIFY2(!result.isComplete(), qPrintable(QString::number(length)));
            const QList<QWFont> read
                = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<QWFont>(result.root);
            if (!read.isEmpty() && read.front() == fonts.front())
                ++recoveredFirst;
        }
        QVERIFY(recoveredFirst > 0);

        // Bytes after the archive, other files, and archives of another maker are reported.
        QVERIFY(!QWKeyedUnarchiver::parse(data + QByteArray("\x00", 1)).isComplete());
        QVERIFY(!QWKeyedUnarchiver::parse(QByteArray("{\\rtf1\\ansi hello}")).isComplete());
        QVERIFY(!QWKeyedUnarchiver::parse(QByteArray()).isComplete());
        const QCborMap foreign { { u"$archiver"_s, u"NSKeyedArchiver"_s }, { u"$top"_s, 1 } };
        QVERIFY(!QWKeyedUnarchiver::parse(QCborValue(foreign).toCbor()).root.isValid());
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
