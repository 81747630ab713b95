#include "settings/QWLoginItem.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestFiles.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QString autostartPath()
{
    return QWLoginItem::autostartFilePath(SNApplicationInfo::loginHelperIdentifier());
}

} // namespace

class TestSNUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_environment = std::make_unique<QWTestEnvironment>(); }
    void cleanup() { m_environment.reset(); }

    // The defaults stay in memory; only the hot keys, rewritten at construction, reach the file.
    void defaultsAreNotWritten()
    {
        auto defaults = GVUserDefaults::make<SNUserDefaults>();
        QStringList written
            = QSettings(GVUserDefaults::standardStorePath(), QSettings::IniFormat).allKeys();
        written.sort();
        QCOMPARE(written,
            (QStringList { u"hotKeyCode"_s, u"hotKeyModifier"_s, u"noteHotKeyCode"_s,
                u"noteHotKeyModifier"_s }));
        QVERIFY(m_environment->messages().isEmpty());
    }

    void hotKeyCombosPersistAndFlush()
    {
        auto defaults = GVUserDefaults::make<SNUserDefaults>();
        defaults->setHotKeyCombo({ QWKeyCombo::CommandKeyMask, 49 });
        defaults->setNoteHotKeyCombo({});
        // Flushed at once: the file holds them before anything syncs.
        const QByteArray text = fileBytes(GVUserDefaults::standardStorePath());
        QVERIFY2(text.contains("\nhotKeyCode=49\nhotKeyModifier=1048576\nnoteHotKeyCode=-1\n"
                               "noteHotKeyModifier=0\n"),
            text.constData());
        defaults = GVUserDefaults::make<SNUserDefaults>();
        QCOMPARE(defaults->hotKeyCombo(), (QWKeyCombo { QWKeyCombo::CommandKeyMask, 49 }));
        QVERIFY(defaults->noteHotKeyCombo().isEmpty());
    }

    void startAtLoginAddsAndRemovesTheEntry()
    {
        auto defaults = GVUserDefaults::make<SNUserDefaults>();
        QTest::ignoreMessage(QtInfoMsg, "DEBUG: Added org.vellumo.Vellumohelper");
        defaults->setStartAtLogin(true);
        const QByteArray entry = fileBytes(autostartPath());
        QVERIFY(entry.startsWith("[Desktop Entry]\n"));
        for (const QByteArray &line :
            { "Type=Application"_ba, "NoDisplay=true"_ba, "X-GNOME-Autostart-enabled=true"_ba,
                "Exec="
                    + QWLoginItem::execLine(
                        QCoreApplication::applicationFilePath(), { u"vellumo://lal"_s })
                          .toUtf8() })
            QVERIFY2(entry.contains('\n' + line + '\n'), line.constData());
        QCOMPARE(QSettings(GVUserDefaults::standardStorePath(), QSettings::IniFormat)
                     .value(u"startAtLogin"_s),
            QVariant(true));

        QTest::ignoreMessage(QtInfoMsg, "DEBUG: Removed org.vellumo.Vellumohelper");
        defaults->setStartAtLogin(false);
        QVERIFY(!QFile::exists(autostartPath()));
    }

    void startAtLoginFailureKeepsTheValue()
    {
        auto defaults = GVUserDefaults::make<SNUserDefaults>();
        QFile blocker(m_environment->configHome() + u"/autostart"_s);
        QVERIFY(blocker.open(QIODevice::WriteOnly)); // a file where the folder should be
        blocker.close();
        QTest::ignoreMessage(
            QtWarningMsg, "DEBUG: Could not add org.vellumo.Vellumohelper to the login items");
        defaults->setStartAtLogin(true);
        QVERIFY(defaults->startAtLogin());
        QCOMPARE(defaults->userDefaults().value(u"startAtLogin"_s), QVariant(true));
    }

    void storedStartAtLoginRenewsTheEntry()
    {
        QSettings store(GVUserDefaults::standardStorePath(), QSettings::IniFormat);
        store.setValue(u"startAtLogin"_s, false);
        store.sync();
        GVUserDefaults::make<SNUserDefaults>();
        QVERIFY(m_environment->messages().isEmpty());
        QVERIFY(!QFile::exists(autostartPath()));

        store.setValue(u"startAtLogin"_s, true);
        store.sync();
        QTest::ignoreMessage(QtInfoMsg, "DEBUG: Added org.vellumo.Vellumohelper");
        QVERIFY(GVUserDefaults::make<SNUserDefaults>()->startAtLogin());
        QVERIFY(QFile::exists(autostartPath()));
    }

    void execLineQuoting()
    {
        const QStringList url { u"vellumo://lal"_s };
        QCOMPARE(
            QWLoginItem::execLine(u"/usr/bin/vellumo"_s, url), u"/usr/bin/vellumo vellumo://lal"_s);
        QCOMPARE(QWLoginItem::execLine(u"/opt/My Apps/vellumo"_s, url),
            u"\"/opt/My Apps/vellumo\" vellumo://lal"_s);
        // Quoting escapes $ and \, then the string value doubles every backslash; % is doubled.
        QCOMPARE(QWLoginItem::execLine(u"/tmp/a$b\\c%d"_s, {}), u"\"/tmp/a\\\\$b\\\\\\\\c%%d\""_s);
        QCOMPARE(QWLoginItem::execLine(u"/tmp/it's"_s, { QString() }), u"\"/tmp/it's\" \"\""_s);
    }

private:
    std::unique_ptr<QWTestEnvironment> m_environment;
};

QTEST_GUILESS_MAIN(TestSNUserDefaults)
#include "TestSNUserDefaults.moc"
