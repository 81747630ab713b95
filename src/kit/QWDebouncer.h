#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class QWTimer;

// Runs an action once its delay has passed since the last restart, so that a burst of edits
// makes one save. Destroying the debouncer drops a run still pending, so an action may use its
// owner freely when the debouncer is one of the owner's members. The countdown is a QWTimer:
// the scheduler that tests set drives it too. It does not repeat; a periodic action is a
// repeating QWTimer.
class QWDebouncer final
{
public:
    QWDebouncer(double delay, std::function<void()> action);
    ~QWDebouncer();
    Q_DISABLE_COPY_MOVE(QWDebouncer)

    // Starts the delay again from now; only the last restart of a burst runs the action.
    void restart();
    // Drops the pending run, if any.
    void cancel();
    bool isPending() const { return m_pending; }
    double delay() const { return m_delay; }

private:
    double m_delay;
    std::function<void()> m_action;
    std::shared_ptr<QWTimer> m_timer;
    bool m_pending = false;
};
