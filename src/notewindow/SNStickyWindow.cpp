#include "notewindow/SNStickyWindow.h"

#include "kit/widgets/QWCompositingManager.h"
#include "notewindow/SNStickyWindowDelegate.h"
#include "notewindow/SNWindowEdgeGrip.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QShortcut>
#include <QStyleHints>
#include <QWindow>

SNStickyWindow::SNStickyWindow(QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
{
    // The note paints its own background; where it is translucent the desktop shows through,
    // which takes a compositor. Without one an alpha channel would show nothing and only
    // slow down the X server and the window manager.
    setAttribute(Qt::WA_TranslucentBackground, QWCompositingManager::isRunning());

    const Qt::Edges edges[] = { Qt::TopEdge, Qt::BottomEdge, Qt::LeftEdge, Qt::RightEdge,
        Qt::TopEdge | Qt::LeftEdge, Qt::TopEdge | Qt::RightEdge, Qt::BottomEdge | Qt::LeftEdge,
        Qt::BottomEdge | Qt::RightEdge };
    for (size_t i = 0; i < m_grips.size(); ++i) {
        m_grips[i] = new SNWindowEdgeGrip(edges[i], this);
        connect(
            m_grips[i], &SNWindowEdgeGrip::resizeRequested, this, &SNStickyWindow::resizeByUser);
    }

    auto *closeShortcut = new QShortcut(QKeySequence::Close, this);
    closeShortcut->setContext(Qt::WindowShortcut);
    connect(closeShortcut, &QShortcut::activated, this, &SNStickyWindow::performClose);
}

SNStickyWindow::~SNStickyWindow() = default;

bool SNStickyWindow::shouldClose()
{
    return m_delegate ? m_delegate->windowShouldClose(this) : windowShouldClose();
}

void SNStickyWindow::performClose()
{
    if (!shouldClose())
        return;
    // Already answered: closeEvent() must not ask a second time.
    m_closeApproved = true;
    close();
    m_closeApproved = false;
}

void SNStickyWindow::performMiniaturize()
{
    showMinimized();
}

void SNStickyWindow::performZoom()
{
    if (isMaximized())
        showNormal();
    else
        showMaximized();
}

void SNStickyWindow::closeEvent(QCloseEvent *event)
{
    if (!m_closeApproved && !shouldClose()) {
        event->ignore();
        return;
    }
    m_closeApproved = false;
    if (m_delegate)
        m_delegate->windowWillClose(this);
    event->accept();
}

void SNStickyWindow::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    if (m_delegate)
        m_delegate->windowDidMove(this);
}

void SNStickyWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutGrips();
    if (m_delegate)
        m_delegate->windowDidResize(this);
}

void SNStickyWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    layoutGrips();
}

void SNStickyWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && m_delegate)
        m_delegate->windowDidBecomeMain(this);
}

void SNStickyWindow::layoutGrips()
{
    const int w = width();
    const int h = height();
    const int b = resizeBorderWidth;
    const int c = std::min({ resizeCornerLength, w / 2, h / 2 });
    const QRect frames[] = {
        QRect(c, 0, w - 2 * c, b), // top
        QRect(c, h - b, w - 2 * c, b), // bottom
        QRect(0, c, b, h - 2 * c), // left
        QRect(w - b, c, b, h - 2 * c), // right
        QRect(0, 0, c, b), // top left
        QRect(w - c, 0, c, b), // top right
        QRect(0, h - b, c, b), // bottom left
        QRect(w - c, h - b, c, b), // bottom right
    };
    for (size_t i = 0; i < m_grips.size(); ++i) {
        m_grips[i]->setGeometry(frames[i]);
        // Above the content, which the interface file adds after the grips.
        m_grips[i]->raise();
    }
}

void SNStickyWindow::resizeByUser(const QRect &frame)
{
    QRect adjusted = frame;
    if (m_delegate) {
        const QSize size = m_delegate->windowWillResizeToSize(this, frame.size());
        // Keep the edge that was not dragged where it is.
        if (frame.top() != geometry().top())
            adjusted.setTop(frame.bottom() + 1 - size.height());
        else
            adjusted.setHeight(size.height());
        if (frame.left() != geometry().left())
            adjusted.setLeft(frame.right() + 1 - size.width());
        else
            adjusted.setWidth(size.width());
    }
    setGeometry(adjusted);
}

void SNStickyWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    m_movePending = true;
    m_movingByHand = false;
    m_pressPosition = event->globalPosition().toPoint();
    m_startFrame = geometry();
}

void SNStickyWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    const QPoint travelled = event->globalPosition().toPoint() - m_pressPosition;
    if (m_movePending
        && travelled.manhattanLength() >= QGuiApplication::styleHints()->startDragDistance()) {
        m_movePending = false;
        // The window manager moves the window from here on; where it cannot, we do.
        QWindow *handle = windowHandle();
        m_movingByHand = !handle || !handle->startSystemMove();
    }
    if (m_movingByHand)
        move(m_startFrame.topLeft() + travelled);
}

void SNStickyWindow::mouseReleaseEvent(QMouseEvent *event)
{
    m_movePending = false;
    m_movingByHand = false;
    QWidget::mouseReleaseEvent(event);
}
