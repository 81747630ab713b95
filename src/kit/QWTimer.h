#pragma once

#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

class QWScheduledTimer;

// The timer behind every delay and periodic action of the program. To restart a delay, its
// owner invalidates the timer and makes a new one. While a countdown is scheduled, the
// countdown keeps its QWTimer alive, so a one-shot fires even when its owner has let go of
// it, and a repeating timer runs until it is invalidated.
//
// Own QWTimer through std::shared_ptr (the class operations do); a QWTimer that lives
// elsewhere still works, but then nothing keeps it alive once its owner destroys it.
class QWTimer : public std::enable_shared_from_this<QWTimer>
{
public:
    using DidFinishBlock = std::function<void(QWTimer &timer)>;

    template <class Timer = QWTimer>
    static std::shared_ptr<Timer> timerWithIntervalRepeatsUserInfoDidFinishBlock(
        double interval, bool repeats, const QVariant &userInfo, DidFinishBlock didFinishBlock)
    {
        auto timer = std::make_shared<Timer>();
        timer->setInterval(interval);
        timer->setRepeats(repeats);
        timer->setUserInfo(userInfo);
        timer->setDidFinishBlock(std::move(didFinishBlock));
        timer->run();
        return timer;
    }

    template <class Timer = QWTimer>
    static std::shared_ptr<Timer> timerWithIntervalRepeatsDidFinishBlock(
        double interval, bool repeats, DidFinishBlock didFinishBlock)
    {
        return timerWithIntervalRepeatsUserInfoDidFinishBlock<Timer>(
            interval, repeats, QVariant(), std::move(didFinishBlock));
    }

    QWTimer();
    virtual ~QWTimer();
    QWTimer(const QWTimer &) = delete;
    QWTimer &operator=(const QWTimer &) = delete;

    // (Re)starts the countdown from now; at most one countdown is ever scheduled.
    void run();
    // Stops the countdown and drops the callback: a later run() fires without effect.
    void invalidate();
    // Stops the countdown but keeps the callback, so run() starts the same timer again.
    void invalidateTimerOnly();
    // Called by the countdown when it fires.
    void timerDidFinish(QWScheduledTimer *timer);

    // "<QWTimer 0x..., interval=0.500000, repeats=NO, userInfo=(null)>"
    QString description() const;

    const std::shared_ptr<QWScheduledTimer> &timer() const { return m_timer; }
    // Kept for callers only; the timer itself never reads or writes it.
    bool isRunning() const { return m_running; }
    void setRunning(bool running) { m_running = running; }
    double interval() const { return m_interval; }
    void setInterval(double interval) { m_interval = interval; }
    bool repeats() const { return m_repeats; }
    void setRepeats(bool repeats) { m_repeats = repeats; }
    const QVariant &userInfo() const { return m_userInfo; }
    void setUserInfo(const QVariant &userInfo) { m_userInfo = userInfo; }
    const DidFinishBlock &didFinishBlock() const { return m_didFinishBlock; }
    void setDidFinishBlock(DidFinishBlock block) { m_didFinishBlock = std::move(block); }

private:
    std::shared_ptr<QWScheduledTimer> m_timer;
    bool m_running = false;
    double m_interval = 0.0;
    bool m_repeats = false;
    QVariant m_userInfo;
    DidFinishBlock m_didFinishBlock;
};
