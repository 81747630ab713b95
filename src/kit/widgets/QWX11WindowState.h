#pragma once

#include <QObject>

class QWidget;

// The one place that puts a top-level window into the desktop-level states the program uses:
// its level (normal, kept above every other window, or kept below them and shown on every
// workspace) and its presence in the taskbar and window switcher.
//
// The levels are Qt window flags, which every platform honours as far as it can. Workspaces
// and the taskbar have no Qt API: on X11 they are EWMH hints, set on the window's properties
// before it is mapped and asked of the window manager by client messages while it is mapped.
// Window managers drop those hints when a window is unmapped, so they are written again each
// time the window is shown. Elsewhere (offscreen, Wayland) only the flags apply.
//
// Changing the level of a visible window keeps it visible, where it is. Qt gives a window a
// new X11 window when it is shown again after such a change: its X11 id is the one of
// windowHandle()->winId(), not the one QWidget::winId() kept.
class QWX11WindowState final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWX11WindowState)

public:
    enum class Level {
        Normal,
        KeepAbove, // Qt::WindowStaysOnTopHint
        KeepBelow, // Qt::WindowStaysOnBottomHint, and on all workspaces
    };

    ~QWX11WindowState() override;

    static void setLevel(QWidget *window, Level level);
    static Level level(const QWidget *window);

    // Hides the window from the taskbar and the window switcher, or shows it there again.
    static void setSkipsTaskbar(QWidget *window, bool skips);
    static bool skipsTaskbar(const QWidget *window);

    // Asks the window manager to activate and raise the visible window even when another
    // program is active (the request of a pager, which window managers do not refuse as focus
    // stealing). False when it could not be asked: not on X11, or no window manager that takes
    // such requests; QWidget::activateWindow() is what is left then.
    static bool requestActivation(QWidget *window);

    // Whether the program talks to an X server (xcb), where the hints above have an effect.
    static bool isX11();
    // Sends the requests Qt has queued for the X server now rather than when the event loop
    // next runs: a window shown in a long loop reaches the window manager at once.
    static void sendPendingRequests();

private:
    explicit QWX11WindowState(QWidget *window);
    static QWX11WindowState *stateOf(const QWidget *window);
    static QWX11WindowState *ensureStateOf(QWidget *window);

    bool eventFilter(QObject *watched, QEvent *event) override;
    void applyFlags();
    void writeHintsBeforeMapping();
    void checkHintsAfterShowing();
    // Asks the window manager for the workspaces or taskbar hint of a mapped window.
    void requestHintsWhileMapped(bool workspaces, bool taskbar);

    QWidget *m_window;
    Level m_level = Level::Normal;
    bool m_skipsTaskbar = false;
    quint32 m_hintedWindow = 0; // the X11 window last given the hints before mapping
};
