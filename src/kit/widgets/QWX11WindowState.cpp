#include "kit/widgets/QWX11WindowState.h"

#include "kit/widgets/QWX11Connection.h"

#include <QByteArray>
#include <QEvent>
#include <QGuiApplication>
#include <QHash>
#include <QList>
#include <QWidget>
#include <QWindow>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

using QWX11Connection::takeReply;

namespace {

// EWMH: a window on every workspace.
constexpr quint32 allDesktops = 0xFFFFFFFF;
// EWMH source indications of client messages.
constexpr quint32 fromApplication = 1;
constexpr quint32 fromPager = 2;
// EWMH _NET_WM_STATE actions.
constexpr quint32 stateRemove = 0;
constexpr quint32 stateAdd = 1;

// Atoms live as long as the X server; the program has one connection to it.
xcb_atom_t atom(xcb_connection_t *connection, const char *name)
{
    static QHash<QByteArray, xcb_atom_t> known;
    const QByteArray key(name);
    const auto found = known.constFind(key);
    if (found != known.cend())
        return *found;
    const auto reply = takeReply(xcb_intern_atom_reply(connection,
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(key.size()), key.constData()),
        nullptr));
    const xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    if (value != XCB_ATOM_NONE)
        known.insert(key, value);
    return value;
}

// Asked once: the program's windows share one screen, and each question is a round trip to
// the X server that every note window would otherwise wait for as it opens.
xcb_window_t rootOf(xcb_connection_t *connection, xcb_window_t window)
{
    static xcb_window_t root = XCB_WINDOW_NONE;
    if (root != XCB_WINDOW_NONE)
        return root;
    const auto reply
        = takeReply(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    if (reply)
        root = reply->root;
    return root;
}

QList<quint32> readProperty(
    xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property, xcb_atom_t type)
{
    QList<quint32> values;
    const auto reply = takeReply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, type, 0, 1024), nullptr));
    if (reply && reply->format == 32 && reply->type == type) {
        const auto *data = static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
        const int length = xcb_get_property_value_length(reply.get()) / 4;
        values.reserve(length);
        for (int i = 0; i < length; ++i)
            values.append(data[i]);
    }
    return values;
}

void writeProperty(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property,
    xcb_atom_t type, const QList<quint32> &values)
{
    if (values.isEmpty()) {
        xcb_delete_property(connection, window, property);
        return;
    }
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, type, 32,
        static_cast<uint32_t>(values.size()), values.constData());
}

// EWMH: requests about a mapped window go to the root window, where the window manager
// listens for them.
void sendToRoot(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t type,
    const std::array<quint32, 5> &data)
{
    const xcb_window_t root = rootOf(connection, window);
    if (root == XCB_WINDOW_NONE || type == XCB_ATOM_NONE)
        return;
    xcb_client_message_event_t event;
    std::memset(&event, 0, sizeof event);
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    for (std::size_t i = 0; i < data.size(); ++i)
        event.data.data32[i] = data[i];
    xcb_send_event(connection, 0, root,
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
        reinterpret_cast<const char *>(&event));
}

void requestState(xcb_connection_t *connection, xcb_window_t window, bool add, xcb_atom_t state)
{
    sendToRoot(connection, window, atom(connection, "_NET_WM_STATE"),
        { add ? stateAdd : stateRemove, state, 0, fromApplication, 0 });
}

QWX11WindowState::Level levelOfFlags(Qt::WindowFlags flags)
{
    if (flags.testFlag(Qt::WindowStaysOnTopHint))
        return QWX11WindowState::Level::KeepAbove;
    if (flags.testFlag(Qt::WindowStaysOnBottomHint))
        return QWX11WindowState::Level::KeepBelow;
    return QWX11WindowState::Level::Normal;
}

// The X11 window of a top-level widget, when it has one. Asked of its QWindow: Qt makes a new
// X11 window when a window whose stays-on-top or -bottom flag changed is shown again, and
// QWidget::winId() keeps the old one.
std::optional<xcb_window_t> nativeWindow(const QWidget *window)
{
    const QWindow *handle = window ? window->windowHandle() : nullptr;
    if (!handle || !handle->handle())
        return std::nullopt;
    return static_cast<xcb_window_t>(handle->winId());
}

} // namespace

