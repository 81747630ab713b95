#include "settings/SNUserDefaults.h"
#include "themes/SNThemeKindRegistry.h"
#include "themes/SNThemeManager.h"
#include "themes/SNThemeResolver.h"
#include "themes/SNUserTheme.h"

#include <QTemporaryDir>
#include <QTest>

// How the theme name a note stores becomes a theme.
class TestSNThemeResolver final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindsAreThemeClassesOnly();
    void namesThatNameNoThemeGiveYellow_data();
    void namesThatNameNoThemeGiveYellow();
    void builtInThemesAreFreshUserThemesShared();
    void emptyNameTakesTheDefaultSetting();
};

void TestSNThemeResolver::kindsAreThemeClassesOnly()
{
    const QStringList kinds = SNThemeKindRegistry::classNames();
    QCOMPARE(kinds.size(), 15); // the base, twelve built-in themes, time of day, user
    for (const QString &kind : kinds)
        QCOMPARE(SNThemeKindRegistry::themeWithClassName(kind)->className(), kind);
    for (const char *other : { "NSObject", "SNThemeManager", "snyellowpadtheme", "" }) {
        QVERIFY(!SNThemeKindRegistry::isThemeKind(QLatin1String(other)));
        QCOMPARE(SNThemeKindRegistry::themeWithClassName(QLatin1String(other)), nullptr);
    }
}

void TestSNThemeResolver::namesThatNameNoThemeGiveYellow_data()
{
    QTest::addColumn<QString>("saveName");
    QTest::newRow("not a theme class") << "NSObject";
    QTest::newRow("no such class") << "SNPurpleTheme";
    QTest::newRow("display name") << "Yellow";
    QTest::newRow("empty") << "";
    QTest::newRow("missing user theme") << "SNUserTheme-Ocean";
    QTest::newRow("built-in name as user theme") << "SNUserTheme-Yellow";
    QTest::newRow("user prefix without hyphen") << "SNUserThemeWork";
}

void TestSNThemeResolver::namesThatNameNoThemeGiveYellow()
{
    QFETCH(QString, saveName);
    const QTemporaryDir folder;
    SNThemeManager manager(folder.path());
    const std::shared_ptr<SNUserTheme> work = SNUserTheme::theme();
    work->setName(QStringLiteral("Work"));
    manager.addTheme(work);
    const std::shared_ptr<SNTheme> theme = SNThemeResolver::themeWithSaveName(saveName, manager);
    QCOMPARE(theme->className(), QStringLiteral("SNYellowPadTheme"));
    QVERIFY(theme != manager.bundledThemes().first()); // a new one
}

void TestSNThemeResolver::builtInThemesAreFreshUserThemesShared()
{
    const QTemporaryDir folder;
    SNThemeManager manager(folder.path());
    // Red is offered in no menu, yet a note that stored it opens in it.
    const std::shared_ptr<SNTheme> red
        = SNThemeResolver::themeWithSaveName(QStringLiteral("SNRedTheme"), manager);
    QCOMPARE(red->startColor(), QWColor(1.0, 0.3647, 0.2275));
    QVERIFY(red != SNThemeResolver::themeWithSaveName(QStringLiteral("SNRedTheme"), manager));

    const std::shared_ptr<SNUserTheme> ocean = SNUserTheme::theme();
    ocean->setName(QStringLiteral("Deep-Ocean"));
    manager.addTheme(ocean);
    QCOMPARE(SNThemeResolver::themeWithSaveName(ocean->saveName(), manager), ocean);
    // Every "SNUserTheme-" goes, wherever it stands.
    QCOMPARE(SNThemeResolver::themeWithSaveName(
                 QStringLiteral("SNUserTheme-SNUserTheme-Deep-Ocean"), manager),
        ocean);

    // Without a registry of its own, the shared one answers.
    QCOMPARE(SNThemeResolver::themeWithSaveName(ocean->saveName())->className(),
        QStringLiteral("SNYellowPadTheme"));
    SNThemeManager::sharedManager().addTheme(ocean);
    QCOMPARE(SNThemeResolver::themeWithSaveName(ocean->saveName()), ocean);
    QCOMPARE(SNThemeManager::sharedManager().userThemeDirectory(),
        qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Vellumo/User Themes/"));
}

void TestSNThemeResolver::emptyNameTakesTheDefaultSetting()
{
    SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
    defaults.setDefaultThemeName(QStringLiteral("SNHackerTheme"));
    QCOMPARE(SNThemeResolver::saveNameOrDefault(QString()), QStringLiteral("SNHackerTheme"));
    QCOMPARE(SNThemeResolver::saveNameOrDefault(QStringLiteral("SNRedTheme")),
        QStringLiteral("SNRedTheme"));
    defaults.setDefaultThemeName(QString());
    QCOMPARE(SNThemeResolver::saveNameOrDefault(QString()), QStringLiteral("SNYellowPadTheme"));
    QCOMPARE(SNThemeResolver::defaultSaveName(), QStringLiteral("SNYellowPadTheme"));
}

QTEST_MAIN(TestSNThemeResolver)
#include "TestSNThemeResolver.moc"
