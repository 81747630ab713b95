#include "themes/SNDarkTheme.h"
#include "themes/SNEnglishTheme.h"
#include "themes/SNFlatGreenTheme.h"
#include "themes/SNFlatYellowTheme.h"
#include "themes/SNGreenTheme.h"
#include "themes/SNHackerTheme.h"
#include "themes/SNOrangeTheme.h"
#include "themes/SNPlainTextDarkTheme.h"
#include "themes/SNPlainTextTheme.h"
#include "themes/SNPresentationTheme.h"
#include "themes/SNRedTheme.h"
#include "themes/SNYellowPadTheme.h"

#include <QFontInfo>
#include <QGuiApplication>
#include <QTest>

namespace {

template <class Theme> std::shared_ptr<SNTheme> make()
{
    return Theme::theme();
}

const QWColor white = QWColor::white();
const QWColor black = QWColor::black();
const QWColor baseLink(0.0627, 0.2471, 0.9843);
const QWColor darkLink(0.1373, 0.6039, 0.8902);
const QWColor charcoal(0.1373, 0.1373, 0.1373);
const QWColor cream(0.9882, 0.9608, 0.9294);
const QWColor hacker(0.2667, 0.8392, 0.3176);
const QWColor flatGreen(0.298, 0.851, 0.3922);
const QWColor flatYellow(0.9961, 0.8667, 0.4392);
const QWFont helvetica(QStringLiteral("Helvetica Neue"), 14);
const QWFont menlo(QStringLiteral("Menlo"), 13);

const struct BuiltIn
{
    std::shared_ptr<SNTheme> (*make)();
    const char *className;
    const char *name;
    QWColor start, end;
    QWFont font;
    QWColor text, link, cursor;
    bool dark;
} builtIns[] = {
    { make<SNYellowPadTheme>, "SNYellowPadTheme", "Yellow", { 1.0, 0.8706, 0.4078 },
        { 1.0, 0.8275, 0.1804 }, helvetica, black, baseLink, black, false },
    { make<SNPlainTextTheme>, "SNPlainTextTheme", "Monospace", white, white, menlo, black, baseLink,
        black, false },
    { make<SNPlainTextDarkTheme>, "SNPlainTextDarkTheme", "Monospace Dark", charcoal, charcoal,
        menlo, { 0.8588, 0.8627, 0.9922 }, darkLink, white, true },
    { make<SNDarkTheme>, "SNDarkTheme", "Dark", { 0.2902, 0.2902, 0.2902 },
        { 0.1686, 0.1686, 0.1686 }, helvetica, white, darkLink, white, true },
    { make<SNEnglishTheme>, "SNEnglishTheme", "English", cream, cream,
        { QStringLiteral("Georgia"), 16 }, black, { 0.6902, 0.2118, 0.2 },
        { 0.5804, 0.2353, 0.2392 }, false },
    { make<SNHackerTheme>, "SNHackerTheme", "Hacker", black, black,
        { QStringLiteral("Monaco"), 12 }, hacker, { 0.1608, 0.9922, 0.2157 }, hacker, true },
    { make<SNPresentationTheme>, "SNPresentationTheme", "Presentation", white, white,
        { QStringLiteral("Helvetica Neue"), 24 }, black, baseLink, black, false },
    { make<SNRedTheme>, "SNRedTheme", "Red", { 1.0, 0.3647, 0.2275 }, { 1.0, 0.1686, 0.4078 },
        helvetica, white, white, black, false },
    { make<SNOrangeTheme>, "SNOrangeTheme", "Orange", { 1.0, 0.5843, 0.0 }, { 1.0, 0.3686, 0.2275 },
        helvetica, black, baseLink, black, false },
    { make<SNGreenTheme>, "SNGreenTheme", "Green", { 0.5294, 0.9882, 0.4392 },
        { 0.0471, 0.8275, 0.098 }, helvetica, black, baseLink, black, false },
    { make<SNFlatGreenTheme>, "SNFlatGreenTheme", "Green (Flat)", flatGreen, flatGreen, helvetica,
        black, baseLink, black, false },
    { make<SNFlatYellowTheme>, "SNFlatYellowTheme", "Yellow (Flat)", flatYellow, flatYellow,
        helvetica, black, baseLink, black, false },
};

} // namespace

