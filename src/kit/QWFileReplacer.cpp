#include "kit/QWFileReplacer.h"

#include <QSaveFile>

bool QWFileReplacer::replace(QSaveFile &file, const QByteArray &data, QString *error)
{
    const auto failed = [&file, error] {
        if (error)
            *error = file.errorString();
        return false;
    };
    if (!file.open(QIODevice::WriteOnly))
        return failed();
    if (file.write(data) != data.size()) {
        failed();
        file.cancelWriting();
        file.commit();
        return false;
    }
    return file.commit() || failed();
}
