#include "support/QWManualScheduler.h"

#include "kit/QWClock.h"

#include <algorithm>
#include <cmath>

class QWManualScheduler::Timer final : public QWScheduledTimer
{
public:
    Timer(double interval, bool repeats, Action action, double due)
        : QWScheduledTimer(interval, repeats, std::move(action)), due(due)
    { }
    void fireNow() { fire(); }
    double due;

protected:
    void stop() override { }
};

QWManualScheduler::QWManualScheduler(const QDateTime &start) : m_start(start)
{
    QWScheduler::setCurrent(this);
    QWClock::setCurrentDateTimeProvider([this] { return currentDateTime(); });
}

QWManualScheduler::~QWManualScheduler()
{
    invalidateAll();
    QWClock::setCurrentDateTimeProvider({});
    QWScheduler::setCurrent(nullptr);
}

std::shared_ptr<QWScheduledTimer> QWManualScheduler::scheduledTimerWithInterval(
    double interval, bool repeats, QWScheduledTimer::Action action)
{
    auto timer = std::make_shared<Timer>(
        interval, repeats, std::move(action), m_now + std::max(0.0, interval));
    track(timer);
    return timer;
}

void QWManualScheduler::advanceBy(double seconds)
{
    const double end = m_now + seconds;
    for (;;) {
        // The earliest countdown due by the end; ties fire in the order they were scheduled.
        // Only this scheduler's own countdowns are tracked here.
        std::shared_ptr<Timer> next;
        for (const std::shared_ptr<QWScheduledTimer> &candidate : scheduledTimers()) {
            auto timer = std::static_pointer_cast<Timer>(candidate);
            if (timer->due <= end + 1e-9 && (!next || timer->due < next->due))
                next = timer;
        }
        if (!next)
            break;
        m_now = std::max(m_now, next->due);
        if (next->repeats())
            next->due = m_now + std::max(next->interval(), 1e-3);
        next->fireNow();
    }
    m_now = end;
}

QDateTime QWManualScheduler::currentDateTime() const
{
    return m_start.addMSecs(qint64(std::llround(m_now * 1000.0)));
}

int QWManualScheduler::scheduledCount() const
{
    return int(scheduledTimers().size());
}
