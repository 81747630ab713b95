#include "notewindow/SNWindowPlacement.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <limits>

namespace {

// Squared distance from a point to the nearest point of a rectangle; 0 inside it.
qint64 squaredDistance(const QPoint &point, const QRect &rect)
{
    const qint64 dx = std::max(
        { qint64(rect.left()) - point.x(), qint64(0), qint64(point.x()) - rect.right() });
    const qint64 dy = std::max(
        { qint64(rect.top()) - point.y(), qint64(0), qint64(point.y()) - rect.bottom() });
    return dx * dx + dy * dy;
}

} // namespace

bool SNWindowPlacement::isFrameReachable(const QRect &frame, const QList<Screen> &screens)
{
    const QRect titleStrip(
        frame.x(), frame.y(), frame.width(), std::min(frame.height(), titleStripHeight));
    const int neededWidth = std::min(grabbableWidth, frame.width());
    const int neededHeight = std::min(grabbableHeight, titleStrip.height());
    return std::any_of(screens.cbegin(), screens.cend(), [&](const Screen &screen) {
        const QRect shown = titleStrip.intersected(screen.geometry);
        return shown.width() >= neededWidth && shown.height() >= neededHeight;
    });
}

QRect SNWindowPlacement::frameOnScreens(const QRect &frame, const QList<Screen> &screens)
{
    if (screens.isEmpty() || isFrameReachable(frame, screens))
        return frame;

    const Screen *nearest = nullptr;
    qint64 nearestDistance = std::numeric_limits<qint64>::max();
    for (const Screen &screen : screens) {
        const qint64 distance = squaredDistance(frame.center(), screen.geometry);
        if (distance < nearestDistance) {
            nearest = &screen;
            nearestDistance = distance;
        }
    }
    const QRect area
        = nearest->availableGeometry.isEmpty() ? nearest->geometry : nearest->availableGeometry;
    QRect placed(frame.topLeft(),
        QSize(std::min(frame.width(), area.width()), std::min(frame.height(), area.height())));
    placed.moveLeft(std::clamp(placed.left(), area.left(), area.right() - placed.width() + 1));
    placed.moveTop(std::clamp(placed.top(), area.top(), area.bottom() - placed.height() + 1));
    return placed;
}

QRect SNWindowPlacement::frameOnConnectedScreens(const QRect &frame)
{
    return frameOnScreens(frame, connectedScreens());
}

QList<SNWindowPlacement::Screen> SNWindowPlacement::connectedScreens()
{
    QList<Screen> screens;
    const QList<QScreen *> connected = QGuiApplication::screens();
    for (const QScreen *screen : connected)
        screens.append({ screen->geometry(), screen->availableGeometry() });
    return screens;
}
