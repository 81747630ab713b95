#pragma once

#include <QString>

// What the desktop does with files on the program's behalf.
class QWWorkspace final
{
public:
    QWWorkspace() = delete;

    // Shows the file selected in the desktop's file manager, through the freedesktop file
    // manager interface; where nothing answers there, opens the folder that holds it. The root
    // is accepted for callers that name one; file managers choose their own.
    static bool selectFileInFileViewerRootedAtPath(const QString &path, const QString &rootPath);
};
