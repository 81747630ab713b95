#pragma once

#include <QString>

class QFileDevice;

// Makes written bytes and renames durable: what the kernel still holds in its cache is lost
// with the power, so a save counts only once these return true.
class QWFileSync final
{
public:
    QWFileSync() = delete;

    // The file's data on the disk (fdatasync). False for a device that is not an open file.
    static bool syncData(QFileDevice &file);
    // The folder's entries on the disk, so that a rename into it survives a crash.
    static bool syncFolderOf(const QString &filePath);
};
