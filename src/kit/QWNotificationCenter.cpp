#include "kit/QWNotificationCenter.h"

#include <QMutexLocker>

#include <algorithm>
#include <atomic>

struct QWNotificationCenter::Subscription
{
    quint64 id = 0;
    const QObject *context = nullptr;
    QString name;
    const void *object = nullptr;
    Handler handler;
    QMetaObject::Connection contextConnection;
    // Cleared on unsubscribe, so that a post already under way skips this observer.
    std::atomic<bool> active { true };
};

QWNotificationCenter::Observation::~Observation()
{
    cancel();
}

QWNotificationCenter::Observation::Observation(Observation &&other) noexcept
    : m_center(std::exchange(other.m_center, nullptr)), m_id(std::exchange(other.m_id, 0))
{ }

QWNotificationCenter::Observation &QWNotificationCenter::Observation::operator=(
    Observation &&other) noexcept
{
    if (this != &other) {
        cancel();
        m_center = std::exchange(other.m_center, nullptr);
        m_id = std::exchange(other.m_id, 0);
    }
    return *this;
}

bool QWNotificationCenter::Observation::isActive() const
{
    return m_center && m_center->isSubscribed(m_id);
}

void QWNotificationCenter::Observation::cancel()
{
    if (m_center)
        m_center->unsubscribe(m_id);
    m_center = nullptr;
    m_id = 0;
}

QWNotificationCenter::QWNotificationCenter() = default;

QWNotificationCenter::~QWNotificationCenter()
{
    QMutexLocker locker(&m_mutex);
    for (const auto &[id, subscription] : m_subscriptions)
        QObject::disconnect(subscription->contextConnection);
}

QWNotificationCenter &QWNotificationCenter::defaultCenter()
{
    static QWNotificationCenter center;
    return center;
}

void QWNotificationCenter::addObserverForNameObjectHandler(
    QObject *context, const QString &name, const void *object, Handler handler)
{
    if (!context || !handler)
        return;
    const quint64 id = subscribe(context, name, object, std::move(handler));
    // Direct, so the subscription ends inside the context's destructor, before any later post.
    QMetaObject::Connection connection = QObject::connect(
        context, &QObject::destroyed, this, [this, id] { unsubscribe(id); }, Qt::DirectConnection);
    QMutexLocker locker(&m_mutex);
    if (const auto found = m_subscriptions.find(id); found != m_subscriptions.end())
        found->second->contextConnection = connection;
}

QWNotificationCenter::Observation QWNotificationCenter::observeNameObjectHandler(
    const QString &name, const void *object, Handler handler)
{
    if (!handler)
        return {};
    return Observation(this, subscribe(nullptr, name, object, std::move(handler)));
}

quint64 QWNotificationCenter::subscribe(
    const QObject *context, const QString &name, const void *object, Handler handler)
{
    auto subscription = std::make_shared<Subscription>();
    subscription->context = context;
    subscription->name = name;
    subscription->object = object;
    subscription->handler = std::move(handler);
    QMutexLocker locker(&m_mutex);
    subscription->id = m_nextId++;
    m_subscriptions.emplace(subscription->id, subscription);
    return subscription->id;
}

void QWNotificationCenter::unsubscribe(quint64 id)
{
    std::shared_ptr<Subscription> removed;
    {
        QMutexLocker locker(&m_mutex);
        const auto found = m_subscriptions.find(id);
        if (found == m_subscriptions.end())
            return;
        removed = found->second;
        m_subscriptions.erase(found);
        removed->active = false;
    }
    QObject::disconnect(removed->contextConnection);
}

bool QWNotificationCenter::isSubscribed(quint64 id) const
{
    QMutexLocker locker(&m_mutex);
    return m_subscriptions.count(id) > 0;
}

void QWNotificationCenter::removeObserver(const QObject *context, const QString &name)
{
    if (!context)
        return;
    std::vector<quint64> ids;
    {
        QMutexLocker locker(&m_mutex);
        for (const auto &[id, subscription] : m_subscriptions) {
            if (subscription->context == context && (name.isEmpty() || subscription->name == name))
                ids.push_back(subscription->id);
        }
    }
    for (quint64 id : ids)
        unsubscribe(id);
}

void QWNotificationCenter::postNotificationNameObjectUserInfo(
    const QString &name, const void *object, const QVariantMap &userInfo)
{
    postNotification(QWNotification { name, object, userInfo });
}

void QWNotificationCenter::postNotification(const QWNotification &notification)
{
    // Handlers run without the lock: they may post, subscribe or unsubscribe in turn.
    std::vector<std::shared_ptr<Subscription>> receivers;
    {
        QMutexLocker locker(&m_mutex);
        for (const auto &[id, subscription] : m_subscriptions) {
            const bool nameMatches
                = subscription->name.isEmpty() || subscription->name == notification.name;
            const bool objectMatches
                = !subscription->object || subscription->object == notification.object;
            if (nameMatches && objectMatches)
                receivers.push_back(subscription);
        }
    }
    for (const std::shared_ptr<Subscription> &subscription : receivers) {
        if (subscription->active)
            subscription->handler(notification);
    }
}

int QWNotificationCenter::observerCount() const
{
    QMutexLocker locker(&m_mutex);
    return int(m_subscriptions.size());
}
