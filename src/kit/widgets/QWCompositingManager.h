#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

struct xcb_connection_t;

// Whether a compositing manager draws the screen, so that windows with an alpha channel show
// what lies behind them. Without one, the X server shows such a window as if it were opaque,
// yet each one costs the server and the window manager more than an opaque window does (with
// 500 notes, more than half a second at start-up). Windows that only want to be see-through ask
// for an alpha channel only while a compositor runs.
//
// On X11 the compositor owns the selection _NET_WM_CM_S<screen>; the answer follows it as
// compositors start and stop (XFixes notices). Elsewhere (Wayland, offscreen) the display
// server composites, and the answer is always yes.
class QWCompositingManager final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWCompositingManager)

public:
    ~QWCompositingManager() override;

    static bool isRunning();

private:
    explicit QWCompositingManager(xcb_connection_t *connection);
    static QWCompositingManager *sharedManager();
    bool askServer() const;
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

    xcb_connection_t *m_connection; // Qt's
    quint32 m_selection = 0; // the atom _NET_WM_CM_S<screen>
    quint8 m_selectionNotifyEvent = 0; // 0: no XFixes, the server is asked each time
    bool m_running = false;
};
