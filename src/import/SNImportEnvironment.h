#pragma once

#include <QString>

// The folders a user's notes programs keep their files in. Readers build their paths from it, so
// that a test (or a user who asks for another home) hands in folders of its own.
struct SNImportEnvironment final
{
    QString home; // "~"
    QString configHome; // $XDG_CONFIG_HOME, else ~/.config
    QString dataHome; // $XDG_DATA_HOME, else ~/.local/share

    // The folders of this process's user.
    static SNImportEnvironment current();
    // Every folder under another home, as a fresh account there would have them.
    static SNImportEnvironment underHome(const QString &home);
};
