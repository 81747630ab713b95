#pragma once

#include "themes/SNTheme.h"

#include <QDateTime>

#include <array>
#include <map>

class QWTimer;

// "Time of Day (Updates Dynamically)": a gradient taken from a table of 24 colour pairs, one
// per hour, with white text on the dark ones. An instance shows the hour at which it was
// created: its 300-second timer re-applies that same hour and announces
// didChangeNotificationName(), and a new hour takes effect when a note next resolves its theme
// (which makes a new instance), for instance at the next launch.
class SNTimeOfDayTheme final : public SNTheme
{
    class ConstructionKey
    {
        friend class SNTimeOfDayTheme;
        ConstructionKey() = default;
    };

public:
    using ColorPair = std::array<QWColor, 2>; // start (top), end (bottom)
    using ColorDict = std::map<int, ColorPair>;

    static QString didChangeNotificationName()
    {
        return QStringLiteral("SNThemeDidChangeNotification");
    }
    static constexpr double updateInterval = 300.0;

    // Only theme() makes instances: the timer holds the theme weakly, so it needs a shared owner.
    explicit SNTimeOfDayTheme(ConstructionKey key);
    ~SNTimeOfDayTheme() override;

    static std::shared_ptr<SNTimeOfDayTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNTimeOfDayTheme"); }
    QString className() const override { return staticClassName(); }

    static ColorDict colorDict();
    static const ColorDict &sharedColorDict();

    // 0 to 23; -1 until the constructor sets the hour of the creation time.
    int hour() const { return m_hour; }
    // A new hour is logged, stored and applied; the same hour again does nothing.
    void setHour(int hour);
    // Applies the colours of hour(); dark (with white text) when the top colour's luminosity
    // is below 0.6.
    void update();

    const std::shared_ptr<QWTimer> &timer() const { return m_timer; }
    const QDateTime &creationDate() const { return m_creationDate; }

private:
    void startTimer(const std::weak_ptr<SNTimeOfDayTheme> &weakTheme);

    int m_hour = -1;
    QDateTime m_creationDate;
    std::shared_ptr<QWTimer> m_timer;
};
