#pragma once

#include "notes/SNNoteVersion.h"

#include <QString>

#include <mutex>

// Hands out the stamps of one device's changes: never smaller than a stamp handed out or seen
// before, even when the wall clock steps back, and near the wall clock otherwise. Safe to use
// from any thread.
class SNHybridClock final
{
public:
    explicit SNHybridClock(const QString &device);
    SNHybridClock(const SNHybridClock &) = delete;
    SNHybridClock &operator=(const SNHybridClock &) = delete;

    QString device() const { return m_device; }
    // A stamp for a change made now, greater than every one before.
    SNNoteStamp now();
    // Takes in a stamp read from a record, so that later stamps come after it.
    void observe(const SNNoteStamp &stamp);

private:
    const QString m_device;
    std::mutex m_mutex;
    qint64 m_millis = 0;
    qint64 m_counter = 0;
};
