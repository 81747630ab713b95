#pragma once

#include <functional>
#include <memory>
#include <vector>

// One scheduled countdown: what a QWTimer holds as its platform timer.
class QWScheduledTimer : public std::enable_shared_from_this<QWScheduledTimer>
{
public:
    using Action = std::function<void()>;

    QWScheduledTimer(double interval, bool repeats, Action action);
    virtual ~QWScheduledTimer();
    QWScheduledTimer(const QWScheduledTimer &) = delete;
    QWScheduledTimer &operator=(const QWScheduledTimer &) = delete;

    double interval() const { return m_interval; }
    bool repeats() const { return m_repeats; }
    // Scheduled and not yet spent (one-shot) or invalidated.
    bool isValid() const { return static_cast<bool>(m_action); }

    // Stops the countdown and drops the action (and whatever the action keeps alive).
    // Invalidating a spent or invalidated timer does nothing.
    void invalidate();

protected:
    // Runs the action; a one-shot is spent before the action runs, so the action may
    // schedule again. The action stays alive until it returns.
    void fire();
    virtual void stop() = 0;

private:
    double m_interval;
    bool m_repeats;
    Action m_action;
};

// Where timers count down. The real one is the event loop of the thread that schedules;
// tests install a scheduler of their own to move time forward without waiting.
class QWScheduler
{
public:
    virtual ~QWScheduler();

    virtual std::shared_ptr<QWScheduledTimer> scheduledTimerWithInterval(
        double interval, bool repeats, QWScheduledTimer::Action action)
        = 0;

    static QWScheduler &current();
    // Installs a scheduler for the whole process; nullptr brings back the event loop.
    static void setCurrent(QWScheduler *scheduler);

    // Invalidates every countdown still scheduled here. Pending timers keep themselves
    // alive, so when their event loop goes away this is what lets them go.
    void invalidateAll();

protected:
    void track(const std::shared_ptr<QWScheduledTimer> &timer);
    // The countdowns still scheduled here, in the order they were scheduled.
    std::vector<std::shared_ptr<QWScheduledTimer>> scheduledTimers() const;

private:
    std::vector<std::weak_ptr<QWScheduledTimer>> m_scheduled;
};
