#include "kit/QWNotificationCenter.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestQWNotificationCenter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // In the order of subscription, by name (none: every name) and sender (none: any).
    void deliversByNameAndSender()
    {
        QWNotificationCenter center;
        QObject context;
        int a = 0;
        int b = 0;
        QStringList seen;
        const auto record = [&seen](const QString &who) {
            return [&seen, who](const QWNotification &notification) {
                seen.append(
                    who + notification.name + notification.userInfo.value(u"to"_s).toString());
            };
        };
        center.addObserverForNameObjectHandler(&context, u"Renamed"_s, nullptr, record(u"any "_s));
        center.addObserverForNameObjectHandler(&context, u"Changed"_s, &a, record(u"a "_s));
        const auto all = center.observeNameObjectHandler({}, nullptr, record(u"all "_s));
        center.postNotificationNameObjectUserInfo(u"Renamed"_s, nullptr, { { u"to"_s, u" b"_s } });
        center.postNotificationNameObjectUserInfo(u"Changed"_s, &b);
        center.postNotificationNameObjectUserInfo(u"Changed"_s, &a);
        // Removing by name leaves the context's other subscriptions.
        center.removeObserver(&context, u"Changed"_s);
        center.postNotificationNameObjectUserInfo(u"Changed"_s, &a);
        center.postNotificationNameObjectUserInfo(u"Renamed"_s);
        QCOMPARE(seen,
            (QStringList { u"any Renamed b"_s, u"all Renamed b"_s, u"all Changed"_s, u"a Changed"_s,
                u"all Changed"_s, u"all Changed"_s, u"any Renamed"_s, u"all Renamed"_s }));
    }

    void subscriptionsEndWithTheirContext()
    {
        QWNotificationCenter center;
        int calls = 0;
        const auto count = [&](const QWNotification &) { ++calls; };
        {
            QObject context;
            center.addObserverForNameObjectHandler(&context, u"Ping"_s, nullptr, count);
            center.postNotificationNameObjectUserInfo(u"Ping"_s);
        }
        center.postNotificationNameObjectUserInfo(u"Ping"_s);
        QCOMPARE(calls, 1);
        {
            auto observation = center.observeNameObjectHandler(u"Ping"_s, nullptr, count);
            const QWNotificationCenter::Observation moved = std::move(observation);
            center.postNotificationNameObjectUserInfo(u"Ping"_s);
        }
        center.postNotificationNameObjectUserInfo(u"Ping"_s);
        QCOMPARE(calls, 2);
        QCOMPARE(center.observerCount(), 0);
    }

    // The first observer destroys the second one's context: the second must not be called.
    void handlersMayUnsubscribeWhileAPostIsUnderWay()
    {
        QWNotificationCenter center;
        auto second = std::make_unique<QObject>();
        int secondCalls = 0;
        QObject first;
        center.addObserverForNameObjectHandler(&first, u"Close"_s, nullptr, [&](auto &) {
            second.reset();
            center.postNotificationNameObjectUserInfo(u"Nested"_s);
        });
        center.addObserverForNameObjectHandler(
            second.get(), u"Close"_s, nullptr, [&](auto &) { ++secondCalls; });
        center.postNotificationNameObjectUserInfo(u"Close"_s);
        QVERIFY(!second);
        QCOMPARE(secondCalls, 0);
        QCOMPARE(center.observerCount(), 1);
    }
};

QTEST_APPLESS_MAIN(TestQWNotificationCenter)
#include "TestQWNotificationCenter.moc"
