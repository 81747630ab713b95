#pragma once

#include <QString>
#include <QStringList>

// The desktop's global shortcuts as KDE keeps them (kglobalaccel, which KWin hosts on Wayland),
// read over the session bus as the desktop's own settings read them. A desktop that does not
// answer ends the test: an empty answer would read as "nothing bound".
namespace QWDesktopShortcuts {

// The version of the portal through which programs ask for global shortcuts; 0 when the
// desktop offers none, and then the name of the error the bus answered goes to `error`.
uint portalVersion(QString *error = nullptr);

// The object paths of every component, the desktop's own included.
QStringList components();
QStringList shortcutNames(const QString &component);
// The first component that holds every one of the shortcuts; empty when none does.
QString componentHolding(const QStringList &names);

} // namespace QWDesktopShortcuts
