#include "SNAppTestSupport.h"
#include "app/SNGlobalHotKeys.h"

#include <QTest>

// The names and descriptions a desktop files the keys under are
// TestSNHotKeysWaylandIntegration's.
class TestSNGlobalHotKeys final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewCombinationReplacesBothGrabsAndPressesGoByIdentifier()
    {
        const auto defaults = clearedDefaults();
        auto owned = std::make_unique<RecordingGrabber>();
        const RecordingGrabber &grabber = *owned;
        QWHotKeyHelper helper(std::move(owned));
        QStringList pressed;
        SNGlobalHotKeys hotKeys(
            *defaults, helper, [&] { pressed << QStringLiteral("tags"); },
            [&] { pressed << QStringLiteral("note"); });
        hotKeys.updateHotkeys();
        const qint64 tags = hotKeys.hotKeyID();

        defaults->setNoteHotKeyCombo(QWKeyCombo { QWKeyCombo::ControlKeyMask, 49 });
        hotKeys.updateHotkeys();
        QCOMPARE(grabber.codes,
            (QHash<qint64, qint64> { { hotKeys.hotKeyID(), 45 }, { hotKeys.noteHotKeyID(), 49 } }));
        QVERIFY(hotKeys.hotKeyID() != tags);
        // Every identifier other than the show-tags one means a new note, stale ones included.
        for (const qint64 identifier : { hotKeys.hotKeyID(), hotKeys.noteHotKeyID(), tags })
            grabber.press(identifier);
        QCOMPARE(pressed,
            (QStringList {
                QStringLiteral("tags"), QStringLiteral("note"), QStringLiteral("note") }));
        // Turned off in the settings, both grabs go; back on, both come again.
        defaults->setHotKeyEnabled(false);
        hotKeys.updateHotkeys();
        QVERIFY(grabber.codes.isEmpty());
        defaults->setHotKeyEnabled(true);
        hotKeys.updateHotkeys();
        QCOMPARE(grabber.codes.size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSNGlobalHotKeys)
#include "TestSNGlobalHotKeys.moc"
