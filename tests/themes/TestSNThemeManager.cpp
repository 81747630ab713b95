#include "kit/QWKeyedArchiver.h"
#include "kit/QWNotificationCenter.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

using Themes = SNThemeManager::UserThemeList;

const QWColor night(0.1, 0.1, 0.3); // luminosity about 0.12
const QStringList builtInOrder = { QStringLiteral("SNYellowPadTheme"),
    QStringLiteral("SNPlainTextTheme"), QStringLiteral("SNPlainTextDarkTheme"),
    QStringLiteral("SNDarkTheme"), QStringLiteral("SNEnglishTheme"),
    QStringLiteral("SNHackerTheme"), QStringLiteral("SNPresentationTheme") };

std::shared_ptr<SNUserTheme> userTheme(const QString &name, const QWColor &start = QWColor::white())
{
    const std::shared_ptr<SNUserTheme> theme = SNUserTheme::theme();
    theme->setName(name);
    theme->setStartColor(start);
    return theme;
}

template <class List> QStringList namesOf(const List &themes, bool classNames = false)
{
    QStringList names;
    for (const auto &theme : themes)
        names.append(classNames ? theme->className() : theme->name());
    return names;
}

QStringList names(std::initializer_list<const char *> latin1)
{
    QStringList list;
    for (const char *name : latin1)
        list.append(QLatin1String(name));
    return list;
}

QByteArray contentsOfFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

// User themes, the registry that holds them with the built-in ones, and its Themes.db.
class TestSNThemeManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userThemeNamesAndDarkFlag();
    void registryOrderAndLookUp();
    void saveAndLoadRoundTrip();
    void unreadableFileIsMovedAsideAndKept_data();
    void unreadableFileIsMovedAsideAndKept();
};

void TestSNThemeManager::userThemeNamesAndDarkFlag()
{
    const std::shared_ptr<SNUserTheme> theme = SNUserTheme::theme();
    QVERIFY(theme->isEditable());
    theme->setStartColor(night);
    QVERIFY(!theme->isDark()); // no name yet: the flag stays as it is
    theme->setName(QStringLiteral("Work"));
    QVERIFY(!theme->isDark()); // naming alone does not recompute
    theme->setStartColor(night);
    QVERIFY(theme->isDark());
    theme->setEndColor(QWColor::white());
    QVERIFY(theme->isDark()); // only the start colour counts

    QCOMPARE(theme->saveName(), QStringLiteral("SNUserTheme-Work"));
    QVERIFY(QRegularExpression(QStringLiteral("^<SNUserTheme 0x[0-9a-f]+ name=Work>$"))
                .match(theme->description())
                .hasMatch());
    // An editor's empty field may give a null string: still a name, so the theme is saved.
    theme->setName(QString());
    QVERIFY(theme->hasName());
}

void TestSNThemeManager::registryOrderAndLookUp()
{
    const QTemporaryDir folder;
    SNThemeManager manager(folder.filePath(QStringLiteral("absent")));
    QCOMPARE(namesOf(manager.themes(), true), builtInOrder);
    QVERIFY(manager.mutableThemesArray().isEmpty());
    // Nothing loaded or changed: nothing to write.
    manager.save();
    QVERIFY(!QFileInfo::exists(manager.themesFilePath()));

    const auto first = userTheme(QStringLiteral("First"));
    const auto second = userTheme(QStringLiteral("Second"));
    manager.addTheme(first);
    manager.addTheme(second);
    manager.addTheme(first);
    manager.removeTheme(first); // every entry of it
    QCOMPARE(namesOf(manager.themes(), true), builtInOrder + names({ "SNUserTheme" }));
    QCOMPARE(manager.themes().last(), second);
    QCOMPARE(manager.mutableThemesArray(), Themes { second });

    QCOMPARE(manager.userThemeWithName(QStringLiteral("Second")), second);
    QCOMPARE(manager.userThemeWithName(QStringLiteral("second")), nullptr);
    QCOMPARE(manager.userThemeWithName(QStringLiteral("Yellow")), nullptr); // built-in
    const auto twin = userTheme(QStringLiteral("Second"));
    manager.updateThemes({ twin, second });
    QCOMPARE(manager.userThemeWithName(QStringLiteral("Second")), twin);
}

