#include "kit/QWKeyedArchiver.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestFiles.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

using Themes = SNThemeManager::UserThemeList;

const QWColor night(0.1, 0.1, 0.3); // luminosity about 0.12

std::shared_ptr<SNUserTheme> userTheme(const QString &name, const QWColor &start = QWColor::white())
{
    const std::shared_ptr<SNUserTheme> theme = SNUserTheme::theme();
    theme->setName(name);
    theme->setStartColor(start);
    return theme;
}

QStringList namesOf(const Themes &themes)
{
    QStringList names;
    for (const auto &theme : themes)
        names.append(theme->name());
    return names;
}

} // namespace

// User themes, the registry that holds them with the built-in ones, and its Themes.db.
class TestSNThemeManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userThemeIsDarkByItsStartColor()
    {
        const std::shared_ptr<SNUserTheme> theme = SNUserTheme::theme();
        QVERIFY(theme->isEditable());
        theme->setStartColor(night);
        QVERIFY(!theme->isDark()); // no name yet: the editor is still setting it up
        theme->setName(u"Work"_s);
        theme->setStartColor(night);
        QVERIFY(theme->isDark());
        theme->setEndColor(QWColor::white());
        QVERIFY(theme->isDark()); // only the start colour counts
        QCOMPARE(theme->saveName(), u"SNUserTheme-Work"_s);
        // An editor's empty field may give a null string: still a name, so the theme is saved.
        theme->setName(QString());
        QVERIFY(theme->hasName());
    }

    void saveAndLoadRoundTrip()
    {
        const QTemporaryDir folder;
        const QString directory = folder.filePath(u"Vellumo/User Themes/"_s);
        SNThemeManager manager(directory);
        const auto dark = userTheme(u"Night"_s, night);
        dark->setEndColor(QWColor(0.0, 0.0, 0.1));
        dark->setDefaultFont(QWFont(u"DejaVu Sans Mono"_s, 13.5));
        dark->setDefaultFontColor(QWColor(0.9, 0.9, 0.8));
        dark->setLinkColor(QWColor(0.4, 0.8, 1.0));
        dark->setCursorColor(QWColor(1.0, 0.5, 0.0));
        manager.addTheme(dark);
        manager.addTheme(userTheme(QString(), night)); // a new theme keeps its flag
        manager.save();

        const SNThemeManager reloaded(directory);
        const Themes themes = reloaded.userThemes();
        QCOMPARE(namesOf(themes), (QStringList { u"Night"_s, QString() }));
        const std::shared_ptr<SNUserTheme> back = themes.first();
        for (const auto color : { &SNTheme::startColor, &SNTheme::endColor,
                 &SNTheme::defaultFontColor, &SNTheme::linkColor, &SNTheme::cursorColor })
            QCOMPARE(((*back).*color)(), ((*dark).*color)());
        QCOMPARE(back->defaultFont(), dark->defaultFont());
        QVERIFY(back->isDark()); // recomputed: the flag is not stored
        QVERIFY(!themes.last()->isDark());

        // A theme read without any name is dropped by the next save; missing keys read as defaults.
        const QWArchiveValue nameless = QWArchiveValue::fromObject(
            u"SNUserTheme"_s, { { u"startColor"_s, QWKeyedArchiver::archivedValue(night) } });
        QVERIFY(writeFile(reloaded.themesFilePath(),
            QWKeyedArchiver::archivedDataWithRootValue(
                QWArchiveValue::fromArray({ nameless, QWKeyedArchiver::archivedValue(dark) }))));
        SNThemeManager withNameless(directory);
        const std::shared_ptr<SNUserTheme> read = withNameless.userThemes().first();
        QVERIFY(!read->hasName() && !read->isDark());
        QCOMPARE(read->defaultFont(), read->fallbackFont());
        QCOMPARE(read->endColor(), QWColor::white());
        withNameless.save();
        QCOMPARE(namesOf(SNThemeManager(directory).userThemes()), QStringList { u"Night"_s });
    }

    void unreadableFileIsMovedAsideAndKept_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("kept");
        const QByteArray two = QWKeyedArchiver::archivedDataWithRootObject(
            Themes { userTheme(u"One"_s), userTheme(u"Two"_s) });
        const QByteArray header = QWKeyedArchiver::archivedDataWithRootObject(Themes {}).chopped(1);
        const QStringList one { u"One"_s };
        QTest::newRow("not an archive") << "Themes, not as we know them"_ba << QStringList();
        // The second theme starts 9 bytes before its class name: map header, "$class", text header.
        QTest::newRow("cut short") << two.left(two.lastIndexOf("SNUserTheme") - 9) << one;
        QTest::newRow("trailing bytes") << two + "junk" << (QStringList { u"One"_s, u"Two"_s });
        QTest::newRow("not a list")
            << QWKeyedArchiver::archivedDataWithRootObject(night) << QStringList();
        QTest::newRow("not only themes") << QWKeyedArchiver::archivedDataWithRootValue(
            QWArchiveValue::fromArray({ QWKeyedArchiver::archivedValue(userTheme(u"One"_s)),
                QWKeyedArchiver::archivedValue(night) }))
                                         << one;
        QTest::newRow("nested too deep") << header + QByteArray(5000, '\x81') << QStringList();
        QTest::newRow("absurd length")
            << header + QByteArray::fromHex("9b7fffffffffffffff") << QStringList();
    }

    void unreadableFileIsMovedAsideAndKept()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, kept);
        QWTestEnvironment environment;
        QWManualScheduler scheduler(QDateTime(QDate(2026, 5, 4), QTime(10, 20, 30)));
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"Themes.db"_s);
        QVERIFY(writeFile(path, bytes));

        SNThemeManager manager(folder.path());
        QCOMPARE(namesOf(manager.userThemes()), kept);
        const QString aside = path + u".damaged-20260504-102030"_s;
        QCOMPARE(manager.movedAsidePath(), aside);
        QCOMPARE(fileBytes(aside), bytes);
        QCOMPARE(environment.messages().filter(u"[DEBUG] Could not read"_s).size(), 1);

        // Saving writes a fresh file and leaves the damaged one alone.
        manager.addTheme(userTheme(u"New"_s));
        manager.save();
        QCOMPARE(
            namesOf(SNThemeManager(folder.path()).userThemes()), kept + QStringList { u"New"_s });

        // Damage again within the same second gets a name of its own.
        QVERIFY(writeFile(path, "damaged again"));
        QCOMPARE(SNThemeManager(folder.path()).movedAsidePath(), aside + u"-2"_s);
        QCOMPARE(fileBytes(aside), bytes);

        // An empty file holds nothing to lose: it is left where it is.
        QVERIFY(writeFile(path, QByteArray()));
        QCOMPARE(SNThemeManager(folder.path()).movedAsidePath(), QString());
        QVERIFY(QFileInfo::exists(path));
    }
};

QTEST_APPLESS_MAIN(TestSNThemeManager)
#include "TestSNThemeManager.moc"
