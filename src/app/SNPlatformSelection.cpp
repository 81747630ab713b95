#include "app/SNPlatformSelection.h"

#include <QtGlobal>

QByteArray SNPlatformSelection::platformToRequest(const QList<QByteArray> &arguments,
    const QByteArray &sessionType, const QByteArray &waylandDisplay, const QByteArray &x11Display,
    const QByteArray &chosenPlatform)
{
    if (!chosenPlatform.isEmpty() || x11Display.isEmpty())
        return {};
    for (const QByteArray &argument : arguments) {
        if (argument == "-platform" || argument == "--platform" || argument.startsWith("-platform=")
            || argument.startsWith("--platform="))
            return {};
    }
    if (isWaylandSession(sessionType, waylandDisplay))
        return QByteArrayLiteral("xcb");
    return {};
}

bool SNPlatformSelection::isWaylandSession(
    const QByteArray &sessionType, const QByteArray &waylandDisplay)
{
    return sessionType == "wayland" || !waylandDisplay.isEmpty();
}

bool SNPlatformSelection::isWaylandSession()
{
    return isWaylandSession(qgetenv("XDG_SESSION_TYPE"), qgetenv("WAYLAND_DISPLAY"));
}

void SNPlatformSelection::apply(int argc, char **argv)
{
    QList<QByteArray> arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QByteArray(argv[i]));
    const QByteArray platform = platformToRequest(arguments, qgetenv("XDG_SESSION_TYPE"),
        qgetenv("WAYLAND_DISPLAY"), qgetenv("DISPLAY"), qgetenv("QT_QPA_PLATFORM"));
    if (!platform.isEmpty())
        qputenv("QT_QPA_PLATFORM", platform);
}
