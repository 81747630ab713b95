#include "import/SNXpadReader.h"

#include "import/SNImportFile.h"
#include "import/SNXpadMarkup.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <climits>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNXpadReader", text);
}

constexpr qsizetype maximumPads = 100000;

// xpad's own defaults when neither the pad nor default-style says otherwise.
const QColor defaultBackground(0xFF, 0xEE, 0x99);
const QColor defaultText(0, 0, 0);

// atoi(): the leading number, 0 when there is none.
int leadingInt(const QString &text)
{
    const QString trimmed = text.trimmed();
    qsizetype end = trimmed.startsWith(u'-') || trimmed.startsWith(u'+') ? 1 : 0;
    while (
        end < trimmed.size() && end < 11 && trimmed[end].isDigit() && trimmed[end].unicode() < 128)
        ++end;
    return int(std::clamp(trimmed.left(end).toLongLong(), qlonglong(INT_MIN), qlonglong(INT_MAX)));
}

bool isTrue(const QHash<QString, QString> &values, const QString &key, bool fallback)
{
    const auto it = values.constFind(key);
    return it == values.cend() ? fallback : leadingInt(*it) != 0;
}

// xpad 4 kept a pad's colours as 16-bit channels: back_red, back_green, back_blue.
std::optional<QColor> oldColorOfKeys(const QHash<QString, QString> &values, const QString &prefix)
{
    int channels[3] = {};
    const QString names[3] = { u"red"_s, u"green"_s, u"blue"_s };
    for (int i = 0; i < 3; ++i) {
        const auto it = values.constFind(prefix + u'_' + names[i]);
        if (it == values.cend())
            return std::nullopt;
        bool ok = false;
        const qulonglong value = it->trimmed().toULongLong(&ok, 0);
        if (!ok)
            return std::nullopt;
        channels[i] = int(std::min<qulonglong>(value, 0xFFFF));
    }
    return QColor::fromRgba64(channels[0], channels[1], channels[2]).toRgb();
}

// "back rgb(...)" as xpad 5 writes it, else xpad 4's 16-bit channels.
std::optional<QColor> colorOfKey(const QHash<QString, QString> &values, const QString &key)
{
    const auto it = values.constFind(key);
    if (it == values.cend())
        return oldColorOfKeys(values, key);
    return SNXpadReader::colorFromString(*it);
}

// "255", "100%", "0.5" (a fraction with a point counts as a number of 0-255 too, as in GDK).
std::optional<int> colorChannel(QStringView text)
{
    text = text.trimmed();
    const bool percent = text.endsWith(u'%');
    bool ok = false;
    double value = (percent ? text.chopped(1) : text).trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    if (percent)
        value = value * 255.0 / 100.0;
    return int(std::lround(std::clamp(value, 0.0, 255.0)));
}

} // namespace

QString SNXpadReader::programId() const
{
    return u"xpad"_s;
}

QString SNXpadReader::programName() const
{
    return u"xpad"_s;
}

QStringList SNXpadReader::candidatePaths(const SNImportEnvironment &environment) const
{
    // xpad moves an old ~/.xpad into the config folder when it starts; one it never started
    // again still has its pads there.
    return { environment.configHome + u"/xpad"_s, environment.home + u"/.xpad"_s };
}

