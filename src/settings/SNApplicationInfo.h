#pragma once

#include <QString>

// Names under which the program meets the desktop: its identifier (D-Bus name, desktop
// entry, autostart entry), its display name and version.
namespace SNApplicationInfo {

QString applicationIdentifier(); // "org.vellumo.Vellumo"
QString applicationName(); // "Vellumo"
QString applicationVersion(); // the project version, as "0.1.0"
// The identifier of the login-item helper: the application identifier followed by "helper".
QString loginHelperIdentifier();
// What the autostart entry passes, so that the program knows it was started at login.
QString loginLaunchURL(); // "vellumo://lal"

} // namespace SNApplicationInfo
