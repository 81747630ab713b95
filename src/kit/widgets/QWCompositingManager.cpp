#include "kit/widgets/QWCompositingManager.h"

#include "kit/widgets/QWX11Connection.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QPointer>

#include <cstdlib>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

using QWX11Connection::takeReply;

namespace {

// The screen the program was started on, as $DISPLAY names it (":0.1" is screen 1).
int displayScreen()
{
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (!xcb_parse_display(nullptr, &host, &display, &screen))
        return 0;
    std::free(host);
    return screen;
}

xcb_window_t rootWindow(xcb_connection_t *connection, int screen)
{
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screen && it.rem > 1; ++i)
        xcb_screen_next(&it);
    return it.data ? it.data->root : xcb_window_t(XCB_WINDOW_NONE);
}

} // namespace

QWCompositingManager::QWCompositingManager(xcb_connection_t *connection)
    : QObject(qGuiApp), m_connection(connection)
{
    const int screen = displayScreen();
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(screen);
    const auto atom = takeReply(xcb_intern_atom_reply(connection,
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.constData()),
        nullptr));
    m_selection = atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE);
    m_running = askServer();

    const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    const xcb_window_t root = rootWindow(connection, screen);
    if (!xfixes || !xfixes->present || m_selection == XCB_ATOM_NONE || root == XCB_WINDOW_NONE)
        return;
    // Every client states the version it speaks before it uses the extension.
    takeReply(xcb_xfixes_query_version_reply(
        connection, xcb_xfixes_query_version(connection, XCB_XFIXES_MAJOR_VERSION, 0), nullptr));
    xcb_xfixes_select_selection_input(connection, root, m_selection,
        XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
            | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
            | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    xcb_flush(connection);
    m_selectionNotifyEvent = xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    qGuiApp->installNativeEventFilter(this);
}

QWCompositingManager::~QWCompositingManager()
{
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

QWCompositingManager *QWCompositingManager::sharedManager()
{
    // Lives as long as the application object that owns it.
    static QPointer<QWCompositingManager> manager;
    xcb_connection_t *connection = QWX11Connection::connection();
    if (!connection)
        return nullptr;
    if (!manager)
        manager = new QWCompositingManager(connection);
    return manager;
}

bool QWCompositingManager::isRunning()
{
    const QWCompositingManager *manager = sharedManager();
    if (!manager)
        return true;
    // Without XFixes no notice comes: the answer may have changed since it was last asked.
    return manager->m_selectionNotifyEvent ? manager->m_running : manager->askServer();
}

bool QWCompositingManager::askServer() const
{
    if (m_selection == XCB_ATOM_NONE)
        return false;
    const auto owner = takeReply(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool QWCompositingManager::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != m_selectionNotifyEvent)
        return false;
    const auto *notice = static_cast<const xcb_xfixes_selection_notify_event_t *>(message);
    if (notice->selection == m_selection)
        m_running = notice->owner != XCB_WINDOW_NONE;
    // Qt follows selections too (the clipboard); the notice is not used up here.
    return false;
}
