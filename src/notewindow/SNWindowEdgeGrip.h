#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

// An invisible handle along one edge or at one corner of a borderless window: it shows the
// resize cursor and lets the window manager resize the window from there. Where the window
// system cannot do that, the grip works out the new frames itself and asks for them.
class SNWindowEdgeGrip final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNWindowEdgeGrip)

public:
    SNWindowEdgeGrip(Qt::Edges edges, QWidget *window);
    ~SNWindowEdgeGrip() override;

    Qt::Edges edges() const { return m_edges; }
    static Qt::CursorShape cursorShapeForEdges(Qt::Edges edges);
    // The window's new frame when the pointer moved by delta from where the drag began,
    // respecting the window's minimum and maximum size.
    static QRect resizedFrame(const QRect &startFrame, Qt::Edges edges, const QPoint &delta,
        const QSize &minimumSize, const QSize &maximumSize);

Q_SIGNALS:
    // Only where the window manager does not resize the window itself.
    void resizeRequested(const QRect &frame);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    const Qt::Edges m_edges;
    bool m_resizingByHand = false;
    QPoint m_pressPosition;
    QRect m_startFrame;
};
