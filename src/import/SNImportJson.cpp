#include "import/SNImportJson.h"

#include <QCoreApplication>
#include <QJsonParseError>

#include <algorithm>

std::optional<QJsonDocument> SNImportJson::parse(const QByteArray &bytes, QString *reason)
{
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error == QJsonParseError::NoError)
        return document;
    const qsizetype offset = std::clamp<qsizetype>(error.offset, 0, bytes.size());
    const qsizetype line = QByteArrayView(bytes).first(offset).count('\n') + 1;
    if (reason) {
        *reason = QCoreApplication::translate("SNImportJson", "The JSON is damaged at line %1: %2.")
                      .arg(line)
                      .arg(error.errorString());
    }
    return std::nullopt;
}