QWX11WindowState::QWX11WindowState(QWidget *window)
    : QObject(window), m_window(window), m_level(levelOfFlags(window->windowFlags()))
{
    window->installEventFilter(this);
}

QWX11WindowState::~QWX11WindowState() = default;

QWX11WindowState *QWX11WindowState::stateOf(const QWidget *window)
{
    return window ? window->findChild<QWX11WindowState *>(QString(), Qt::FindDirectChildrenOnly)
                  : nullptr;
}

QWX11WindowState *QWX11WindowState::ensureStateOf(QWidget *window)
{
    QWX11WindowState *state = stateOf(window);
    return state ? state : new QWX11WindowState(window);
}

void QWX11WindowState::setLevel(QWidget *window, Level level)
{
    if (!window)
        return;
    QWX11WindowState *state = ensureStateOf(window);
    const bool changed = state->m_level != level;
    state->m_level = level;
    state->applyFlags();
    if (changed && window->isVisible())
        state->requestHintsWhileMapped(true, false);
}

QWX11WindowState::Level QWX11WindowState::level(const QWidget *window)
{
    if (const QWX11WindowState *state = stateOf(window))
        return state->m_level;
    return window ? levelOfFlags(window->windowFlags()) : Level::Normal;
}

void QWX11WindowState::setSkipsTaskbar(QWidget *window, bool skips)
{
    if (!window)
        return;
    QWX11WindowState *state = ensureStateOf(window);
    if (state->m_skipsTaskbar == skips)
        return;
    state->m_skipsTaskbar = skips;
    // A hidden window gets the hint when it is shown next.
    if (window->isVisible())
        state->requestHintsWhileMapped(false, true);
}

bool QWX11WindowState::skipsTaskbar(const QWidget *window)
{
    const QWX11WindowState *state = stateOf(window);
    return state && state->m_skipsTaskbar;
}

bool QWX11WindowState::requestActivation(QWidget *window)
{
    xcb_connection_t *connection = QWX11Connection::connection();
    const std::optional<xcb_window_t> native = nativeWindow(window);
    if (!connection || !native || !window->isVisible())
        return false;
    const xcb_atom_t activeWindow = atom(connection, "_NET_ACTIVE_WINDOW");
    const xcb_window_t root = rootOf(connection, *native);
    // What the window manager supports is asked once per run.
    static const bool supported
        = readProperty(connection, root, atom(connection, "_NET_SUPPORTED"), XCB_ATOM_ATOM)
              .contains(activeWindow);
    if (!supported)
        return false;
    sendToRoot(connection, *native, activeWindow, { fromPager, XCB_CURRENT_TIME, 0, 0, 0 });
    xcb_flush(connection);
    return true;
}

bool QWX11WindowState::isX11()
{
    return QWX11Connection::connection() != nullptr;
}

void QWX11WindowState::sendPendingRequests()
{
    if (xcb_connection_t *connection = QWX11Connection::connection())
        xcb_flush(connection);
}

void QWX11WindowState::applyFlags()
{
    Qt::WindowFlags flags
        = m_window->windowFlags() & ~(Qt::WindowStaysOnTopHint | Qt::WindowStaysOnBottomHint);
    if (m_level == Level::KeepAbove)
        flags |= Qt::WindowStaysOnTopHint;
    else if (m_level == Level::KeepBelow)
        flags |= Qt::WindowStaysOnBottomHint;
    if (flags == m_window->windowFlags())
        return;
    // QWidget::setWindowFlags() would hide the window, and on X11 unmap it and map it again,
    // which flickers and races the window manager's clean-up of the unmapped window. The
    // platform window takes new flags in place (on X11 as state requests to the window
    // manager), so tell the widget and its platform window directly; a window not yet created
    // takes the widget's flags when it is.
    m_window->overrideWindowFlags(flags);
    if (QWindow *handle = m_window->windowHandle())
        handle->setFlags(flags);
}

