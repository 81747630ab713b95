#include "kit/QWDebouncer.h"
#include "support/QWManualScheduler.h"

#include <QTest>

#include <memory>

// The one restart-a-delay of the program: a burst gives one run, and nothing runs late.
class TestQWDebouncer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void burstRunsOnceAfterTheLastRestart()
    {
        QWManualScheduler scheduler;
        QList<double> ranAt;
        QWDebouncer debouncer(0.5, [&] { ranAt.append(scheduler.now()); });
        for (int edit = 0; edit < 10; ++edit) {
            debouncer.restart();
            scheduler.advanceBy(0.3);
        }
        QVERIFY(ranAt.isEmpty() && debouncer.isPending());
        scheduler.advanceBy(1.0);
        QCOMPARE(ranAt.size(), 1);
        QVERIFY(qFuzzyCompare(ranAt.first(), 3.2));
        QVERIFY(!debouncer.isPending());
        QCOMPARE(scheduler.scheduledCount(), 0);
    }

    // Cancelled or destroyed: no run. The action may restart it.
    void cancelDestructionAndRestartFromTheAction()
    {
        QWManualScheduler scheduler;
        int runs = 0;
        QWDebouncer cancelled(0.5, [&] { ++runs; });
        cancelled.restart();
        cancelled.cancel();
        QVERIFY(!cancelled.isPending());
        std::unique_ptr<QWDebouncer> debouncer
            = std::make_unique<QWDebouncer>(0.5, [&] { ++runs; });
        debouncer->restart();
        debouncer.reset();
        scheduler.advanceBy(1.0);
        QCOMPARE(runs, 0);

        debouncer = std::make_unique<QWDebouncer>(0.5, [&] {
            if (++runs < 3)
                debouncer->restart();
        });
        debouncer->restart();
        scheduler.advanceBy(5.0);
        QCOMPARE(runs, 3);
        QVERIFY(!debouncer->isPending());
    }
};

QTEST_APPLESS_MAIN(TestQWDebouncer)
#include "TestQWDebouncer.moc"
