#pragma once

#include <QByteArray>
#include <QString>

// The program's entry in the desktop's applications menu: a desktop entry and an icon in the
// user's data folder, for a program that was built rather than installed.
class QWApplicationsMenuEntry final
{
public:
    QWApplicationsMenuEntry() = delete;

    // "$XDG_DATA_HOME/applications/<identifier>.desktop"
    static QString desktopEntryPath(const QString &identifier);
    // "$XDG_DATA_HOME/icons/hicolor/scalable/apps/<identifier>.svg"
    static QString iconPath(const QString &identifier);

    // Whether any applications folder the desktop reads has an entry of that name.
    static bool isInstalled(const QString &identifier);
    // Whether the program runs from the tree it was built in (a CMake cache sits beside it or
    // one folder up) rather than from an installation.
    static bool isRunningFromBuildTree(const QString &programPath);

    // The entry with every Exec and TryExec line pointing at `program` instead of the bare
    // program name the installed entry uses; the arguments and field codes stay.
    static QByteArray entryForProgram(const QByteArray &entry, const QString &program);

    // Writes both files. False when the file system refused; nothing is half-written then.
    static bool install(const QString &identifier, const QByteArray &entry, const QByteArray &icon,
        const QString &program);
};
