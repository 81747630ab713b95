#include "app/QWHotKeyGrabber.h"
#include "app/QWHotKeyHelper.h"
#include "kit/QWKeyCombo.h"
#include "support/QWTestEnvironment.h"

#include <QTest>

#include <X11/X.h>
#include <algorithm>
#include <memory>

namespace {

struct Grab
{
    qint64 code;
    quint16 modifiers;
    qint64 identifier;
    friend bool operator==(const Grab &, const Grab &) = default;
};

// Stands in for the X server: records every grab and release, refuses the codes it is told to,
// and reports key events as a real grabber does.
class RecordingGrabber final : public QWHotKeyGrabber
{
public:
    bool grabKeyWithIdentifier(qint64 code, quint16 modifiers, qint64 identifier) override
    {
        attempts.append({ code, modifiers, identifier });
        if (refusedCodes.contains(code))
            return false;
        held.append(identifier);
        return true;
    }
    void ungrabKeyWithIdentifier(qint64 identifier) override
    {
        released.append(identifier);
        held.removeAll(identifier);
    }
    void press(qint64 identifier) const { keyWasPressed(identifier); }
    void release(qint64 identifier) const { keyWasReleased(identifier); }

    QList<Grab> attempts;
    QList<qint64> held;
    QList<qint64> released;
    QList<qint64> refusedCodes;
};

constexpr quint64 controlShift = QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask;

} // namespace

class TestQWHotKeyHelper final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyCombinationsAreNeverGrabbed();
    void identifiersCountFromOneAndAreNeverReused();
    void refusalLogsAndKeepsTheCounter();
    void unregisteringReleasesOnlyKnownIdentifiers();
    void keyEventsReachTheBlocksByIdentifier();
    void teardownReleasesWhatIsHeld();
    void modifierMasksBecomeX11Masks();
    void withoutAnXServerNothingRegisters();
};

void TestQWHotKeyHelper::emptyCombinationsAreNeverGrabbed()
{
    auto grabber = std::make_unique<RecordingGrabber>();
    RecordingGrabber *platform = grabber.get();
    QWHotKeyHelper helper(std::move(grabber));

    QCOMPARE(helper.registerHotKey(QWKeyCombo {}), -1);
    QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, QWKeyCombo::NoKeyCode }), -1);
    QCOMPARE(helper.registerHotKey(QWKeyCombo { 0, 0 }), -1);
    QVERIFY(platform->attempts.isEmpty());
    QVERIFY(helper.carbonHotkeys().isEmpty());

    // An empty combination takes no identifier either.
    QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, 45 }), 1);
}

void TestQWHotKeyHelper::identifiersCountFromOneAndAreNeverReused()
{
    auto grabber = std::make_unique<RecordingGrabber>();
    RecordingGrabber *platform = grabber.get();
    QWHotKeyHelper helper(std::move(grabber));

    const QWKeyCombo tags { controlShift, 45 };
    const QWKeyCombo note {
        QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask | QWKeyCombo::CommandKeyMask, 45
    };
    QCOMPARE(helper.registerHotKey(tags), 1);
    QCOMPARE(helper.registerHotKey(note), 2);
    QCOMPARE(platform->attempts,
        (QList<Grab> {
            { 45, ControlMask | ShiftMask, 1 }, { 45, ControlMask | Mod1Mask | Mod4Mask, 2 } }));
    QCOMPARE(helper.carbonHotkeys().value(1), tags);
    QCOMPARE(helper.carbonHotkeys().value(2), note);

    // Registering the same combinations again, as a settings change does, gives new numbers.
    helper.unregisterHotkeyWithID(1);
    helper.unregisterHotkeyWithID(2);
    QCOMPARE(helper.registerHotKey(tags), 3);
    QCOMPARE(helper.registerHotKey(note), 4);
    QCOMPARE(platform->held, (QList<qint64> { 3, 4 }));
}

void TestQWHotKeyHelper::refusalLogsAndKeepsTheCounter()
{
    QWTestEnvironment environment;
    auto grabber = std::make_unique<RecordingGrabber>();
    grabber->refusedCodes = { 53 };
    QWHotKeyHelper helper(std::move(grabber));

    QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, 53 }), -1);
    QCOMPARE(
        environment.messages(), QStringList { QStringLiteral("[DEBUG] Error registering hotkey") });
    QVERIFY(helper.carbonHotkeys().isEmpty());
    QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, 45 }), 1);
}

