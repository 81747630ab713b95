#include "SNAppTestSupport.h"
#include "app/SNGlobalHotKeys.h"

#include <QTest>

class TestSNGlobalHotKeys final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settingsReplaceTheGrabsAndPressesGoByIdentifier()
    {
        const auto defaults = clearedDefaults();
        auto owned = std::make_unique<RecordingGrabber>();
        const RecordingGrabber &grabber = *owned;
        QWHotKeyHelper helper(std::move(owned));
        QStringList pressed;
        SNGlobalHotKeys hotKeys(
            *defaults, helper, [&] { pressed << QStringLiteral("tags"); },
            [&] { pressed << QStringLiteral("note"); });
        // Nothing registered, nothing to point at.
        defaults->setHotKeyEnabled(false);
        hotKeys.updateHotkeys();
        QCOMPARE(hotKeys.hotKeyID(), -1);
        QCOMPARE(hotKeys.noteHotKeyID(), -1);

        defaults->setHotKeyEnabled(true);
        hotKeys.updateHotkeys();
        const qint64 tags = hotKeys.hotKeyID();
        QCOMPARE(grabber.codes.values(), (QList<qint64> { 45, 45 }));
        // Turned off, both go; the identifiers stay, stale.
        defaults->setHotKeyEnabled(false);
        hotKeys.updateHotkeys();
        QVERIFY(grabber.codes.isEmpty());
        QCOMPARE(hotKeys.hotKeyID(), tags);
        // A new combination replaces both registrations.
        defaults->setHotKeyEnabled(true);
        defaults->setNoteHotKeyCombo(QWKeyCombo { QWKeyCombo::ControlKeyMask, 49 });
        hotKeys.updateHotkeys();
        QCOMPARE(grabber.codes,
            (QHash<qint64, qint64> { { hotKeys.hotKeyID(), 45 }, { hotKeys.noteHotKeyID(), 49 } }));
        // New identifiers, the same name: what a desktop files the user's keys under.
        QCOMPARE(grabber.lastName, QStringLiteral("new-note"));
        QCOMPARE(hotKeys.state().newNote().command,
            SNGlobalHotKeys::programCommand() + QStringLiteral(" --new-note"));
        // Every identifier other than the show-tags one means a new note, stale ones included.
        for (const qint64 identifier : { hotKeys.hotKeyID(), hotKeys.noteHotKeyID(), tags })
            grabber.press(identifier);
        QCOMPARE(pressed,
            (QStringList {
                QStringLiteral("tags"), QStringLiteral("note"), QStringLiteral("note") }));
    }
};

QTEST_GUILESS_MAIN(TestSNGlobalHotKeys)
#include "TestSNGlobalHotKeys.moc"