bool QWX11WindowState::eventFilter(QObject *watched, QEvent *event)
{
    // The show event comes before the window is mapped (a spontaneous one comes from the
    // window system, for a window that is mapped already).
    if (watched == m_window && event->type() == QEvent::Show && !event->spontaneous()) {
        writeHintsBeforeMapping();
        // Qt may yet replace the X11 window as it shows it (after a change of level); the new
        // one is mapped without the hints, so they are asked for once the show is done.
        QMetaObject::invokeMethod(
            this, &QWX11WindowState::checkHintsAfterShowing, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void QWX11WindowState::checkHintsAfterShowing()
{
    const std::optional<xcb_window_t> window = nativeWindow(m_window);
    if (window && m_window->isVisible() && *window != m_hintedWindow)
        requestHintsWhileMapped(true, true);
}

void QWX11WindowState::writeHintsBeforeMapping()
{
    xcb_connection_t *connection = QWX11Connection::connection();
    const std::optional<xcb_window_t> window = nativeWindow(m_window);
    if (!connection || !window)
        return;

    // The window manager removes the hints of a window it lets go, but not always before the
    // window is mapped again: state them in full. Qt adds the level's atoms of the flags to
    // what it finds here as it maps the window.
    const xcb_atom_t stateAtom = atom(connection, "_NET_WM_STATE");
    const xcb_atom_t above = atom(connection, "_NET_WM_STATE_ABOVE");
    const xcb_atom_t staysOnTop = atom(connection, "_NET_WM_STATE_STAYS_ON_TOP");
    const xcb_atom_t below = atom(connection, "_NET_WM_STATE_BELOW");
    const xcb_atom_t skipTaskbar = atom(connection, "_NET_WM_STATE_SKIP_TASKBAR");
    // A new X11 window (the first show, or one Qt made afresh) holds no hints yet: nothing to
    // read back, and no round trip to the X server for each window that opens.
    const bool fresh = *window != m_hintedWindow;
    QList<quint32> states
        = fresh ? QList<quint32>() : readProperty(connection, *window, stateAtom, XCB_ATOM_ATOM);
    states.removeIf([&](quint32 state) {
        return state == above || state == staysOnTop || state == below || state == skipTaskbar;
    });
    if (m_level == Level::KeepAbove)
        states.append(above);
    else if (m_level == Level::KeepBelow)
        states.append(below);
    if (m_skipsTaskbar)
        states.append(skipTaskbar);
    writeProperty(connection, *window, stateAtom, XCB_ATOM_ATOM, states);
    m_hintedWindow = *window;

    const xcb_atom_t desktop = atom(connection, "_NET_WM_DESKTOP");
    if (m_level == Level::KeepBelow) {
        writeProperty(connection, *window, desktop, XCB_ATOM_CARDINAL, { allDesktops });
    } else if (!fresh
        && readProperty(connection, *window, desktop, XCB_ATOM_CARDINAL)
            == QList<quint32> { allDesktops }) {
        // Left by an earlier state: the window manager places the window on the workspace
        // in view.
        writeProperty(connection, *window, desktop, XCB_ATOM_CARDINAL, {});
    }
    xcb_flush(connection);
}

void QWX11WindowState::requestHintsWhileMapped(bool workspaces, bool taskbar)
{
    xcb_connection_t *connection = QWX11Connection::connection();
    const std::optional<xcb_window_t> window = nativeWindow(m_window);
    if (!connection || !window)
        return;

    if (workspaces) {
        const xcb_atom_t desktop = atom(connection, "_NET_WM_DESKTOP");
        if (m_level == Level::KeepBelow) {
            sendToRoot(connection, *window, desktop, { allDesktops, fromApplication, 0, 0, 0 });
        } else if (readProperty(connection, *window, desktop, XCB_ATOM_CARDINAL)
            == QList<quint32> { allDesktops }) {
            // Off every workspace but the one in view.
            const xcb_window_t root = rootOf(connection, *window);
            const QList<quint32> current = readProperty(
                connection, root, atom(connection, "_NET_CURRENT_DESKTOP"), XCB_ATOM_CARDINAL);
            sendToRoot(connection, *window, desktop,
                { current.isEmpty() ? 0 : current.first(), fromApplication, 0, 0, 0 });
        }
    }
    if (taskbar)
        requestState(
            connection, *window, m_skipsTaskbar, atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"));
    xcb_flush(connection);
}