void TestSNThemeManager::saveAndLoadRoundTrip()
{
    const QTemporaryDir folder;
    const QString directory = folder.filePath(QStringLiteral("Vellumo/User Themes/"));
    SNThemeManager manager(directory);
    const void *announcedBy = nullptr;
    const QWNotificationCenter::Observation observation
        = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            QStringLiteral("SNThemeStyleDidChange"), nullptr,
            [&](const QWNotification &notification) { announcedBy = notification.object; });

    const auto dark = userTheme(QStringLiteral("Night"), night);
    dark->setEndColor(QWColor(0.0, 0.0, 0.1));
    dark->setDefaultFont(QWFont(QStringLiteral("DejaVu Sans Mono"), 13.5));
    dark->setDefaultFontColor(QWColor(0.9, 0.9, 0.8));
    dark->setLinkColor(QWColor(0.4, 0.8, 1.0));
    dark->setCursorColor(QWColor(1.0, 0.5, 0.0));
    const auto unnamed = userTheme(QString(), night); // a new theme keeps its flag
    manager.addTheme(dark);
    manager.addTheme(unnamed);
    manager.save();
    QCOMPARE(announcedBy, &manager);

    const SNThemeManager reloaded(directory);
    const Themes themes = reloaded.userThemes();
    QCOMPARE(namesOf(themes), (QStringList { QStringLiteral("Night"), QString() }));
    const std::shared_ptr<SNUserTheme> back = themes.first();
    QCOMPARE(back->startColor(), dark->startColor());
    QCOMPARE(back->endColor(), dark->endColor());
    QCOMPARE(back->defaultFont(), dark->defaultFont());
    QCOMPARE(back->defaultFontColor(), dark->defaultFontColor());
    QCOMPARE(back->linkColor(), dark->linkColor());
    QCOMPARE(back->cursorColor(), dark->cursorColor());
    QVERIFY(back->isDark()); // recomputed: the flag is not stored
    QVERIFY(!themes.last()->isDark());
    QCOMPARE(reloaded.mutableThemesArray(), themes);

    // A theme read without any name is dropped by the next save; missing keys read as defaults.
    const QWArchiveValue nameless = QWArchiveValue::fromObject(QStringLiteral("SNUserTheme"),
        { { QStringLiteral("startColor"), QWKeyedArchiver::archivedValue(night) } });
    writeFile(reloaded.themesFilePath(),
        QWKeyedArchiver::archivedDataWithRootValue(
            QWArchiveValue::fromArray({ nameless, QWKeyedArchiver::archivedValue(dark) })));
    SNThemeManager withNameless(directory);
    QCOMPARE(withNameless.movedAsidePath(), QString());
    const std::shared_ptr<SNUserTheme> read = withNameless.userThemes().first();
    QVERIFY(!read->hasName());
    QVERIFY(!read->isDark());
    QCOMPARE(read->defaultFont(), read->fallbackFont());
    QCOMPARE(read->endColor(), QWColor::white());
    withNameless.save();
    QCOMPARE(namesOf(SNThemeManager(directory).userThemes()), names({ "Night" }));
}

void TestSNThemeManager::unreadableFileIsMovedAsideAndKept_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("kept");

    const QByteArray two = QWKeyedArchiver::archivedDataWithRootObject(
        Themes { userTheme(QStringLiteral("One")), userTheme(QStringLiteral("Two")) });
    const QByteArray header = QWKeyedArchiver::archivedDataWithRootObject(Themes {}).chopped(1);
    QTest::newRow("not an archive") << QByteArray("Themes, not as we know them") << QStringList();
    // The second theme starts 9 bytes before its class name: map header, "$class", text header.
    QTest::newRow("cut short") << two.left(two.lastIndexOf("SNUserTheme") - 9) << names({ "One" });
    QTest::newRow("trailing bytes") << two + "junk" << names({ "One", "Two" });
    QTest::newRow("not a list") << QWKeyedArchiver::archivedDataWithRootObject(night)
                                << QStringList();
    QTest::newRow("not only themes")
        << QWKeyedArchiver::archivedDataWithRootValue(QWArchiveValue::fromArray(
               { QWKeyedArchiver::archivedValue(userTheme(QStringLiteral("One"))),
                   QWKeyedArchiver::archivedValue(night) }))
        << names({ "One" });
    QTest::newRow("nested too deep") << header + QByteArray(5000, '\x81') << QStringList();
    QTest::newRow("absurd length")
        << header + QByteArray::fromHex("9b7fffffffffffffff") << QStringList();
}

void TestSNThemeManager::unreadableFileIsMovedAsideAndKept()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, kept);
    QWTestEnvironment environment;
    QWManualScheduler scheduler(QDateTime(QDate(2026, 5, 4), QTime(10, 20, 30)));
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Themes.db"));
    writeFile(path, bytes);

    SNThemeManager manager(folder.path());
    QCOMPARE(namesOf(manager.userThemes()), kept);
    const QString aside = path + QStringLiteral(".damaged-20260504-102030");
    QCOMPARE(manager.movedAsidePath(), aside);
    QCOMPARE(contentsOfFile(aside), bytes);
    QCOMPARE(environment.messages().filter(QStringLiteral("[DEBUG] Could not read")).size(), 1);

    // Saving writes a fresh file and leaves the damaged one alone.
    manager.addTheme(userTheme(QStringLiteral("New")));
    manager.save();
    QCOMPARE(contentsOfFile(aside), bytes);
    QCOMPARE(namesOf(SNThemeManager(folder.path()).userThemes()), kept + names({ "New" }));

    // Damage again within the same second gets a name of its own.
    writeFile(path, "damaged again");
    QCOMPARE(SNThemeManager(folder.path()).movedAsidePath(), aside + QStringLiteral("-2"));
    QCOMPARE(contentsOfFile(aside), bytes);

    // An empty file holds nothing to lose: it is left where it is.
    writeFile(path, QByteArray());
    QCOMPARE(SNThemeManager(folder.path()).movedAsidePath(), QString());
    QVERIFY(QFileInfo::exists(path));
}

QTEST_MAIN(TestSNThemeManager)
#include "TestSNThemeManager.moc"
