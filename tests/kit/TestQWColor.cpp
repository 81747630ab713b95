#include "kit/QWColor.h"

#include <QTest>

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
};

QTEST_APPLESS_MAIN(TestQWColor)
#include "TestQWColor.moc"
