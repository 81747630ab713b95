#pragma once

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

// Qt's connection to the X server, which the program's own X11 code shares, and the ownership
// of the replies it reads there (xcb hands them over to be freed with free()).
namespace QWX11Connection {

// Null when the program does not talk to an X server (Wayland, offscreen).
inline xcb_connection_t *connection()
{
    if (!qGuiApp)
        return nullptr;
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

template <class Reply> using OwnedReply = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply> OwnedReply<Reply> takeReply(Reply *reply)
{
    return OwnedReply<Reply>(reply, &std::free);
}

} // namespace QWX11Connection
