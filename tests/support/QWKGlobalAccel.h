#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// KDE's global-shortcut daemon (inside KWin on a Wayland session), driven as the desktop drives
// it: it fires a shortcut when its keys are pressed, and System Settings changes the keys.
// Keys are Qt key codes with their modifiers (Qt::CTRL | Qt::Key_N).
namespace QWKGlobalAccel {

// The object paths of every component, the desktop's own included; empty when the daemon does
// not answer.
QStringList components();
// The object path of the component that holds all these shortcuts; empty when none does.
QString componentWith(const QStringList &names);
// What the desktop's settings call the shortcut.
QString description(const QString &component, const QString &name);
// Fires the shortcut as a key press does.
bool invoke(const QString &component, const QString &name);
// The keys the desktop gives the shortcut.
QList<int> keys(const QString &component, const QString &name);
// Gives the shortcut other keys, as the user does in the desktop's settings.
bool setKeys(const QString &component, const QString &name, int keys);

} // namespace QWKGlobalAccel
