#include "kit/QWNotificationCenter.h"

#include <QTest>

class TestQWNotificationCenter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deliversByNameAndSender()
    {
        QWNotificationCenter center;
        QObject context;
        int senderA = 0;
        int senderB = 0;
        QList<QVariantMap> renames;
        center.addObserverForNameObjectHandler(&context, QStringLiteral("Renamed"), nullptr,
            [&](const QWNotification &notification) { renames.append(notification.userInfo); });
        int fromA = 0;
        center.addObserverForNameObjectHandler(&context, QStringLiteral("Changed"), &senderA,
            [&](const QWNotification &) { ++fromA; });
        int everything = 0;
        const QWNotificationCenter::Observation all = center.observeNameObjectHandler(
            QString(), nullptr, [&](const QWNotification &) { ++everything; });

        const QVariantMap info { { QStringLiteral("newName"), QStringLiteral("b") } };
        center.postNotificationNameObjectUserInfo(QStringLiteral("Renamed"), nullptr, info);
        center.postNotificationNameObjectUserInfo(QStringLiteral("Other"));
        center.postNotificationNameObjectUserInfo(QStringLiteral("Changed"), &senderB);
        center.postNotificationNameObjectUserInfo(QStringLiteral("Changed"), &senderA);
        QCOMPARE(renames, QList<QVariantMap> { info });
        QCOMPARE(fromA, 1);
        QCOMPARE(everything, 4);

        // Removing by name leaves the context's other subscriptions.
        center.removeObserver(&context, QStringLiteral("Changed"));
        center.postNotificationNameObjectUserInfo(QStringLiteral("Changed"), &senderA);
        center.postNotificationNameObjectUserInfo(QStringLiteral("Renamed"));
        QCOMPARE(fromA, 1);
        QCOMPARE(renames.size(), 2);
    }

    void subscriptionsEndWithTheirContext()
    {
        QWNotificationCenter center;
        int calls = 0;
        {
            QObject context;
            center.addObserverForNameObjectHandler(&context, QStringLiteral("Ping"), nullptr,
                [&](const QWNotification &) { ++calls; });
            center.postNotificationNameObjectUserInfo(QStringLiteral("Ping"));
        }
        center.postNotificationNameObjectUserInfo(QStringLiteral("Ping"));
        QCOMPARE(calls, 1);
        {
            QWNotificationCenter::Observation observation = center.observeNameObjectHandler(
                QStringLiteral("Ping"), nullptr, [&](const QWNotification &) { ++calls; });
            const QWNotificationCenter::Observation moved = std::move(observation);
            QVERIFY(!observation.isActive() && moved.isActive());
            center.postNotificationNameObjectUserInfo(QStringLiteral("Ping"));
        }
        center.postNotificationNameObjectUserInfo(QStringLiteral("Ping"));
        QCOMPARE(calls, 2);
        QCOMPARE(center.observerCount(), 0);
    }

    void handlersMayUnsubscribeWhileAPostIsUnderWay()
    {
        QWNotificationCenter center;
        auto second = std::make_unique<QObject>();
        int secondCalls = 0;
        int firstCalls = 0;
        QObject first;
        // The first observer destroys the second one's context: the second must not be called.
        center.addObserverForNameObjectHandler(
            &first, QStringLiteral("Close"), nullptr, [&](const QWNotification &) {
                ++firstCalls;
                second.reset();
                center.postNotificationNameObjectUserInfo(QStringLiteral("Nested"));
            });
        center.addObserverForNameObjectHandler(second.get(), QStringLiteral("Close"), nullptr,
            [&](const QWNotification &) { ++secondCalls; });
        center.postNotificationNameObjectUserInfo(QStringLiteral("Close"));
        QCOMPARE(firstCalls, 1);
        QCOMPARE(secondCalls, 0);
        QCOMPARE(center.observerCount(), 1);
    }
};

QTEST_APPLESS_MAIN(TestQWNotificationCenter)
#include "TestQWNotificationCenter.moc"
