#pragma once

#include <QList>
#include <QRect>

// Keeps a stored window frame where the user can reach it. A monitor unplugged or a resolution
// changed since the frame was stored can leave it on no screen at all; such a frame is moved
// onto the nearest screen instead of opening the note where nobody can see it.
class SNWindowPlacement final
{
public:
    struct Screen
    {
        QRect geometry;
        QRect availableGeometry; // without panels and docks
    };

    // How much of a frame's top strip, where the title bar sits, a screen must show for the
    // window to count as reachable: enough to grab and drag it back.
    static constexpr int grabbableWidth = 40;
    static constexpr int grabbableHeight = 10;
    static constexpr int titleStripHeight = 30;

    SNWindowPlacement() = delete;

    static bool isFrameReachable(const QRect &frame, const QList<Screen> &screens);
    // The frame itself when reachable (or when there are no screens); otherwise the frame moved
    // into the available area of the screen nearest to it, and shrunk when larger than that.
    static QRect frameOnScreens(const QRect &frame, const QList<Screen> &screens);
    // The same over the screens connected now.
    static QRect frameOnConnectedScreens(const QRect &frame);
    static QList<Screen> connectedScreens();
};
