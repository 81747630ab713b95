#pragma once

#include <QByteArray>
#include <QList>

// Which Qt platform the program asks for. Window levels, positions and global hot keys need
// X11, so on a Wayland session the program runs through XWayland, unless the user chose a
// platform (QT_QPA_PLATFORM or -platform) or there is no X display to reach.
class SNPlatformSelection final
{
public:
    SNPlatformSelection() = delete;

    // "xcb" when the program should ask for it, else empty (Qt decides).
    static QByteArray platformToRequest(const QList<QByteArray> &arguments,
        const QByteArray &sessionType, const QByteArray &waylandDisplay,
        const QByteArray &x11Display, const QByteArray &chosenPlatform);

    // A Wayland session, whatever platform Qt draws on.
    static bool isWaylandSession(const QByteArray &sessionType, const QByteArray &waylandDisplay);
    static bool isWaylandSession();

    // Reads the environment and, where it applies, sets QT_QPA_PLATFORM. Runs before the
    // application object exists.
    static void apply(int argc, char **argv);
};
