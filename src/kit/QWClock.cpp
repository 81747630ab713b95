#include "kit/QWClock.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex providerMutex;
std::function<QDateTime()> &provider()
{
    static std::function<QDateTime()> installed;
    return installed;
}

} // namespace

QDateTime QWClock::currentDateTime()
{
    std::function<QDateTime()> current;
    {
        QMutexLocker locker(&providerMutex);
        current = provider();
    }
    return current ? current() : QDateTime::currentDateTime();
}

void QWClock::setCurrentDateTimeProvider(std::function<QDateTime()> newProvider)
{
    QMutexLocker locker(&providerMutex);
    provider() = std::move(newProvider);
}
