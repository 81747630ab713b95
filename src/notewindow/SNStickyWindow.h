#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <array>

class SNStickyWindowDelegate;
class SNWindowEdgeGrip;

// The window of one note: borderless, yet it behaves like any document window. It becomes
// active and takes the keyboard, moves when its background or title bar is dragged, resizes from
// its edges and corners (a few pixels along each stay live, though no frame is drawn), and
// closes on Ctrl+W. Every close, including one the window manager asks for, first asks the
// delegate whether the window may close.
class SNStickyWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNStickyWindow)

public:
    // How far in from each edge a press resizes instead of reaching the content.
    static constexpr int resizeBorderWidth = 4;
    static constexpr int resizeCornerLength = 12;

    explicit SNStickyWindow(QWidget *parent = nullptr);
    ~SNStickyWindow() override;

    // Held weakly: the delegate owns the window and clears itself before it goes.
    SNStickyWindowDelegate *delegate() const { return m_delegate; }
    void setDelegate(SNStickyWindowDelegate *delegate) { m_delegate = delegate; }

    // The window's own answer when there is no delegate.
    bool windowShouldClose() const { return true; }
    // Closes the window if the delegate (else the window itself) agrees.
    void performClose();
    void performMiniaturize();
    void performZoom();

protected:
    void closeEvent(QCloseEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool shouldClose();
    void layoutGrips();
    void resizeByUser(const QRect &frame);

    SNStickyWindowDelegate *m_delegate = nullptr;
    bool m_closeApproved = false;
    std::array<SNWindowEdgeGrip *, 8> m_grips {};

    // A press on the background becomes a move once the pointer has travelled a little, so that
    // a click or a double click stays one.
    bool m_movePending = false;
    bool m_movingByHand = false;
    QPoint m_pressPosition;
    QRect m_startFrame;
};
