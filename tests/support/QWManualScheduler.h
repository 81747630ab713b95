#pragma once

#include "kit/QWScheduler.h"

#include <QDateTime>

#include <memory>
#include <vector>

// A scheduler whose time moves only when a test says so. While installed, QWTimer countdowns
// run here and QWClock reads this scheduler's time.
class QWManualScheduler final : public QWScheduler
{
public:
    explicit QWManualScheduler(const QDateTime &start = QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    ~QWManualScheduler() override;
    QWManualScheduler(const QWManualScheduler &) = delete;
    QWManualScheduler &operator=(const QWManualScheduler &) = delete;

    std::shared_ptr<QWScheduledTimer> scheduledTimerWithInterval(
        double interval, bool repeats, QWScheduledTimer::Action action) override;

    // Moves time forward, firing every countdown that falls due, in time order.
    void advanceBy(double seconds);

    double now() const { return m_now; }
    QDateTime currentDateTime() const;
    // Countdowns still waiting to fire.
    int scheduledCount() const;

private:
    class Timer;
    double m_now = 0.0;
    QDateTime m_start;
};
