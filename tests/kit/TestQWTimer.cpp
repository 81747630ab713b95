#include "kit/QWScheduler.h"
#include "kit/QWTimer.h"
#include "support/QWManualScheduler.h"

#include <QElapsedTimer>
#include <QTest>

class TestQWTimer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restartFiresOnceIntervalAfterTheLastRun();
    void oneShotFiresOnceAndKeepsItselfAlive();
    void repeatingFiresUntilInvalidated();
    void invalidateKeepsOrDropsTheCallback();
    void harmlessEdgeCases();
    void description();
    void firesOnTheRealEventLoop();
};

void TestQWTimer::restartFiresOnceIntervalAfterTheLastRun()
{
    QWManualScheduler scheduler;
    QList<double> firedAt;
    auto timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
        0.5, false, [&](QWTimer &) { firedAt.append(scheduler.now()); });
    scheduler.advanceBy(0.3);
    timer->run();
    timer->run(); // quick succession: still one countdown
    QCOMPARE(scheduler.scheduledCount(), 1);
    scheduler.advanceBy(0.4); // 0.7: the first countdown would have fired at 0.5
    QVERIFY(firedAt.isEmpty());
    scheduler.advanceBy(2.0);
    QCOMPARE(firedAt.size(), 1);
    QCOMPARE(firedAt.first(), 0.8);
}

void TestQWTimer::oneShotFiresOnceAndKeepsItselfAlive()
{
    QWManualScheduler scheduler;
    int fired = 0;
    std::weak_ptr<QWTimer> weak;
    {
        auto timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            1.0, false, [&](QWTimer &) { ++fired; });
        weak = timer;
    } // the owner lets go before it fires
    QVERIFY(!weak.expired());
    scheduler.advanceBy(10.0);
    QCOMPARE(fired, 1);
    // Spent: nothing keeps it any more.
    QVERIFY(weak.expired());
}

void TestQWTimer::repeatingFiresUntilInvalidated()
{
    QWManualScheduler scheduler;
    QList<double> firedAt;
    std::weak_ptr<QWTimer> weak;
    {
        auto timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            300.0, true, [&](QWTimer &) { firedAt.append(scheduler.now()); });
        weak = timer;
    }
    scheduler.advanceBy(1000.0);
    QCOMPARE(firedAt, (QList<double> { 300.0, 600.0, 900.0 }));
    QVERIFY(!weak.expired()); // a repeating timer lives on without its owner

    weak.lock()->invalidate();
    scheduler.advanceBy(1000.0);
    QCOMPARE(firedAt.size(), 3);
    QVERIFY(weak.expired());

    // A timer may also stop itself from its own callback.
    int count = 0;
    auto selfStopping
        = QWTimer::timerWithIntervalRepeatsDidFinishBlock(1.0, true, [&](QWTimer &timer) {
              if (++count == 2)
                  timer.invalidate();
          });
    scheduler.advanceBy(10.0);
    QCOMPARE(count, 2);
    QVERIFY(!selfStopping->timer());
}

void TestQWTimer::invalidateKeepsOrDropsTheCallback()
{
    QWManualScheduler scheduler;
    int fired = 0;
    auto timer = QWTimer::timerWithIntervalRepeatsUserInfoDidFinishBlock(
        0.5, false, QStringLiteral("payload"), [&](QWTimer &t) {
            QCOMPARE(t.userInfo().toString(), QStringLiteral("payload"));
            ++fired;
        });
    timer->invalidateTimerOnly();
    QVERIFY(!timer->timer());
    QVERIFY(timer->didFinishBlock());
    scheduler.advanceBy(1.0);
    QCOMPARE(fired, 0);
    timer->run(); // the same timer again
    scheduler.advanceBy(1.0);
    QCOMPARE(fired, 1);

    timer->invalidate();
    QVERIFY(!timer->didFinishBlock());
    timer->run(); // fires, without effect
    scheduler.advanceBy(1.0);
    QCOMPARE(fired, 1);
}

void TestQWTimer::harmlessEdgeCases()
{
    QWManualScheduler scheduler;
    QWTimer neverStarted;
    neverStarted.invalidate();
    neverStarted.invalidateTimerOnly();
    QVERIFY(!neverStarted.timer());

    auto silent = QWTimer::timerWithIntervalRepeatsDidFinishBlock(0.1, false, nullptr);
    scheduler.advanceBy(1.0);
    silent->invalidate(); // after firing
    QVERIFY(!silent->timer());

    // A timer that its scheduled countdown does not own dies with its owner, and its
    // countdown goes with it.
    int fired = 0;
    {
        QWTimer onStack;
        onStack.setInterval(0.5);
        onStack.setDidFinishBlock([&](QWTimer &) { ++fired; });
        onStack.run();
        QCOMPARE(scheduler.scheduledCount(), 1);
    }
    scheduler.advanceBy(1.0);
    QCOMPARE(fired, 0);
    QCOMPARE(scheduler.scheduledCount(), 0);
}

void TestQWTimer::description()
{
    QWManualScheduler scheduler;
    auto timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(0.5, false, nullptr);
    const QString text = timer->description();
    QVERIFY2(text.startsWith(QStringLiteral("<QWTimer 0x")), qPrintable(text));
    QVERIFY2(text.endsWith(QStringLiteral(", interval=0.500000, repeats=NO, userInfo=(null)>")),
        qPrintable(text));
    timer->setRepeats(true);
    timer->setUserInfo(42);
    QVERIFY2(timer->description().endsWith(QStringLiteral("repeats=YES, userInfo=42>")),
        qPrintable(timer->description()));
}

void TestQWTimer::firesOnTheRealEventLoop()
{
    // No manual scheduler: the event loop's own timers.
    int fired = 0;
    QElapsedTimer clock;
    clock.start();
    auto timer
        = QWTimer::timerWithIntervalRepeatsDidFinishBlock(0.02, false, [&](QWTimer &) { ++fired; });
    timer->run(); // restart: still one firing
    QTRY_COMPARE_WITH_TIMEOUT(fired, 1, 5000);
    QVERIFY(clock.elapsed() >= 15);
    QTest::qWait(60);
    QCOMPARE(fired, 1);

    int repeated = 0;
    auto repeating = QWTimer::timerWithIntervalRepeatsDidFinishBlock(0.01, true, [&](QWTimer &t) {
        if (++repeated == 3)
            t.invalidate();
    });
    QTRY_COMPARE_WITH_TIMEOUT(repeated, 3, 5000);
    QTest::qWait(50);
    QCOMPARE(repeated, 3);
}

QTEST_GUILESS_MAIN(TestQWTimer)
#include "TestQWTimer.moc"