QHash<QString, QString> SNXpadReader::keyValues(const QByteArray &bytes)
{
    QHash<QString, QString> values;
    const QString text = SNImportFile::decodeText(bytes);
    for (QStringView line : QStringView(text).tokenize(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        const qsizetype space = line.indexOf(u' ');
        if (space <= 0)
            continue;
        const QString key = line.left(space).toString();
        if (!values.contains(key))
            values.insert(key, line.mid(space + 1).toString());
    }
    return values;
}

std::optional<QColor> SNXpadReader::colorFromString(const QString &text)
{
    const QString trimmed = text.trimmed();
    for (const QString &function : { u"rgba("_s, u"rgb("_s }) {
        if (!trimmed.startsWith(function, Qt::CaseInsensitive))
            continue;
        if (!trimmed.endsWith(u')'))
            return std::nullopt;
        const QList<QStringView> parts
            = QStringView(trimmed).sliced(function.size()).chopped(1).split(u',');
        if (parts.size() != (function.size() == 5 ? 4 : 3))
            return std::nullopt;
        int channels[3] = {};
        for (int i = 0; i < 3; ++i) {
            const std::optional<int> channel = colorChannel(parts[i]);
            if (!channel)
                return std::nullopt;
            channels[i] = *channel;
        }
        // A note has no see-through colour: the alpha is left out.
        return QColor(channels[0], channels[1], channels[2]);
    }
    const QColor color = QColor::fromString(trimmed);
    if (!color.isValid())
        return std::nullopt;
    return color.toRgb();
}

SNImportedNote SNXpadReader::padFromFiles(const QByteArray &info, const QByteArray &content,
    const std::optional<QByteArray> &defaultStyle)
{
    const QHash<QString, QString> values = keyValues(info);
    SNImportedNote pad;
    pad.text = SNXpadMarkup::parse(SNImportFile::decodeText(content));

    if (values.contains(u"x"_s) && values.contains(u"y"_s))
        pad.position = QPoint(leadingInt(values[u"x"_s]), leadingInt(values[u"y"_s]));
    const int width = leadingInt(values.value(u"width"_s));
    const int height = leadingInt(values.value(u"height"_s));
    if (width > 0 && height > 0)
        pad.size = QSize(width, height);
    pad.isHidden = isTrue(values, u"hidden"_s, false);
    // "sticky" puts a pad on every desktop; xpad has no way to keep one above other windows.

    const bool ownColors
        = !isTrue(values, u"follow_color"_s, true) || isTrue(values, u"locked"_s, false);
    if (ownColors) {
        // xpad takes both colours or neither.
        const std::optional<QColor> back = colorOfKey(values, u"back"_s);
        const std::optional<QColor> text = colorOfKey(values, u"text"_s);
        const bool both = back && text;
        pad.backgroundColor = both ? *back : defaultBackground;
        pad.textColor = both ? *text : defaultText;
    } else if (!defaultStyle) {
        pad.backgroundColor = defaultBackground;
        pad.textColor = defaultText;
    } else {
        // The user's colours, or with use_back 0 the theme's, which the pad saved as it drew it.
        const QHash<QString, QString> style = keyValues(*defaultStyle);
        const auto colorOf = [&](const QString &key, const QColor &fallback) {
            if (isTrue(style, u"use_"_s + key, true))
                return colorOfKey(style, key).value_or(fallback);
            return colorOfKey(values, key).value_or(fallback);
        };
        pad.backgroundColor = colorOf(u"back"_s, defaultBackground);
        pad.textColor = colorOf(u"text"_s, defaultText);
    }
    return pad;
}

SNImportReadResult SNXpadReader::read(const QString &path) const
{
    SNImportReadResult result;
    const QDir folder(path);
    if (!QFileInfo(path).isDir()) {
        result.problems.append({ path, tr("The xpad folder is missing.") });
        return result;
    }
    const std::optional<QByteArray> defaultStyle
        = SNImportFile::read(folder.filePath(u"default-style"_s));

    QStringList infoFiles = folder.entryList(
        { u"info-*"_s }, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Name);
    // Names ending in "~" are xpad's backups of the same pads.
    infoFiles.removeIf([](const QString &name) { return name.endsWith(u'~'); });
    if (infoFiles.size() > maximumPads) {
        result.problems.append({ path,
            tr("The folder holds %1 pads; the first %2 were read and the rest were left.")
                .arg(infoFiles.size())
                .arg(maximumPads) });
        infoFiles.resize(maximumPads);
    }

    for (const QString &infoName : infoFiles) {
        QString reason;
        const std::optional<QByteArray> info
            = SNImportFile::read(folder.filePath(infoName), &reason);
        if (!info) {
            result.problems.append({ infoName, reason });
            continue;
        }
        const QString contentName = keyValues(*info).value(u"content"_s).trimmed();
        if (contentName.isEmpty()) {
            result.problems.append({ infoName, tr("The pad names no content file.") });
            continue;
        }
        // xpad would follow any path; an import reads nothing outside the xpad folder.
        if (contentName.contains(u'/') || contentName == u"."_s || contentName == u".."_s
            || contentName.contains(QChar(0))) {
            result.problems.append({ infoName,
                tr("The content file %1 is not in the xpad folder.").arg(contentName) });
            continue;
        }
        const QString contentPath = folder.filePath(contentName);
        if (QFileInfo(contentPath).isSymLink()) {
            result.problems.append({ infoName,
                tr("The content file %1 is a link to another place.").arg(contentName) });
            continue;
        }
        const std::optional<QByteArray> content = SNImportFile::read(contentPath, &reason);
        if (!content) {
            result.problems.append({ infoName,
                QFileInfo::exists(contentPath)
                    ? tr("The content file %1 cannot be read. %2").arg(contentName, reason)
                    : tr("The content file %1 is missing.").arg(contentName) });
            continue;
        }
        SNImportedNote pad = padFromFiles(*info, *content, defaultStyle);
        pad.sourceId = infoName;
        pad.dateModified = SNImportFile::modificationTime(contentPath);
        pad.dateCreated = pad.dateModified;
        result.notes.append(std::move(pad));
    }
    if (!result.notes.isEmpty())
        result.remarks.append(tr("xpad keeps no dates: each pad is dated by when its text was "
                                 "last saved."));
    return result;
}
