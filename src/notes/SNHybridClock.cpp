#include "notes/SNHybridClock.h"

#include "kit/QWClock.h"

SNHybridClock::SNHybridClock(const QString &device) : m_device(device) { }

SNNoteStamp SNHybridClock::now()
{
    const qint64 wall = QWClock::currentDateTime().toMSecsSinceEpoch();
    std::lock_guard lock(m_mutex);
    if (wall > m_millis) {
        m_millis = wall;
        m_counter = 0;
    } else {
        ++m_counter;
    }
    return { m_millis, m_counter, m_device };
}

void SNHybridClock::observe(const SNNoteStamp &stamp)
{
    std::lock_guard lock(m_mutex);
    if (stamp.millis > m_millis || (stamp.millis == m_millis && stamp.counter > m_counter)) {
        m_millis = stamp.millis;
        m_counter = stamp.counter;
    }
}
