#include "themes/SNTimeOfDayTheme.h"

#include "kit/QWClock.h"
#include "kit/QWDateUtilities.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWTimer.h"

#include <QtGlobal>

SNTimeOfDayTheme::SNTimeOfDayTheme(ConstructionKey)
{
    setName(QStringLiteral("Time of Day (Updates Dynamically)"));
    m_creationDate = QWClock::currentDateTime();
    m_hour = -1;
    setHour(QWDateUtilities::qw_hour(m_creationDate));
}

SNTimeOfDayTheme::~SNTimeOfDayTheme()
{
    // A scheduled repeating timer keeps itself alive; it must not outlive its theme.
    if (m_timer)
        m_timer->invalidate();
}

std::shared_ptr<SNTimeOfDayTheme> SNTimeOfDayTheme::theme()
{
    auto theme = std::make_shared<SNTimeOfDayTheme>(ConstructionKey {});
    theme->startTimer(theme);
    return theme;
}

void SNTimeOfDayTheme::startTimer(const std::weak_ptr<SNTimeOfDayTheme> &weakTheme)
{
    // The block keeps the creation-time date on purpose: each firing re-applies the hour the
    // theme was made in, not the hour it is now.
    const QDateTime date = m_creationDate;
    m_timer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
        updateInterval, true, [weakTheme, date](QWTimer &) {
            const std::shared_ptr<SNTimeOfDayTheme> theme = weakTheme.lock();
            if (!theme)
                return;
            theme->setHour(QWDateUtilities::qw_hour(date));
            theme->update();
            QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
                didChangeNotificationName(), nullptr);
        });
}

SNTimeOfDayTheme::ColorDict SNTimeOfDayTheme::colorDict()
{
    return {
        { 0, { QWColor(0.0118, 0.1412, 0.349), QWColor(0.0118, 0.0745, 0.1333) } },
        { 1, { QWColor(0.0118, 0.1412, 0.349), QWColor(0.0118, 0.0745, 0.1333) } },
        { 2, { QWColor(0.0118, 0.2235, 0.4471), QWColor(0.0118, 0.0745, 0.1333) } },
        { 3, { QWColor(0.0118, 0.2627, 0.4471), QWColor(0.0118, 0.0941, 0.1686) } },
        { 4, { QWColor(0.0118, 0.3765, 0.5686), QWColor(0.0118, 0.1137, 0.2039) } },
        { 5, { QWColor(0.0118, 0.4039, 0.5725), QWColor(0.0118, 0.0941, 0.1686) } },
        { 6, { QWColor(0.0275, 0.4471, 0.6235), QWColor(0.0196, 0.1725, 0.2784) } },
        { 7, { QWColor(0.0706, 0.6314, 0.7529), QWColor(0.0275, 0.3137, 0.4314) } },
        { 8, { QWColor(0.4549, 0.8314, 0.8), QWColor(0.0745, 0.5255, 0.651) } },
        { 9, { QWColor(0.9373, 0.9333, 0.7373), QWColor(0.3804, 0.8157, 0.8118) } },
        { 10, { QWColor(0.9961, 0.8824, 0.3294), QWColor(0.6392, 0.8706, 0.7765) } },
        { 11, { QWColor(0.9922, 0.7647, 0.3216), QWColor(0.9098, 0.9294, 0.5725) } },
        { 12, { QWColor(1.0, 0.6745, 0.4353), QWColor(1.0, 0.8941, 0.4039) } },
        { 13, { QWColor(0.9922, 0.651, 0.3529), QWColor(1.0, 0.8941, 0.4039) } },
        { 14, { QWColor(0.9922, 0.6196, 0.3451), QWColor(1.0, 0.8941, 0.4039) } },
        { 15, { QWColor(0.9451, 0.5176, 0.2824), QWColor(1.0, 0.8275, 0.3922) } },
        { 16, { QWColor(0.9412, 0.4196, 0.4941), QWColor(0.9765, 0.6588, 0.3373) } },
        { 17, { QWColor(0.7922, 0.3529, 0.5725), QWColor(0.9569, 0.5373, 0.4196) } },
        { 18, { QWColor(0.3569, 0.1725, 0.5137), QWColor(0.7529, 0.3647, 0.7216) } },
        { 19, { QWColor(0.2157, 0.102, 0.4745), QWColor(0.4431, 0.2118, 0.5176) } },
        { 20, { QWColor(0.1569, 0.0863, 0.4196), QWColor(0.2706, 0.1294, 0.4863) } },
        { 21, { QWColor(0.098, 0.1569, 0.3804), QWColor(0.2157, 0.1255, 0.4549) } },
        { 22, { QWColor(0.0196, 0.0431, 0.2353), QWColor(0.1373, 0.1882, 0.4471) } },
        { 23, { QWColor(0.0196, 0.0431, 0.2353), QWColor(0.0118, 0.1412, 0.349) } },
    };
}

const SNTimeOfDayTheme::ColorDict &SNTimeOfDayTheme::sharedColorDict()
{
    static const ColorDict shared = colorDict();
    return shared;
}

void SNTimeOfDayTheme::setHour(int hour)
{
    if (hour == m_hour)
        return;
    qInfo("Hour is now: %ld", static_cast<long>(hour));
    m_hour = hour;
    update();
}

void SNTimeOfDayTheme::update()
{
    const auto pair = sharedColorDict().find(m_hour);
    if (pair == sharedColorDict().end())
        return;
    setStartColor(pair->second[0]);
    setEndColor(pair->second[1]);
    const bool dark = pair->second[0].qw_luminosity() < 0.6;
    setIsDark(dark);
    setDefaultFontColor(dark ? QWColor::white() : QWColor::black());
}
