#include "kit/QWTimer.h"
#include "support/QWManualScheduler.h"

#include <QTest>

class TestQWTimer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A scheduled countdown keeps its timer alive: a one-shot until it fires, a repeating one
    // until it is invalidated, from outside or from its own callback.
    void countdownsKeepTheirTimersAlive()
    {
        QWManualScheduler scheduler;
        int fired = 0;
        std::weak_ptr<QWTimer> oneShot = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            1.0, false, [&](QWTimer &) { ++fired; });
        QVERIFY(!oneShot.expired());
        scheduler.advanceBy(10.0);
        QCOMPARE(fired, 1);
        QVERIFY(oneShot.expired());

        QList<double> firedAt;
        std::weak_ptr<QWTimer> repeating = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            300.0, true, [&](QWTimer &) { firedAt.append(scheduler.now()); });
        scheduler.advanceBy(1000.0);
        QCOMPARE(firedAt, (QList<double> { 310.0, 610.0, 910.0 }));
        repeating.lock()->invalidate();
        scheduler.advanceBy(1000.0);
        QCOMPARE(firedAt.size(), 3);
        QVERIFY(repeating.expired());
    }

    // No manual scheduler: the event loop's own timers. Restarted, a one-shot still fires once;
    // a repeating one stops itself from its callback.
    void firesOnTheRealEventLoop()
    {
        int fired = 0;
        auto timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            0.02, false, [&](QWTimer &) { ++fired; });
        timer->run();
        int repeated = 0;
        auto repeating
            = QWTimer::timerWithIntervalRepeatsDidFinishBlock(0.01, true, [&](QWTimer &self) {
                  if (++repeated == 3)
                      self.invalidate();
              });
        QTRY_COMPARE_WITH_TIMEOUT(fired, 1, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(repeated, 3, 5000);
        QTest::qWait(60);
        QCOMPARE(fired, 1);
        QCOMPARE(repeated, 3);
        QVERIFY(!repeating->timer());
    }
};

QTEST_GUILESS_MAIN(TestQWTimer)
#include "TestQWTimer.moc"