// The built-in themes, their fonts on a machine without the fonts they name, and the
// look-alikes drawing uses instead.
class TestSNTheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void builtInThemesHoldTheirValues_data();
    void builtInThemesHoldTheirValues();
    void freshObjectsAndFallbackFonts();
    void drawingSubstitutesInstalledLookAlikes_data();
    void drawingSubstitutesInstalledLookAlikes();
};

void TestSNTheme::builtInThemesHoldTheirValues_data()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < int(std::size(builtIns)); ++row)
        QTest::newRow(builtIns[row].name) << row;
}

void TestSNTheme::builtInThemesHoldTheirValues()
{
    QFETCH(int, row);
    const BuiltIn &expected = builtIns[row];
    const std::shared_ptr<SNTheme> theme = expected.make();
    QCOMPARE(theme->className(), QLatin1String(expected.className));
    QCOMPARE(theme->saveName(), QLatin1String(expected.className));
    QCOMPARE(theme->name(), QLatin1String(expected.name));
    QCOMPARE(theme->startColor(), expected.start);
    QCOMPARE(theme->endColor(), expected.end);
    QCOMPARE(theme->defaultFontColor(), expected.text);
    QCOMPARE(theme->linkColor(), expected.link);
    QCOMPARE(theme->cursorColor(), expected.cursor);
    QCOMPARE(theme->isDark(), expected.dark);
    QVERIFY(!theme->isEditable());
    // The dark ones get their flag by being dark themes, not by setting it.
    QCOMPARE(dynamic_cast<SNDarkTheme *>(theme.get()) != nullptr, expected.dark);
    // No Linux desktop has the fonts the themes name, but ./build.sh installs a look-alike of
    // each: the theme keeps its font, and so Monospace stays monospaced.
    QCOMPARE(theme->storedDefaultFont(), std::optional<QWFont>(expected.font));
    QCOMPARE(theme->defaultFont(), expected.font);
}

void TestSNTheme::freshObjectsAndFallbackFonts()
{
    const std::shared_ptr<SNRedTheme> red = SNRedTheme::theme();
    QVERIFY(red != SNRedTheme::theme());

    const std::shared_ptr<SNTheme> base = SNTheme::theme();
    QCOMPARE(base->fallbackFont(), helvetica);
    base->setDefaultFont(QWFont(QStringLiteral("DejaVu Serif"), 30));
    QCOMPARE(base->defaultFont(), QWFont(QStringLiteral("DejaVu Serif"), 30));
    base->setDefaultFont(std::nullopt);
    QCOMPARE(base->defaultFont(), helvetica);
    QCOMPARE(SNHackerTheme::theme()->fallbackFont(), helvetica);

    // Without Georgia or any look-alike, the English theme takes its own fallback.
    const std::shared_ptr<SNEnglishTheme> english = SNEnglishTheme::theme();
    english->setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("No Such Serif"), 16));
    QCOMPARE(english->defaultFont(), QWFont(QStringLiteral("Menlo"), 16));
}

void TestSNTheme::drawingSubstitutesInstalledLookAlikes_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<bool>("monospace");
    QTest::newRow("Helvetica Neue") << "Helvetica Neue" << false;
    QTest::newRow("Menlo") << "Menlo" << true;
    QTest::newRow("Monaco") << "Monaco" << true;
    QTest::newRow("Georgia") << "Georgia" << false;
}

void TestSNTheme::drawingSubstitutesInstalledLookAlikes()
{
    QFETCH(QString, family);
    QFETCH(bool, monospace);
    const QString drawn = QWFont::substitutedFamily(family);
    // ./build.sh installs at least one look-alike of every font a theme names.
    QVERIFY(QWFont::isFamilyInstalled(drawn));
    QVERIFY(drawn == family || QWFont::substitutesForFamily(family).contains(drawn));

    const QFont font = QWFont(family, 13).toQFont();
    QCOMPARE(font.family(), family); // the name itself travels on
    // Qt names a family that several foundries provide with its foundry: "Nimbus Sans [urw]".
    const QFontInfo info(font);
    QCOMPARE(info.family().section(QStringLiteral(" ["), 0, 0), drawn);
    QCOMPARE(info.fixedPitch(), monospace);
}

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    TestSNTheme test;
    return QTest::qExec(&test, argc, argv);
}

#include "TestSNTheme.moc"
