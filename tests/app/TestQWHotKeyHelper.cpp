#include "SNAppTestSupport.h"
#include "app/QWHotKeyHelper.h"
#include "kit/QWKeyCombo.h"

#include <QTest>

#include <X11/X.h>

namespace {

constexpr quint64 controlShift = QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask;

} // namespace

class TestQWHotKeyHelper final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyWhatWasGrabbedGetsAnIdentifierAndIsReleased()
    {
        auto owned = std::make_unique<RecordingGrabber>();
        RecordingGrabber &grabber = *owned;
        QWHotKeyHelper helper(std::move(owned));
        // Empty combinations are never tried.
        QCOMPARE(helper.registerHotKey(QWKeyCombo {}), -1);
        QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, QWKeyCombo::NoKeyCode }), -1);
        QCOMPARE(grabber.lastModifiers, 0);
        grabber.refusedCodes = { 53 };
        QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, 53 }), -1);

        // Caps Lock and the device's own bits are not part of a combination.
        const qint64 tags = helper.registerHotKey(QWKeyCombo { controlShift | 0x10000 | 0xFF, 45 });
        QCOMPARE(grabber.lastModifiers, ControlMask | ShiftMask);
        QCOMPARE(helper.carbonHotkeys().keys(), QList<qint64> { tags });
        // Released once; unknown and stale identifiers release nothing; none is used twice.
        helper.unregisterHotkeyWithID(tags + 7);
        helper.unregisterHotkeyWithID(-1);
        helper.unregisterHotkeyWithID(tags);
        helper.unregisterHotkeyWithID(tags);
        QCOMPARE(grabber.ungrabs, 1);
        QVERIFY(helper.carbonHotkeys().isEmpty());
        const qint64 again = helper.registerHotKey(QWKeyCombo { controlShift, 45 });
        QCOMPARE(grabber.codes, (QHash<qint64, qint64> { { again, 45 } }));
        QVERIFY(again != tags);

        // Without an X server nothing registers, and releasing fails quietly.
        QWHotKeyHelper withoutX(nullptr);
        QCOMPARE(withoutX.registerHotKey(QWKeyCombo { controlShift, 45 }), -1);
        withoutX.unregisterHotkeyWithID(1);
    }
};

QTEST_GUILESS_MAIN(TestQWHotKeyHelper)
#include "TestQWHotKeyHelper.moc"
