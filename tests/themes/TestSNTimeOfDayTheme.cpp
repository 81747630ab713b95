#include "kit/QWNotificationCenter.h"
#include "support/QWManualScheduler.h"
#include "themes/SNTimeOfDayTheme.h"

#include <QTest>

namespace {

QDateTime today(int hour, int minute)
{
    return QDateTime(QDate(2026, 3, 14), QTime(hour, minute), Qt::LocalTime);
}

} // namespace

// The theme whose gradient follows the hour at which it was made.
class TestSNTimeOfDayTheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachHourHasItsColours()
    {
        for (int hour = 0; hour < 24; ++hour) {
            QWManualScheduler scheduler(today(hour, 30));
            const std::shared_ptr<SNTimeOfDayTheme> theme = SNTimeOfDayTheme::theme();
            QCOMPARE(theme->hour(), hour);
            // Night and evening are dark; 15 is light and 16 dark, both by a narrow margin.
            const bool dark = hour < 8 || hour >= 16;
            QCOMPARE(theme->isDark(), dark);
            QCOMPARE(theme->defaultFontColor(), dark ? QWColor::white() : QWColor::black());
        }
    }

    void firingReappliesTheCreationHourAndAnnounces()
    {
        QWManualScheduler scheduler(today(13, 59));
        int announced = 0;
        const QWNotificationCenter::Observation observation
            = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
                SNTimeOfDayTheme::didChangeNotificationName(), nullptr,
                [&](const QWNotification &notification) {
                    QCOMPARE(notification.object, nullptr);
                    ++announced;
                });
        std::shared_ptr<SNTimeOfDayTheme> theme = SNTimeOfDayTheme::theme();
        const QWColor hour13 = theme->startColor();
        scheduler.advanceBy(299);
        QCOMPARE(announced, 0);
        // Each firing goes back to the hour the theme was made in, whatever happened since.
        theme->setHour(20);
        QVERIFY(theme->isDark());
        scheduler.advanceBy(1); // 14:04
        QCOMPARE(announced, 1);
        QCOMPARE(theme->hour(), 13);
        QCOMPARE(theme->startColor(), hour13);
        QVERIFY(!theme->isDark());
        scheduler.advanceBy(600);
        QCOMPARE(announced, 3);
        // A theme made after the hour turned shows the new hour.
        QCOMPARE(SNTimeOfDayTheme::theme()->hour(), 14);

        // The timer does not keep its theme alive, and the theme takes its timer along.
        const std::weak_ptr<SNTimeOfDayTheme> weak = theme;
        theme.reset();
        QVERIFY(weak.expired());
        QCOMPARE(scheduler.scheduledCount(), 0);
        scheduler.advanceBy(3600);
        QCOMPARE(announced, 3);
    }
};

QTEST_APPLESS_MAIN(TestSNTimeOfDayTheme)
#include "TestSNTimeOfDayTheme.moc"
