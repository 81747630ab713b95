#include "settings/SNUserDefaults.h"
#include "themes/SNThemeManager.h"
#include "themes/SNThemeResolver.h"
#include "themes/SNUserTheme.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// How the theme name a note stores becomes a theme.
class TestSNThemeResolver final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesThatNameNoThemeGiveYellow_data()
    {
        QTest::addColumn<QString>("saveName");
        QTest::newRow("not a theme class") << "NSObject";
        QTest::newRow("no such class") << "SNPurpleTheme";
        QTest::newRow("display name") << "Yellow";
        QTest::newRow("class name in other case") << "sndarktheme";
        QTest::newRow("empty") << "";
        QTest::newRow("missing user theme") << "SNUserTheme-Ocean";
        QTest::newRow("built-in name as user theme") << "SNUserTheme-Yellow";
        QTest::newRow("user prefix without hyphen") << "SNUserThemeWork";
    }

    void namesThatNameNoThemeGiveYellow()
    {
        QFETCH(QString, saveName);
        const QTemporaryDir folder;
        SNThemeManager manager(folder.path());
        const std::shared_ptr<SNUserTheme> work = SNUserTheme::theme();
        work->setName(u"Work"_s);
        manager.addTheme(work);
        const std::shared_ptr<SNTheme> theme
            = SNThemeResolver::themeWithSaveName(saveName, manager);
        QCOMPARE(theme->className(), u"SNYellowPadTheme"_s);
        QVERIFY(theme != manager.bundledThemes().first()); // a new one
    }

    void builtInThemesAreFreshUserThemesShared()
    {
        const QTemporaryDir folder;
        SNThemeManager manager(folder.path());
        // Red is offered in no menu, yet a note that stored it opens in it.
        const std::shared_ptr<SNTheme> red
            = SNThemeResolver::themeWithSaveName(u"SNRedTheme"_s, manager);
        QCOMPARE(red->className(), u"SNRedTheme"_s);
        QVERIFY(red != SNThemeResolver::themeWithSaveName(u"SNRedTheme"_s, manager));

        const std::shared_ptr<SNUserTheme> ocean = SNUserTheme::theme();
        ocean->setName(u"Deep-Ocean"_s);
        manager.addTheme(ocean);
        QCOMPARE(SNThemeResolver::themeWithSaveName(ocean->saveName(), manager), ocean);
        // Every "SNUserTheme-" goes, wherever it stands.
        QCOMPARE(
            SNThemeResolver::themeWithSaveName(u"SNUserTheme-SNUserTheme-Deep-Ocean"_s, manager),
            ocean);

        // Without a registry of its own, the shared one answers.
        QCOMPARE(SNThemeResolver::themeWithSaveName(ocean->saveName())->className(),
            u"SNYellowPadTheme"_s);
        SNThemeManager::sharedManager().addTheme(ocean);
        QCOMPARE(SNThemeResolver::themeWithSaveName(ocean->saveName()), ocean);
    }

    void emptyNameTakesTheDefaultSetting()
    {
        SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
        defaults.setDefaultThemeName(u"SNHackerTheme"_s);
        QCOMPARE(SNThemeResolver::saveNameOrDefault(QString()), u"SNHackerTheme"_s);
        QCOMPARE(SNThemeResolver::saveNameOrDefault(u"SNRedTheme"_s), u"SNRedTheme"_s);
        defaults.setDefaultThemeName(QString());
        QCOMPARE(SNThemeResolver::saveNameOrDefault(QString()), u"SNYellowPadTheme"_s);
    }
};

QTEST_GUILESS_MAIN(TestSNThemeResolver)
#include "TestSNThemeResolver.moc"
