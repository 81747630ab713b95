#include "settings/QWLoginItem.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "support/QWTestEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

namespace {

QByteArray fileText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString autostartPath()
{
    return QWLoginItem::autostartFilePath(SNApplicationInfo::loginHelperIdentifier());
}

} // namespace

class TestSNUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyStoreReadsDefaults();
    void registeredDefaultsAreNotWritten();
    void hotKeyCombosPersistAndFlush();
    void everyWriteIsAnnounced();
    void startAtLoginAddsAndRemovesTheEntry();
    void startAtLoginFailureKeepsTheValue();
    void storedStartAtLoginRenewsTheEntry();
    void suppressQuitAlertLivesInTheStandardStore();
    void execLineQuoting();
};

void TestSNUserDefaults::emptyStoreReadsDefaults()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    QCOMPARE(defaults->hotKeyEnabled(), true);
    QCOMPARE(defaults->hotKeyCombo(), (QWKeyCombo { 0x60000, 45 }));
    QCOMPARE(defaults->noteHotKeyCombo(), (QWKeyCombo { 0x1C0000, 45 }));
    QCOMPARE(defaults->startAtLogin(), false);
    QCOMPARE(defaults->hideWindow(), false);
    QCOMPARE(defaults->showIconInDock(), true);
    QCOMPARE(defaults->showMenuIcon(), true);
    QCOMPARE(defaults->defaultThemeName(), QStringLiteral("SNYellowPadTheme"));
    QCOMPARE(defaults->suppressThemeDeletionAlert(), false);
    QCOMPARE(defaults->defaultWindowAlpha(), 0.949999988079071);
    QCOMPARE(defaults->defaultWindowAlpha(), double(0.95f));
    QCOMPARE(defaults->checkSpelling(), true);
    QCOMPARE(defaults->autoCorrectSpelling(), true);
    QCOMPARE(defaults->prefix(), QString());
    QVERIFY(environment.messages().isEmpty());
    QVERIFY(!QFile::exists(autostartPath()));
}

void TestSNUserDefaults::registeredDefaultsAreNotWritten()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    const QVariantMap registered = defaults->registeredDefaults();
    QStringList keys = registered.keys();
    keys.sort();
    const QStringList expected {
        QStringLiteral("autoCorrectSpelling"),
        QStringLiteral("checkSpelling"),
        QStringLiteral("defaultThemeName"),
        QStringLiteral("defaultWindowAlpha"),
        QStringLiteral("hotKeyCode"),
        QStringLiteral("hotKeyEnabled"),
        QStringLiteral("hotKeyModifier"),
        QStringLiteral("noteHotKeyCode"),
        QStringLiteral("noteHotKeyModifier"),
        QStringLiteral("showIconInDock"),
        QStringLiteral("showMenuIcon"),
    };
    QCOMPARE(keys, expected);
    QCOMPARE(registered.value(QStringLiteral("hotKeyCode")).typeId(), int(QMetaType::Int));
    QCOMPARE(registered.value(QStringLiteral("noteHotKeyModifier")), QVariant(quint64(1835008)));
    QCOMPARE(registered.value(QStringLiteral("hotKeyModifier")), QVariant(quint64(0x60000)));
    QCOMPARE(registered.value(QStringLiteral("defaultWindowAlpha")), QVariant(0.95f));

    // Only the hot keys, rewritten at construction, reach the file.
    QSettings file(defaults->userDefaults().fileName(), QSettings::IniFormat);
    QStringList written = file.allKeys();
    written.sort();
    QCOMPARE(written,
        (QStringList { QStringLiteral("hotKeyCode"), QStringLiteral("hotKeyModifier"),
            QStringLiteral("noteHotKeyCode"), QStringLiteral("noteHotKeyModifier") }));
    QCOMPARE(file.fileName(), GVUserDefaults::standardStorePath());
}

