#include "kit/QWScheduler.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

QWScheduledTimer::QWScheduledTimer(double interval, bool repeats, Action action)
    : m_interval(interval), m_repeats(repeats), m_action(std::move(action))
{ }

QWScheduledTimer::~QWScheduledTimer() = default;

void QWScheduledTimer::invalidate()
{
    if (!m_action)
        return;
    stop();
    // Move out first: destroying the action may release the last owner of this timer.
    Action dropped = std::move(m_action);
    m_action = nullptr;
}

void QWScheduledTimer::fire()
{
    if (!m_action)
        return;
    std::shared_ptr<QWScheduledTimer> keepAlive = weak_from_this().lock();
    Action action = m_action;
    if (!m_repeats) {
        stop();
        m_action = nullptr;
    }
    action();
}

QWScheduler::~QWScheduler() = default;

void QWScheduler::track(const std::shared_ptr<QWScheduledTimer> &timer)
{
    std::erase_if(m_scheduled, [](const std::weak_ptr<QWScheduledTimer> &scheduled) {
        const std::shared_ptr<QWScheduledTimer> alive = scheduled.lock();
        return !alive || !alive->isValid();
    });
    m_scheduled.push_back(timer);
}

std::vector<std::shared_ptr<QWScheduledTimer>> QWScheduler::scheduledTimers() const
{
    std::vector<std::shared_ptr<QWScheduledTimer>> alive;
    for (const std::weak_ptr<QWScheduledTimer> &scheduled : m_scheduled) {
        std::shared_ptr<QWScheduledTimer> timer = scheduled.lock();
        if (timer && timer->isValid())
            alive.push_back(std::move(timer));
    }
    return alive;
}

void QWScheduler::invalidateAll()
{
    // Invalidating one may schedule or drop others, so work on a copy.
    const std::vector<std::weak_ptr<QWScheduledTimer>> scheduled = std::move(m_scheduled);
    m_scheduled.clear();
    for (const std::weak_ptr<QWScheduledTimer> &timer : scheduled) {
        if (const std::shared_ptr<QWScheduledTimer> alive = timer.lock())
            alive->invalidate();
    }
}

namespace {

class QWEventLoopTimer final : public QWScheduledTimer
{
public:
    QWEventLoopTimer(double interval, bool repeats, Action action)
        : QWScheduledTimer(interval, repeats, std::move(action))
    {
        m_timer->setTimerType(Qt::PreciseTimer);
        m_timer->setSingleShot(!repeats);
        m_timer->setInterval(toMilliseconds(interval));
        QObject::connect(m_timer.get(), &QTimer::timeout, [this] {
            const std::weak_ptr<QWScheduledTimer> alive = weak_from_this();
            m_emitting = true;
            fire(); // may destroy this object
            if (alive.lock())
                m_emitting = false;
        });
    }

    ~QWEventLoopTimer() override
    {
        // Destroyed from inside the QTimer's own timeout: let the event loop delete it.
        if (m_emitting) {
            m_timer->disconnect();
            m_timer->stop();
            m_timer.release()->deleteLater();
        }
    }

    void start() { m_timer->start(); }

protected:
    void stop() override { m_timer->stop(); }

private:
    static int toMilliseconds(double seconds)
    {
        if (!(seconds > 0.0)) // also NaN
            return 0;
        const double milliseconds = std::round(seconds * 1000.0);
        return milliseconds >= std::numeric_limits<int>::max() ? std::numeric_limits<int>::max()
                                                               : static_cast<int>(milliseconds);
    }

    std::unique_ptr<QTimer> m_timer = std::make_unique<QTimer>();
    bool m_emitting = false;
};

class QWEventLoopScheduler final : public QWScheduler
{
public:
    std::shared_ptr<QWScheduledTimer> scheduledTimerWithInterval(
        double interval, bool repeats, QWScheduledTimer::Action action) override
    {
        auto timer = std::make_shared<QWEventLoopTimer>(interval, repeats, std::move(action));
        timer->start();
        track(timer);
        return timer;
    }
};

QWEventLoopScheduler &eventLoopScheduler()
{
    static QWEventLoopScheduler scheduler;
    static const bool releasedWithTheApplication = [] {
        // Countdowns cannot fire without the application's event loop.
        qAddPostRoutine([] { eventLoopScheduler().invalidateAll(); });
        return true;
    }();
    Q_UNUSED(releasedWithTheApplication);
    return scheduler;
}

std::atomic<QWScheduler *> installedScheduler { nullptr };

} // namespace

QWScheduler &QWScheduler::current()
{
    QWScheduler *scheduler = installedScheduler.load();
    return scheduler ? *scheduler : eventLoopScheduler();
}

void QWScheduler::setCurrent(QWScheduler *scheduler)
{
    installedScheduler.store(scheduler);
}
