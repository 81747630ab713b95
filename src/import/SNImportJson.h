#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

#include <optional>

// The JSON files of notes programs, read so that a damaged one says where it broke in words a
// user can follow up in an editor.
class SNImportJson final
{
public:
    SNImportJson() = delete;

    // The document; nothing and the reason ("The JSON is damaged at line 3: ...") when the
    // bytes are no JSON.
    static std::optional<QJsonDocument> parse(const QByteArray &bytes, QString *reason);
};
