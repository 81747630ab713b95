#include "SNAppTestSupport.h"
#include "app/QWHotKeyHelper.h"
#include "app/SNGlobalHotKeys.h"
#include "settings/SNUserDefaults.h"

#include <QSettings>
#include <QTest>

class TestSNGlobalHotKeys final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void identifiersStayUnsetWhileNothingIsRegistered();
    void settingsReplaceTheGrabsAndPressesGoByIdentifier();

private:
    std::unique_ptr<SNUserDefaults> m_defaults;
    RecordingGrabber *m_grabber = nullptr;
    std::unique_ptr<QWHotKeyHelper> m_helper;
    std::unique_ptr<SNGlobalHotKeys> m_hotKeys;
    QStringList m_pressed;
};

void TestSNGlobalHotKeys::init()
{
    m_defaults = GVUserDefaults::make<SNUserDefaults>();
    m_defaults->userDefaults().clear();
    auto grabber = std::make_unique<RecordingGrabber>();
    m_grabber = grabber.get();
    m_helper = std::make_unique<QWHotKeyHelper>(std::move(grabber));
    m_hotKeys = std::make_unique<SNGlobalHotKeys>(
        *m_defaults, *m_helper, [this] { m_pressed.append(QStringLiteral("tags")); },
        [this] { m_pressed.append(QStringLiteral("note")); });
    m_pressed.clear();
}

void TestSNGlobalHotKeys::cleanup()
{
    m_hotKeys.reset();
    m_helper.reset();
    m_defaults->userDefaults().clear();
    m_defaults.reset();
}

void TestSNGlobalHotKeys::identifiersStayUnsetWhileNothingIsRegistered()
{
    m_defaults->setHotKeyEnabled(false);
    m_hotKeys->updateHotkeys();
    QCOMPARE(m_hotKeys->hotKeyID(), -1);
    QCOMPARE(m_hotKeys->noteHotKeyID(), -1);

    m_defaults->setHotKeyEnabled(true);
    m_defaults->setHotKeyCombo(QWKeyCombo {});
    m_defaults->setNoteHotKeyCombo(QWKeyCombo {});
    m_hotKeys->updateHotkeys();
    QCOMPARE(m_hotKeys->hotKeyID(), -1);
    QCOMPARE(m_hotKeys->noteHotKeyID(), -1);
    QVERIFY(m_grabber->codes.isEmpty());
}

void TestSNGlobalHotKeys::settingsReplaceTheGrabsAndPressesGoByIdentifier()
{
    m_hotKeys->updateHotkeys();
    const qint64 tags = m_hotKeys->hotKeyID();
    QCOMPARE(m_grabber->codes, (QHash<qint64, qint64> { { tags, 45 }, { tags + 1, 45 } }));

    // Turned off, both go; the identifiers stay, stale.
    m_defaults->setHotKeyEnabled(false);
    m_hotKeys->updateHotkeys();
    QVERIFY(m_grabber->codes.isEmpty());
    QCOMPARE(m_hotKeys->hotKeyID(), tags);

    // A new combination replaces both registrations.
    m_defaults->setHotKeyEnabled(true);
    m_defaults->setNoteHotKeyCombo(QWKeyCombo { QWKeyCombo::ControlKeyMask, 49 });
    m_hotKeys->updateHotkeys();
    QCOMPARE(m_grabber->codes,
        (QHash<qint64, qint64> {
            { m_hotKeys->hotKeyID(), 45 }, { m_hotKeys->noteHotKeyID(), 49 } }));

    // Every identifier other than the show-tags one means a new note, stale ones included.
    for (const qint64 identifier : { m_hotKeys->hotKeyID(), m_hotKeys->noteHotKeyID(), tags })
        m_grabber->press(identifier);
    QCOMPARE(m_pressed,
        (QStringList { QStringLiteral("tags"), QStringLiteral("note"), QStringLiteral("note") }));
}

QTEST_GUILESS_MAIN(TestSNGlobalHotKeys)
#include "TestSNGlobalHotKeys.moc"
