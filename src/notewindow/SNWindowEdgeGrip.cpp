#include "notewindow/SNWindowEdgeGrip.h"

#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

SNWindowEdgeGrip::SNWindowEdgeGrip(Qt::Edges edges, QWidget *window)
    : QWidget(window), m_edges(edges)
{
    setCursor(cursorShapeForEdges(edges));
}

SNWindowEdgeGrip::~SNWindowEdgeGrip() = default;

Qt::CursorShape SNWindowEdgeGrip::cursorShapeForEdges(Qt::Edges edges)
{
    const bool horizontal = edges & (Qt::LeftEdge | Qt::RightEdge);
    const bool vertical = edges & (Qt::TopEdge | Qt::BottomEdge);
    if (horizontal && vertical) {
        const bool falling
            = edges == (Qt::TopEdge | Qt::LeftEdge) || edges == (Qt::BottomEdge | Qt::RightEdge);
        return falling ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
    }
    return horizontal ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

QRect SNWindowEdgeGrip::resizedFrame(const QRect &startFrame, Qt::Edges edges, const QPoint &delta,
    const QSize &minimumSize, const QSize &maximumSize)
{
    QRect frame = startFrame;
    const auto clampWidth = [&](int width) {
        return std::clamp(
            width, minimumSize.width(), std::max(minimumSize.width(), maximumSize.width()));
    };
    const auto clampHeight = [&](int height) {
        return std::clamp(
            height, minimumSize.height(), std::max(minimumSize.height(), maximumSize.height()));
    };
    if (edges & Qt::LeftEdge) {
        const int width = clampWidth(startFrame.width() - delta.x());
        frame.setLeft(startFrame.right() + 1 - width);
    } else if (edges & Qt::RightEdge) {
        frame.setWidth(clampWidth(startFrame.width() + delta.x()));
    }
    if (edges & Qt::TopEdge) {
        const int height = clampHeight(startFrame.height() - delta.y());
        frame.setTop(startFrame.bottom() + 1 - height);
    } else if (edges & Qt::BottomEdge) {
        frame.setHeight(clampHeight(startFrame.height() + delta.y()));
    }
    return frame;
}

void SNWindowEdgeGrip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    QWindow *handle = window()->windowHandle();
    m_resizingByHand = !handle || !handle->startSystemResize(m_edges);
    m_pressPosition = event->globalPosition().toPoint();
    m_startFrame = window()->geometry();
}

void SNWindowEdgeGrip::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_resizingByHand || !(event->buttons() & Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    const QWidget *target = window();
    Q_EMIT resizeRequested(
        resizedFrame(m_startFrame, m_edges, event->globalPosition().toPoint() - m_pressPosition,
            target->minimumSize(), target->maximumSize()));
}

void SNWindowEdgeGrip::mouseReleaseEvent(QMouseEvent *event)
{
    m_resizingByHand = false;
    QWidget::mouseReleaseEvent(event);
}
