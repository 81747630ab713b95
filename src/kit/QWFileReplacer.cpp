#include "kit/QWFileReplacer.h"

#include <QSaveFile>

#include <cerrno>

bool QWFileReplacer::replace(QSaveFile &file, const QByteArray &data, QString *error)
{
    const auto failed = [&file, error] {
        if (error)
            *error = file.errorString();
        return false;
    };
    if (!file.open(QIODevice::WriteOnly))
        return failed();
    // The data waits in the file's buffer: a write that falls short (a full disk, a size limit)
    // shows in the flush, and commit() would rename the short file over the old one.
    errno = 0;
    if (file.write(data) != data.size() || !file.flush()) {
        // Qt has no reason for a short write; the system has one.
        const int code = errno;
        if (error)
            *error = code != 0 ? qt_error_string(code) : file.errorString();
        file.cancelWriting();
        file.commit();
        return false;
    }
    return file.commit() || failed();
}
