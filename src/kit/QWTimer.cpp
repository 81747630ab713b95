#include "kit/QWTimer.h"

#include "kit/QWScheduler.h"

QWTimer::QWTimer() = default;

QWTimer::~QWTimer()
{
    invalidate();
}

void QWTimer::run()
{
    // Invalidating the old countdown may drop what kept this timer alive.
    const std::shared_ptr<QWTimer> keepAlive = weak_from_this().lock();
    invalidateTimerOnly();
    // The countdown holds its QWTimer strongly while scheduled (dropped once a one-shot
    // has fired or the timer is invalidated), so nobody needs to keep a pending timer.
    QWScheduledTimer::Action action;
    if (keepAlive) {
        action = [self = keepAlive]() { self->timerDidFinish(self->m_timer.get()); };
    } else {
        action = [this]() { timerDidFinish(m_timer.get()); }; // the destructor invalidates first
    }
    m_timer = QWScheduler::current().scheduledTimerWithInterval(
        m_interval, m_repeats, std::move(action));
}

void QWTimer::invalidate()
{
    const std::shared_ptr<QWTimer> keepAlive = weak_from_this().lock();
    invalidateTimerOnly();
    m_didFinishBlock = nullptr;
}

void QWTimer::invalidateTimerOnly()
{
    if (!m_timer)
        return;
    // Move out first: invalidating may drop the last owner of this object.
    std::shared_ptr<QWScheduledTimer> timer = std::move(m_timer);
    m_timer.reset();
    timer->invalidate();
}

void QWTimer::timerDidFinish(QWScheduledTimer *)
{
    if (m_didFinishBlock) {
        // A copy, so that the block may replace or drop itself while it runs.
        const DidFinishBlock block = m_didFinishBlock;
        block(*this);
    }
}

QString QWTimer::description() const
{
    const QString userInfo = m_userInfo.isNull() ? QStringLiteral("(null)") : m_userInfo.toString();
    return QString::asprintf("<QWTimer %p, interval=%f, repeats=%s, userInfo=",
               static_cast<const void *>(this), m_interval, m_repeats ? "YES" : "NO")
        + userInfo + QLatin1Char('>');
}
