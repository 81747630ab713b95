#pragma once

#include <QDateTime>

#include <functional>

// The current date and time, as every dated record and the time-of-day theme read it. Tests
// set it so that dates and hours are known without waiting.
class QWClock final
{
public:
    QWClock() = delete;

    static QDateTime currentDateTime();
    // Replaces the system clock for the whole process; an empty function brings it back.
    static void setCurrentDateTimeProvider(std::function<QDateTime()> provider);
};
