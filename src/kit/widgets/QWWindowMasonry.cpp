#include "kit/widgets/QWWindowMasonry.h"

#include "kit/widgets/QWWindowController.h"

#include <QGuiApplication>
#include <QPropertyAnimation>
#include <QScreen>
#include <QWidget>

#include <cmath>

namespace {

constexpr int layoutDurationMs = 200;
constexpr double margin = 10;

} // namespace

QWWindowMasonry::QWWindowMasonry(const QList<QWWindowController *> &controllers, QObject *parent)
    : QObject(parent)
{
    m_controllers.reserve(controllers.size());
    for (QWWindowController *controller : controllers)
        m_controllers.append(controller);
    m_originalWindowRects.reserve(controllers.size());
    updateNodeDimensions();
}

QWWindowMasonry::~QWWindowMasonry() = default;

void QWWindowMasonry::setScreenGeometry(const QRect &geometry, const QRect &availableGeometry)
{
    m_screenGeometry = geometry;
    m_availableGeometry = availableGeometry;
}

QWidget *QWWindowMasonry::windowAt(qsizetype index) const
{
    QWWindowController *controller = m_controllers.at(index);
    return controller ? controller->window() : nullptr;
}

void QWWindowMasonry::updateNodeDimensions()
{
    for (qsizetype i = 0; i < m_controllers.size(); ++i) {
        const QWidget *window = windowAt(i);
        m_originalWindowRects.append(window ? window->geometry() : QRect());
    }
}

// The grid is reckoned as on a desktop whose origin is the primary screen's bottom-left corner,
// y growing upwards, and spans from that origin to the top-right corner of the screen's free
// area. So, as the user sees it: row 0 is at the top, 20 below the free area's top edge (under
// any top panel); the right column ends 20 before the free area's right edge; the left column
// starts 10 from the screen's left edge and the bottom row ends 10 above the screen's bottom
// edge, reaching under a panel at the left or bottom. Each frame is then flipped into Qt's
// top-left coordinates, its edges rounded so that neighbours keep their 10-pixel gaps.
void QWWindowMasonry::layout()
{
    QRect screen;
    QRect available;
    if (m_screenGeometry && m_availableGeometry) {
        screen = *m_screenGeometry;
        available = *m_availableGeometry;
    } else if (const QScreen *primary = QGuiApplication::primaryScreen()) {
        screen = primary->geometry();
        available = primary->availableGeometry();
    }
    const double originX = screen.x();
    const double originY = screen.y() + screen.height(); // in Qt's coordinates
    const double maxX = available.x() + available.width() - originX;
    const double maxY = originY - available.y();

    const qsizetype count = m_controllers.size();
    const auto rows = static_cast<qsizetype>(std::sqrt(static_cast<double>(count)));
    qInfo("Count: %ld", static_cast<long>(count));

    if (rows >= 1) {
        const auto columns = static_cast<qsizetype>(
            std::ceil(static_cast<double>(count) / static_cast<double>(rows)));
        const double cellWidth = (maxX - 2 * margin) / static_cast<double>(columns);
        const double cellHeight = (maxY - 2 * margin) / static_cast<double>(rows);
        const double width = cellWidth - margin;
        const double height = cellHeight - margin;
        for (qsizetype i = 0; i < count; ++i) {
            const auto row = static_cast<double>(i / columns);
            const auto column = static_cast<double>(i % columns);
            const double x = column * cellWidth + margin;
            const double y = (maxY - 2 * margin) - row * cellHeight - cellHeight + margin;

            const double left = originX + x;
            const double top = originY - (y + height);
            const QRect frame(QPoint(qRound(left), qRound(top)),
                QPoint(qRound(left + width) - 1, qRound(top + height) - 1));

            QWidget *window = windowAt(i);
            m_originalWindowRects.append(window ? window->geometry() : QRect());
            if (window)
                animateWindow(window, frame, layoutDurationMs);
        }
    }
    qInfo("Done");
}

void QWWindowMasonry::restore()
{
    for (qsizetype i = 0; i < m_controllers.size() && i < m_originalWindowRects.size(); ++i) {
        if (QWidget *window = windowAt(i))
            animateWindow(window, m_originalWindowRects.at(i), std::nullopt);
    }
}

void QWWindowMasonry::animateWindow(
    QWidget *window, const QRect &frame, std::optional<int> durationMs)
{
    // Owned by the window, so that it runs on after the masonry is gone.
    auto *animation = new QPropertyAnimation(window, "geometry", window);
    // Without a duration of its own, Qt's default applies.
    if (durationMs)
        animation->setDuration(*durationMs);
    animation->setEndValue(frame);
    // Qt stops an animation still running on the window's geometry, so the new frame wins.
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}
