#include "kit/QWFileSync.h"

#include <QFile>
#include <QFileDevice>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

bool QWFileSync::syncData(QFileDevice &file)
{
    if (!file.isOpen() || !file.flush())
        return false;
    const int descriptor = file.handle();
    return descriptor >= 0 && ::fdatasync(descriptor) == 0;
}

bool QWFileSync::syncFolderOf(const QString &filePath)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(filePath).absolutePath());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}
