#pragma once

#include <QString>
#include <QStringList>

// Starting a program at login, the freedesktop way: an autostart entry
// "$XDG_CONFIG_HOME/autostart/<identifier>.desktop" that the session runs when the user logs in.
class QWLoginItem final
{
public:
    QWLoginItem() = delete;

    static QString autostartFilePath(const QString &identifier);

    // Writes (enabled) or removes the entry for `identifier`; the entry runs this program with
    // `arguments`. Removing an entry that does not exist succeeds. False when the file system
    // refused; nothing is half-written then.
    static bool setEnabled(
        const QString &identifier, bool enabled, const QStringList &arguments = {});

    // The running executable when there is one on disk, else the program name for PATH.
    static QString programPath();

    // The Exec value of a desktop entry: each argument quoted where the Desktop Entry rules
    // ask for it, '%' doubled, then escaped as a string value.
    static QString execLine(const QString &program, const QStringList &arguments);
};
