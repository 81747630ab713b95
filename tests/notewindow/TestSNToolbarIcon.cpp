#include "notewindow/SNToolbarIcon.h"
#include "themes/SNDarkTheme.h"
#include "themes/SNYellowPadTheme.h"
#include "themeview/SNThemeSwatch.h"

#include <QFile>
#include <QImage>
#include <QTest>

namespace {

// The share of pixels that are drawn at all, and the mean lightness of those.
struct Ink
{
    double coverage = 0.0;
    double lightness = 0.0;
};

Ink inkOf(const QImage &image)
{
    int drawn = 0;
    double lightness = 0.0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() < 32)
                continue;
            ++drawn;
            lightness += color.lightnessF();
        }
    }
    const double pixels = double(image.width() * image.height());
    return { drawn / pixels, drawn ? lightness / drawn : 0.0 };
}

QStringList iconNames()
{
    QStringList names;
    for (const QString &name : { SNToolbarIcon::closeIconName, SNToolbarIcon::pinIconName,
             SNToolbarIcon::settingsIconName, SNToolbarIcon::searchIconName })
        names << name << name + SNToolbarIcon::darkSuffix;
    return names;
}

} // namespace

// The title-bar images and the theme swatches of the menu.
class TestSNToolbarIcon final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyIconIsInTheResources();
    void iconsAreSharpAtOneAndTwoDevicePixels();
    void darkIconsAreLightInk();
    void missingIconIsNull();
    void swatchShowsTheGradientInARing();
};

void TestSNToolbarIcon::everyIconIsInTheResources()
{
    QCOMPARE(iconNames().size(), 8);
    for (const QString &name : iconNames()) {
        QVERIFY2(QFile::exists(SNToolbarIcon::resourcePath(name)), qPrintable(name));
        QVERIFY2(!SNToolbarIcon::iconNamed(name).isNull(), qPrintable(name));
    }
    QCOMPARE(SNToolbarIcon::nameForTheme(SNToolbarIcon::pinIconName, true),
        QStringLiteral("icon-pin-dark"));
    QCOMPARE(
        SNToolbarIcon::nameForTheme(SNToolbarIcon::pinIconName, false), QStringLiteral("icon-pin"));
}

void TestSNToolbarIcon::iconsAreSharpAtOneAndTwoDevicePixels()
{
    for (const QString &name : iconNames()) {
        const QIcon icon = SNToolbarIcon::iconNamed(name);
        const QImage single = icon.pixmap(QSize(16, 16), 1.0).toImage();
        const QImage twice = icon.pixmap(QSize(16, 16), 2.0).toImage();
        QCOMPARE(single.size(), QSize(16, 16));
        // Drawn for two device pixels per point, not scaled up from one.
        QCOMPARE(twice.size(), QSize(32, 32));
        QCOMPARE(twice.devicePixelRatio(), 2.0);
        const Ink ink = inkOf(single);
        QVERIFY2(ink.coverage > 0.08 && ink.coverage < 0.6, qPrintable(name));
        // Some pixels fully covered: lines sit on the pixel grid rather than between pixels.
        int solid = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                solid += single.pixelColor(x, y).alpha() >= 150 ? 1 : 0;
        QVERIFY2(solid >= 8, qPrintable(name));
    }
}

void TestSNToolbarIcon::darkIconsAreLightInk()
{
    for (const QString &name : { SNToolbarIcon::closeIconName, SNToolbarIcon::pinIconName,
             SNToolbarIcon::settingsIconName, SNToolbarIcon::searchIconName }) {
        const Ink light = inkOf(SNToolbarIcon::iconNamed(name).pixmap(16, 16).toImage());
        const Ink dark = inkOf(
            SNToolbarIcon::iconNamed(name + SNToolbarIcon::darkSuffix).pixmap(16, 16).toImage());
        QVERIFY2(light.lightness < 0.2, qPrintable(name));
        QVERIFY2(dark.lightness > 0.8, qPrintable(name));
    }
}

void TestSNToolbarIcon::missingIconIsNull()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(".*icon-nothing.*")));
    QVERIFY(SNToolbarIcon::iconNamed(QStringLiteral("icon-nothing")).isNull());
}

void TestSNToolbarIcon::swatchShowsTheGradientInARing()
{
    const auto yellow = SNYellowPadTheme::theme();
    const QIcon swatch = SNThemeSwatch::colorImageWithTheme(*yellow);
    const QImage image = swatch.pixmap(QSize(12, 12), 2.0).toImage();
    QCOMPARE(image.size(), QSize(24, 24));

    // Outside the oval: nothing.
    QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
    QCOMPARE(image.pixelColor(23, 23).alpha(), 0);
    // Inside: the start colour near the top, the end colour near the bottom.
    const QColor top = image.pixelColor(12, 5);
    const QColor bottom = image.pixelColor(12, 18);
    QVERIFY(top.blue() > bottom.blue());
    QVERIFY(qAbs(top.red() - 255) <= 2);
    // The ring darkens the edge.
    const QColor edge = image.pixelColor(12, 1);
    QVERIFY(edge.alpha() > 200);
    QVERIFY(edge.lightness() < top.lightness());

    // Another theme, another picture.
    const QImage dark = SNThemeSwatch::colorImageWithTheme(*SNDarkTheme::theme())
                            .pixmap(QSize(12, 12), 2.0)
                            .toImage();
    QVERIFY(dark.pixelColor(12, 12).lightness() < image.pixelColor(12, 12).lightness());
}

QTEST_MAIN(TestSNToolbarIcon)
#include "TestSNToolbarIcon.moc"