void TestQWHotKeyHelper::unregisteringReleasesOnlyKnownIdentifiers()
{
    auto grabber = std::make_unique<RecordingGrabber>();
    RecordingGrabber *platform = grabber.get();
    QWHotKeyHelper helper(std::move(grabber));
    const qint64 identifier = helper.registerHotKey(QWKeyCombo { controlShift, 45 });

    helper.unregisterHotkeyWithID(identifier + 7);
    helper.unregisterHotkeyWithID(-1);
    QVERIFY(platform->released.isEmpty());

    helper.unregisterHotkeyWithID(identifier);
    helper.unregisterHotkeyWithID(identifier); // stale now
    QCOMPARE(platform->released, QList<qint64> { identifier });
    QVERIFY(helper.carbonHotkeys().isEmpty());
}

void TestQWHotKeyHelper::keyEventsReachTheBlocksByIdentifier()
{
    auto grabber = std::make_unique<RecordingGrabber>();
    RecordingGrabber *platform = grabber.get();
    QWHotKeyHelper helper(std::move(grabber));

    // No blocks yet: events go nowhere, and nothing breaks.
    platform->press(1);
    platform->release(1);

    QList<qint64> pressed;
    QList<qint64> released;
    helper.setPressedBlock([&](qint64 identifier) { pressed.append(identifier); });
    helper.setReleasedBlock([&](qint64 identifier) { released.append(identifier); });
    platform->press(2);
    platform->press(5);
    platform->release(2);
    QCOMPARE(pressed, (QList<qint64> { 2, 5 }));
    QCOMPARE(released, QList<qint64> { 2 });
}

void TestQWHotKeyHelper::teardownReleasesWhatIsHeld()
{
    // The helper owns its grabber: this one reports to the test what it is asked to release.
    QList<qint64> released;
    class WatchedGrabber final : public QWHotKeyGrabber
    {
    public:
        explicit WatchedGrabber(QList<qint64> &released) : m_released(released) { }
        bool grabKeyWithIdentifier(qint64, quint16, qint64) override { return true; }
        void ungrabKeyWithIdentifier(qint64 identifier) override { m_released.append(identifier); }

    private:
        QList<qint64> &m_released;
    };
    {
        QWHotKeyHelper helper(std::make_unique<WatchedGrabber>(released));
        helper.registerHotKey(QWKeyCombo { controlShift, 45 });
        const qint64 second = helper.registerHotKey(QWKeyCombo { controlShift, 46 });
        helper.registerHotKey(QWKeyCombo { controlShift, 47 });
        helper.unregisterHotkeyWithID(second);
    }
    std::sort(released.begin(), released.end());
    QCOMPARE(released, (QList<qint64> { 1, 2, 3 }));
}

void TestQWHotKeyHelper::modifierMasksBecomeX11Masks()
{
    QCOMPARE(QWHotKeyHelper::translateModifierFlags(0), quint16(0));
    QCOMPARE(QWHotKeyHelper::translateModifierFlags(QWKeyCombo::ShiftKeyMask), quint16(ShiftMask));
    QCOMPARE(
        QWHotKeyHelper::translateModifierFlags(QWKeyCombo::ControlKeyMask), quint16(ControlMask));
    QCOMPARE(QWHotKeyHelper::translateModifierFlags(QWKeyCombo::OptionKeyMask), quint16(Mod1Mask));
    QCOMPARE(QWHotKeyHelper::translateModifierFlags(QWKeyCombo::CommandKeyMask), quint16(Mod4Mask));
    // Caps Lock (0x10000) and the device-dependent low bits are not part of a combination.
    QCOMPARE(QWHotKeyHelper::translateModifierFlags(0x10000 | 0xFF | QWKeyCombo::ShiftKeyMask),
        quint16(ShiftMask));
}

void TestQWHotKeyHelper::withoutAnXServerNothingRegisters()
{
    QWTestEnvironment environment;
    QWHotKeyHelper helper(nullptr);
    QCOMPARE(helper.registerHotKey(QWKeyCombo { controlShift, 45 }), -1);
    QCOMPARE(
        environment.messages(), QStringList { QStringLiteral("[DEBUG] Error registering hotkey") });
    helper.unregisterHotkeyWithID(1);
}

QTEST_GUILESS_MAIN(TestQWHotKeyHelper)
#include "TestQWHotKeyHelper.moc"
