#include "kit/QWNotificationCenter.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNTimeOfDayTheme.h"

#include <QTest>

namespace {

QDateTime today(int hour, int minute)
{
    return QDateTime(QDate(2026, 3, 14), QTime(hour, minute), Qt::LocalTime);
}

// Start and end colour of each hour, as red, green, blue.
const double hourTable[24][6] = {
    { 0.0118, 0.1412, 0.349, 0.0118, 0.0745, 0.1333 },
    { 0.0118, 0.1412, 0.349, 0.0118, 0.0745, 0.1333 },
    { 0.0118, 0.2235, 0.4471, 0.0118, 0.0745, 0.1333 },
    { 0.0118, 0.2627, 0.4471, 0.0118, 0.0941, 0.1686 },
    { 0.0118, 0.3765, 0.5686, 0.0118, 0.1137, 0.2039 },
    { 0.0118, 0.4039, 0.5725, 0.0118, 0.0941, 0.1686 },
    { 0.0275, 0.4471, 0.6235, 0.0196, 0.1725, 0.2784 },
    { 0.0706, 0.6314, 0.7529, 0.0275, 0.3137, 0.4314 },
    { 0.4549, 0.8314, 0.8, 0.0745, 0.5255, 0.651 },
    { 0.9373, 0.9333, 0.7373, 0.3804, 0.8157, 0.8118 },
    { 0.9961, 0.8824, 0.3294, 0.6392, 0.8706, 0.7765 },
    { 0.9922, 0.7647, 0.3216, 0.9098, 0.9294, 0.5725 },
    { 1.0, 0.6745, 0.4353, 1.0, 0.8941, 0.4039 },
    { 0.9922, 0.651, 0.3529, 1.0, 0.8941, 0.4039 },
    { 0.9922, 0.6196, 0.3451, 1.0, 0.8941, 0.4039 },
    { 0.9451, 0.5176, 0.2824, 1.0, 0.8275, 0.3922 },
    { 0.9412, 0.4196, 0.4941, 0.9765, 0.6588, 0.3373 },
    { 0.7922, 0.3529, 0.5725, 0.9569, 0.5373, 0.4196 },
    { 0.3569, 0.1725, 0.5137, 0.7529, 0.3647, 0.7216 },
    { 0.2157, 0.102, 0.4745, 0.4431, 0.2118, 0.5176 },
    { 0.1569, 0.0863, 0.4196, 0.2706, 0.1294, 0.4863 },
    { 0.098, 0.1569, 0.3804, 0.2157, 0.1255, 0.4549 },
    { 0.0196, 0.0431, 0.2353, 0.1373, 0.1882, 0.4471 },
    { 0.0196, 0.0431, 0.2353, 0.0118, 0.1412, 0.349 },
};

} // namespace

// The theme whose gradient follows the hour at which it was made.
class TestSNTimeOfDayTheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachHourHasItsColours_data();
    void eachHourHasItsColours();
    void settingTheSameHourLogsOnce();
    void firingReappliesTheCreationHourAndAnnounces();
};

void TestSNTimeOfDayTheme::eachHourHasItsColours_data()
{
    QTest::addColumn<int>("hour");
    for (int hour = 0; hour < 24; ++hour)
        QTest::addRow("%02d:30", hour) << hour;
}

void TestSNTimeOfDayTheme::eachHourHasItsColours()
{
    QFETCH(int, hour);
    QWManualScheduler scheduler(today(hour, 30));
    const std::shared_ptr<SNTimeOfDayTheme> theme = SNTimeOfDayTheme::theme();
    const double *colours = hourTable[hour];
    QCOMPARE(theme->hour(), hour);
    QCOMPARE(theme->startColor(), QWColor(colours[0], colours[1], colours[2]));
    QCOMPARE(theme->endColor(), QWColor(colours[3], colours[4], colours[5]));
    // Night and evening are dark; 15 is light and 16 dark, both by a narrow margin.
    const bool dark = hour < 8 || hour >= 16;
    QCOMPARE(theme->isDark(), dark);
    QCOMPARE(theme->defaultFontColor(), dark ? QWColor::white() : QWColor::black());
    QCOMPARE(theme->name(), QStringLiteral("Time of Day (Updates Dynamically)"));
    QCOMPARE(theme->saveName(), QStringLiteral("SNTimeOfDayTheme"));
}

void TestSNTimeOfDayTheme::settingTheSameHourLogsOnce()
{
    QWTestEnvironment environment;
    QWManualScheduler scheduler(today(12, 0));
    const std::shared_ptr<SNTimeOfDayTheme> theme = SNTimeOfDayTheme::theme();
    theme->setHour(12);
    theme->setHour(16);
    theme->setHour(16);
    QCOMPARE(environment.messages().filter(QStringLiteral("Hour is now")),
        (QStringList { QStringLiteral("Hour is now: 12"), QStringLiteral("Hour is now: 16") }));
    QVERIFY(theme->isDark());
}

void TestSNTimeOfDayTheme::firingReappliesTheCreationHourAndAnnounces()
{
    QWManualScheduler scheduler(today(13, 59));
    int announced = 0;
    const QWNotificationCenter::Observation observation
        = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            QStringLiteral("SNThemeDidChangeNotification"), nullptr,
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
    scheduler.advanceBy(1); // 14:04
    QCOMPARE(announced, 1);
    QCOMPARE(theme->hour(), 13);
    QCOMPARE(theme->startColor(), hour13);
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

QTEST_MAIN(TestSNTimeOfDayTheme)
#include "TestSNTimeOfDayTheme.moc"
