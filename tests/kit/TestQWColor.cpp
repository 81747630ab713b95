#include "kit/QWColor.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestQWColor final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hsbConversionRoundTrips_data()
    {
        QTest::addColumn<QWColor>("color");
        QTest::newRow("yellow pad") << QWColor(1.0, 0.8706, 0.4078);
        QTest::newRow("magenta, half transparent") << QWColor(0.9, 0.1, 0.7, 0.5);
        QTest::newRow("black") << QWColor::black();
    }

    void hsbConversionRoundTrips()
    {
        QFETCH(QWColor, color);
        const QWColor::HSB hsb = color.hsb();
        const QWColor back = QWColor::colorWithHueSaturationBrightnessAlpha(
            hsb.hue, hsb.saturation, hsb.brightness, hsb.alpha);
        for (const auto component : { &QWColor::redComponent, &QWColor::greenComponent,
                 &QWColor::blueComponent, &QWColor::alphaComponent })
            QVERIFY(qAbs((back.*component)() - (color.*component)()) < 1e-12);
        // And against Qt's own conversion.
        const QColor qt = color.toQColor();
        QVERIFY(qAbs(qt.hsvSaturationF() - hsb.saturation) < 1e-3);
        QVERIFY(qAbs(qt.valueF() - hsb.brightness) < 1e-3);
        QVERIFY(hsb.saturation == 0 || qAbs(qt.hsvHueF() - hsb.hue) < 1e-3);
    }

    // Saturation between 0.70 and 0.99, brightness between 50/70 and 69/70, all of it used.
    void randomColorsStayInTheirRanges()
    {
        QRandomGenerator generator(42);
        double lowest = 1.0;
        double highest = 0.0;
        for (int i = 0; i < 5000; ++i) {
            const QWColor color = QWColor::qw_randomColor(generator);
            const QWColor::HSB hsb = color.hsb();
            QVERIFY2(hsb.saturation >= 0.70 - 1e-9 && hsb.saturation <= 0.99 + 1e-9
                    && hsb.brightness >= 50.0 / 70.0 - 1e-9 && hsb.brightness <= 69.0 / 70.0 + 1e-9
                    && color.alphaComponent() == 1.0,
                qPrintable(color.description()));
            lowest = std::min(lowest, hsb.brightness);
            highest = std::max(highest, hsb.brightness);
        }
        QVERIFY(lowest < 51.0 / 70.0 && highest > 68.0 / 70.0);
        // Unseeded, the colours differ from call to call.
        QVERIFY(QWColor::qw_randomColor() != QWColor::qw_randomColor()
            || QWColor::qw_randomColor() != QWColor::qw_randomColor());
    }

    void darkenByScalesBrightness()
    {
        const QWColor tag = QWColor::colorWithHueSaturationBrightnessAlpha(0.25, 0.8, 0.9, 1.0);
        const QWColor::HSB after = tag.qw_darkenBy(0.2f).hsb();
        QVERIFY(qAbs(after.brightness - (0.9 - 0.2 * 0.9)) < 1e-6);
        QVERIFY(qAbs(after.hue - 0.25) < 1e-6 && qAbs(after.saturation - 0.8) < 1e-6);
        QCOMPARE(QWColor::black().qw_darkenBy(0.2f), QWColor::black());
    }

    // Components outside 0...1 are clamped; a colour without components is no colour. (The
    // keyed archiver's test reads colours back whole.)
    void damagedArchives()
    {
        const QWArchiveValue wild = QWArchiveValue::fromObject(QWColor::className(),
            { { u"red"_s, QWArchiveValue::fromDouble(7.0) },
                { u"green"_s, QWArchiveValue::fromDouble(-1.0) },
                { u"blue"_s, QWArchiveValue::fromDouble(std::nan("")) } });
        QCOMPARE(QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(wild), QWColor(1.0, 0.0, 0.0));
        QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(
            QWArchiveValue::fromObject(QWColor::className(), {})));
    }
};

QTEST_APPLESS_MAIN(TestQWColor)
#include "TestQWColor.moc"
