#pragma once

#include <QMutex>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <map>
#include <memory>
#include <vector>

// A notice that something happened: its name, who posted it (compared by address only),
// and what the poster adds.
struct QWNotification final
{
    QString name;
    const void *object = nullptr;
    QVariantMap userInfo;
};

// The process-wide notice board through which parts of the program that know nothing of
// each other learn of changes. Delivery is synchronous, on the posting thread, in the order
// the observers subscribed.
class QWNotificationCenter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWNotificationCenter)

public:
    using Handler = std::function<void(const QWNotification &notification)>;

    // Ends its subscription when destroyed; for observers that are not QObjects.
    class Observation final
    {
    public:
        Observation() = default;
        ~Observation();
        Observation(Observation &&other) noexcept;
        Observation &operator=(Observation &&other) noexcept;
        Observation(const Observation &) = delete;
        Observation &operator=(const Observation &) = delete;

        bool isActive() const;
        void cancel();

    private:
        friend class QWNotificationCenter;
        Observation(QWNotificationCenter *center, quint64 id) : m_center(center), m_id(id) { }
        QWNotificationCenter *m_center = nullptr;
        quint64 m_id = 0;
    };

    QWNotificationCenter();
    ~QWNotificationCenter() override;

    static QWNotificationCenter &defaultCenter();

    // Subscribes until the context object is destroyed or removeObserver() is called with
    // it. An empty name observes every notice; a null object accepts every poster.
    void addObserverForNameObjectHandler(
        QObject *context, const QString &name, const void *object, Handler handler);
    // Subscribes until the returned observation is destroyed or cancelled.
    [[nodiscard]] Observation observeNameObjectHandler(
        const QString &name, const void *object, Handler handler);
    // Ends the subscriptions of a context: all of them, or those for one name.
    void removeObserver(const QObject *context, const QString &name = {});

    void postNotificationNameObjectUserInfo(
        const QString &name, const void *object = nullptr, const QVariantMap &userInfo = {});
    void postNotification(const QWNotification &notification);

    int observerCount() const;

private:
    struct Subscription;
    quint64 subscribe(
        const QObject *context, const QString &name, const void *object, Handler handler);
    void unsubscribe(quint64 id);
    bool isSubscribed(quint64 id) const;

    mutable QMutex m_mutex;
    // By id, which is the order of subscription: every note subscribes, so a store of many
    // notes must find one quickly.
    std::map<quint64, std::shared_ptr<Subscription>> m_subscriptions;
    quint64 m_nextId = 1;
};
