#pragma once

#include <QByteArray>
#include <QColor>
#include <QHash>
#include <QPoint>
#include <QString>

#include <optional>

// The KConfig files KNotes and Akonadi keep their settings in: INI groups whose keys may carry
// markers such as "[$e]", values with KConfig's escapes, colours as "r,g,b" or "#rrggbb".
class SNKNotesConfig final
{
public:
    SNKNotesConfig() = default;
    explicit SNKNotesConfig(const QByteArray &bytes);

    // The value of the key in the group, escapes undone; nothing when it is not there. The
    // first occurrence counts, as KConfig reads a file.
    std::optional<QString> value(const QString &group, const QString &key) const;
    // Keys marked "[$e]" may name $HOME, which becomes `home`.
    std::optional<QString> expandedValue(
        const QString &group, const QString &key, const QString &home) const;
    std::optional<QColor> color(const QString &group, const QString &key) const;
    std::optional<bool> boolean(const QString &group, const QString &key) const;
    std::optional<QPoint> point(const QString &group, const QString &key) const;
    std::optional<int> integer(const QString &group, const QString &key) const;

    static std::optional<QColor> colorFromString(const QString &text);

private:
    struct Entry
    {
        QString value;
        bool expand = false;
    };
    QHash<QString, Entry> m_entries; // "group\x1fkey"
};