void TestSNUserDefaults::hotKeyCombosPersistAndFlush()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    QSignalSpy did(defaults.get(), &GVUserDefaults::didChangeValueForKey);
    defaults->setHotKeyCombo({ QWKeyCombo::CommandKeyMask, 49 });
    defaults->setNoteHotKeyCombo({});
    QCOMPARE(did.count(), 2);
    QCOMPARE(did.at(0).at(0).toString(), QStringLiteral("hotKeyCombo"));
    QCOMPARE(did.at(1).at(0).toString(), QStringLiteral("noteHotKeyCombo"));

    // Flushed at once: the file holds them before anything syncs.
    const QByteArray text = fileText(GVUserDefaults::standardStorePath());
    QVERIFY2(text.contains("\nhotKeyCode=49\n"), text.constData());
    QVERIFY(text.contains("\nhotKeyModifier=1048576\n"));
    QVERIFY(text.contains("\nnoteHotKeyCode=-1\n"));
    QVERIFY(text.contains("\nnoteHotKeyModifier=0\n"));

    defaults.reset();
    defaults = GVUserDefaults::make<SNUserDefaults>();
    QCOMPARE(defaults->hotKeyCombo(), (QWKeyCombo { QWKeyCombo::CommandKeyMask, 49 }));
    QVERIFY(defaults->noteHotKeyCombo().isEmpty());
}

void TestSNUserDefaults::everyWriteIsAnnounced()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    QSignalSpy will(defaults.get(), &GVUserDefaults::willChangeValueForKey);
    QSignalSpy did(defaults.get(), &GVUserDefaults::didChangeValueForKey);
    bool seenAtDid = false;
    connect(defaults.get(), &GVUserDefaults::didChangeValueForKey, this,
        [&] { seenAtDid = defaults->showMenuIcon(); });

    defaults->setShowMenuIcon(true); // already true
    defaults->setShowMenuIcon(true);
    QCOMPARE(will.count(), 2);
    QCOMPARE(did.count(), 2);
    QCOMPARE(did.at(1).at(0).toString(), QStringLiteral("showMenuIcon"));
    QVERIFY(seenAtDid);

    defaults->setShowMenuIcon(false);
    QVERIFY(!seenAtDid);
    defaults->setStartAtLogin(false); // unchanged: announced, but nothing else happens
    defaults->setHotKeyCombo(defaults->hotKeyCombo());
    QCOMPARE(did.count(), 5);
    QCOMPARE(did.at(3).at(0).toString(), QStringLiteral("startAtLogin"));
    QCOMPARE(did.at(4).at(0).toString(), QStringLiteral("hotKeyCombo"));
    QCOMPARE(will.count(), 5);
    QVERIFY(environment.messages().isEmpty());
}

void TestSNUserDefaults::startAtLoginAddsAndRemovesTheEntry()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    const QString helper = SNApplicationInfo::loginHelperIdentifier();
    QCOMPARE(autostartPath(),
        environment.configHome() + QStringLiteral("/autostart/org.vellumo.Vellumohelper.desktop"));

    QTest::ignoreMessage(QtInfoMsg, "DEBUG: Added org.vellumo.Vellumohelper");
    defaults->setStartAtLogin(true);
    QVERIFY(defaults->startAtLogin());
    const QByteArray entry = fileText(autostartPath());
    const QString program = QCoreApplication::applicationFilePath();
    QVERIFY(entry.startsWith("[Desktop Entry]\n"));
    QVERIFY(entry.contains("\nType=Application\n"));
    QVERIFY(entry.contains("\nNoDisplay=true\n"));
    QVERIFY(entry.contains("\nX-GNOME-Autostart-enabled=true\n"));
    QVERIFY(entry.contains("\nExec="
        + QWLoginItem::execLine(program, { QStringLiteral("vellumo://lal") }).toUtf8() + '\n'));
    QVERIFY(
        entry.contains(QFile::encodeName(program) + " vellumo://lal\n") || program.contains(u' '));
    QCOMPARE(QSettings(GVUserDefaults::standardStorePath(), QSettings::IniFormat)
                 .value(QStringLiteral("startAtLogin")),
        QVariant(true));

    // The same value again touches nothing and says nothing.
    environment.clearMessages();
    QVERIFY(QFile::remove(autostartPath()));
    defaults->setStartAtLogin(true);
    QVERIFY(environment.messages().isEmpty());
    QVERIFY(!QFile::exists(autostartPath()));

    QVERIFY(QWLoginItem::setEnabled(helper, true));
    QTest::ignoreMessage(QtInfoMsg, "DEBUG: Removed org.vellumo.Vellumohelper");
    defaults->setStartAtLogin(false);
    QVERIFY(!defaults->startAtLogin());
    QVERIFY(!QFile::exists(autostartPath()));
    QCOMPARE(environment.messages(),
        QStringList { QStringLiteral("DEBUG: Removed org.vellumo.Vellumohelper") });
}

