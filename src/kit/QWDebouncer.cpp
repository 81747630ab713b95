#include "kit/QWDebouncer.h"

#include "kit/QWTimer.h"

#include <utility>

QWDebouncer::QWDebouncer(double delay, std::function<void()> action)
    : m_delay(delay), m_action(std::move(action))
{ }

QWDebouncer::~QWDebouncer()
{
    cancel();
}

void QWDebouncer::restart()
{
    cancel();
    m_pending = true;
    // Invalidated by cancel() before this object goes, so the block never outlives it.
    m_timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(m_delay, false, [this](QWTimer &) {
        // Let go of the firing timer first: the action may restart the delay.
        m_timer.reset();
        m_pending = false;
        m_action();
    });
}

void QWDebouncer::cancel()
{
    m_pending = false;
    if (m_timer) {
        m_timer->invalidate();
        m_timer.reset();
    }
}
