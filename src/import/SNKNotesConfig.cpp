#include "import/SNKNotesConfig.h"

#include "import/SNImportFile.h"

#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace {

QString entryKey(const QString &group, const QString &key)
{
    return group + QChar(0x1f) + key;
}

QString unescaped(QStringView text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        const QChar next = text[++i];
        out += next == u's' ? u' '
            : next == u'n'  ? u'\n'
            : next == u't'  ? u'\t'
            : next == u'r'  ? u'\r'
                            : next;
    }
    return out;
}

} // namespace

SNKNotesConfig::SNKNotesConfig(const QByteArray &bytes)
{
    QString group;
    const QString text = SNImportFile::decodeText(bytes);
    for (QStringView line : QStringView(text).split(u'\n')) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u'[')) {
            // "[Group][$i]": the name is the first bracket's; nested groups are joined by KConfig
            // as "[A][B]", which this reads as A.
            const qsizetype close = line.indexOf(u']');
            if (close > 0)
                group = line.mid(1, close - 1).toString();
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0)
            continue;
        QStringView key = line.left(equals).trimmed();
        bool expand = false;
        // Markers and locales after the key: "Path[$e]", "Name[de]" (a translation, not the key).
        const qsizetype bracket = key.indexOf(u'[');
        if (bracket > 0) {
            const QStringView markers = key.mid(bracket);
            if (!markers.startsWith(u"[$"))
                continue;
            expand = markers.contains(u'e');
            key = key.left(bracket);
        }
        const QString name = entryKey(group, key.toString());
        if (!m_entries.contains(name))
            m_entries.insert(name, { unescaped(line.mid(equals + 1).trimmed()), expand });
    }
}

std::optional<QString> SNKNotesConfig::value(const QString &group, const QString &key) const
{
    const auto found = m_entries.constFind(entryKey(group, key));
    if (found == m_entries.cend())
        return std::nullopt;
    return found->value;
}

std::optional<QString> SNKNotesConfig::expandedValue(
    const QString &group, const QString &key, const QString &home) const
{
    const auto found = m_entries.constFind(entryKey(group, key));
    if (found == m_entries.cend())
        return std::nullopt;
    QString text = found->value;
    if (found->expand) {
        text.replace(u"${HOME}"_s, home);
        text.replace(u"$HOME"_s, home);
    }
    if (text == u"~"_s || text.startsWith(u"~/"_s))
        text = home + text.mid(1);
    return text;
}

std::optional<QColor> SNKNotesConfig::color(const QString &group, const QString &key) const
{
    const std::optional<QString> text = value(group, key);
    return text ? colorFromString(*text) : std::nullopt;
}

std::optional<bool> SNKNotesConfig::boolean(const QString &group, const QString &key) const
{
    const std::optional<QString> text = value(group, key);
    if (!text)
        return std::nullopt;
    const QString lower = text->toLower();
    if (lower == u"true"_s || lower == u"on"_s || lower == u"yes"_s || lower == u"1"_s)
        return true;
    if (lower == u"false"_s || lower == u"off"_s || lower == u"no"_s || lower == u"0"_s)
        return false;
    return std::nullopt;
}

std::optional<QPoint> SNKNotesConfig::point(const QString &group, const QString &key) const
{
    const std::optional<QString> text = value(group, key);
    if (!text)
        return std::nullopt;
    const QStringList parts = text->split(u',');
    bool okX = false, okY = false;
    const QPoint result(parts.value(0).trimmed().toInt(&okX), parts.value(1).trimmed().toInt(&okY));
    if (parts.size() != 2 || !okX || !okY)
        return std::nullopt;
    return result;
}

std::optional<int> SNKNotesConfig::integer(const QString &group, const QString &key) const
{
    const std::optional<QString> text = value(group, key);
    bool ok = false;
    const int result = text ? text->trimmed().toInt(&ok) : 0;
    return ok ? std::optional<int>(result) : std::nullopt;
}

std::optional<QColor> SNKNotesConfig::colorFromString(const QString &text)
{
    const QString trimmed = text.trimmed();
    const QStringList parts = trimmed.split(u',');
    if (parts.size() == 3 || parts.size() == 4) {
        int components[4] = { 0, 0, 0, 255 };
        for (qsizetype i = 0; i < parts.size(); ++i) {
            bool ok = false;
            components[i] = parts[i].trimmed().toInt(&ok);
            if (!ok || components[i] < 0 || components[i] > 255)
                return std::nullopt;
        }
        return QColor(components[0], components[1], components[2]);
    }
    QColor color = QColor::fromString(trimmed);
    if (!color.isValid())
        return std::nullopt;
    color.setAlpha(255);
    return color;
}