void TestSNUserDefaults::startAtLoginFailureKeepsTheValue()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    QFile blocker(environment.configHome() + QStringLiteral("/autostart"));
    QVERIFY(blocker.open(QIODevice::WriteOnly)); // a file where the folder should be
    blocker.close();

    QTest::ignoreMessage(
        QtWarningMsg, "DEBUG: Could not add org.vellumo.Vellumohelper to the login items");
    defaults->setStartAtLogin(true);
    QVERIFY(defaults->startAtLogin());
    QCOMPARE(defaults->userDefaults().value(QStringLiteral("startAtLogin")), QVariant(true));
}

void TestSNUserDefaults::storedStartAtLoginRenewsTheEntry()
{
    QWTestEnvironment environment;
    QSettings store(GVUserDefaults::standardStorePath(), QSettings::IniFormat);
    store.setValue(QStringLiteral("startAtLogin"), false);
    store.sync();
    GVUserDefaults::make<SNUserDefaults>();
    QVERIFY(environment.messages().isEmpty());
    QVERIFY(!QFile::exists(autostartPath()));

    store.setValue(QStringLiteral("startAtLogin"), true);
    store.sync();
    QTest::ignoreMessage(QtInfoMsg, "DEBUG: Added org.vellumo.Vellumohelper");
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    QVERIFY(defaults->startAtLogin());
    QVERIFY(QFile::exists(autostartPath()));
}

void TestSNUserDefaults::suppressQuitAlertLivesInTheStandardStore()
{
    QWTestEnvironment environment;
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    QCOMPARE(SNUserDefaults::suppressQuitAlert(), false);
    SNUserDefaults::setSuppressQuitAlert(true);
    QVERIFY(fileText(GVUserDefaults::standardStorePath()).contains("\nSuppressQuitAlert=true\n"));
    QVERIFY(SNUserDefaults::suppressQuitAlert());
    QCOMPARE(defaults->userDefaults().value(QStringLiteral("SuppressQuitAlert")), QVariant(true));
    QVERIFY(!defaults->mapping().contains(QStringLiteral("SuppressQuitAlert")));
    defaults->userDefaults().setValue(QStringLiteral("SuppressQuitAlert"), false);
    QCOMPARE(SNUserDefaults::suppressQuitAlert(), false);
}

void TestSNUserDefaults::execLineQuoting()
{
    const QStringList url { QStringLiteral("vellumo://lal") };
    QCOMPARE(QWLoginItem::execLine(QStringLiteral("/usr/bin/vellumo"), url),
        QStringLiteral("/usr/bin/vellumo vellumo://lal"));
    QCOMPARE(QWLoginItem::execLine(QStringLiteral("/opt/My Apps/vellumo"), url),
        QStringLiteral("\"/opt/My Apps/vellumo\" vellumo://lal"));
    // Quoting escapes $ and \, then the string value doubles every backslash; % is doubled.
    QCOMPARE(QWLoginItem::execLine(QStringLiteral("/tmp/a$b\\c%d"), {}),
        QStringLiteral("\"/tmp/a\\\\$b\\\\\\\\c%%d\""));
    QCOMPARE(QWLoginItem::execLine(QStringLiteral("/tmp/it's"), { QString() }),
        QStringLiteral("\"/tmp/it's\" \"\""));
}

QTEST_GUILESS_MAIN(TestSNUserDefaults)
#include "TestSNUserDefaults.moc"
