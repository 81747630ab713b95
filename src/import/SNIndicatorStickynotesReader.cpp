#include "import/SNIndicatorStickynotesReader.h"

#include "import/SNImportFile.h"
#include "import/SNImportJson.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNIndicatorStickynotesReader", text);
}

constexpr qsizetype maximumNotes = 100000;

// int(255 * c) as the app's style sheet writes it, kept inside a byte.
int channel(double c)
{
    if (std::isnan(c))
        return 0;
    return int(std::clamp(std::trunc(255.0 * std::clamp(c, -1.0, 2.0)), 0.0, 255.0));
}

// Three numbers, or nothing when the value is anything else.
std::optional<std::array<double, 3>> triple(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    if (array.size() != 3)
        return std::nullopt;
    std::array<double, 3> numbers {};
    for (int i = 0; i < 3; ++i) {
        if (!array[i].isDouble() || !std::isfinite(array[i].toDouble())
            || std::abs(array[i].toDouble()) > 1e6)
            return std::nullopt;
        numbers[size_t(i)] = array[i].toDouble();
    }
    return numbers;
}

QColor colorOfHsv(const QJsonValue &value, const std::array<double, 3> &fallback)
{
    const std::array<double, 3> hsv = triple(value).value_or(fallback);
    return SNIndicatorStickynotesReader::colorFromHsv(hsv[0], hsv[1], hsv[2]);
}

QColor colorOfRgb(const QJsonValue &value, const std::array<double, 3> &fallback)
{
    const std::array<double, 3> rgb = triple(value).value_or(fallback);
    return QColor(channel(rgb[0]), channel(rgb[1]), channel(rgb[2]));
}

std::optional<QPoint> pairOf(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    if (array.size() != 2 || !array[0].isDouble() || !array[1].isDouble())
        return std::nullopt;
    return QPoint(array[0].toInt(), array[1].toInt());
}

} // namespace

QString SNIndicatorStickynotesReader::programId() const
{
    return u"indicator-stickynotes"_s;
}

QString SNIndicatorStickynotesReader::programName() const
{
    return tr("Indicator Stickynotes");
}

QStringList SNIndicatorStickynotesReader::candidatePaths(
    const SNImportEnvironment &environment) const
{
    // The app names "~/.config" itself, whatever XDG_CONFIG_HOME says.
    return { environment.home + u"/.config/indicator-stickynotes"_s };
}

QColor SNIndicatorStickynotesReader::colorFromHsv(double hue, double saturation, double value)
{
    double r = value, g = value, b = value;
    if (saturation != 0.0) {
        const double scaled = std::isfinite(hue) ? std::clamp(hue, -1e6, 1e6) * 6.0 : 0.0;
        const long long sector = (long long)scaled; // truncates, as Python's int()
        const double f = scaled - double(sector);
        const double p = value * (1.0 - saturation);
        const double q = value * (1.0 - saturation * f);
        const double t = value * (1.0 - saturation * (1.0 - f));
        switch (((sector % 6) + 6) % 6) {
        case 0:
            r = value, g = t, b = p;
            break;
        case 1:
            r = q, g = value, b = p;
            break;
        case 2:
            r = p, g = value, b = t;
            break;
        case 3:
            r = p, g = q, b = value;
            break;
        case 4:
            r = t, g = p, b = value;
            break;
        default:
            r = value, g = p, b = q;
            break;
        }
    }
    return QColor(channel(r), channel(g), channel(b));
}

SNImportReadResult SNIndicatorStickynotesReader::readSettingsJson(
    const QByteArray &bytes, const std::optional<QDateTime> &fileTime)
{
    SNImportReadResult result;
    const QString item = u"indicator-stickynotes"_s;
    QString reason;
    const std::optional<QJsonDocument> document = SNImportJson::parse(bytes, &reason);
    if (!document || !document->isObject()) {
        result.problems.append({ item, document ? tr("The file holds no notes.") : reason });
        return result;
    }
    const QJsonObject root = document->object();
    const QJsonObject properties = root.value(u"properties"_s).toObject();
    const QJsonObject categories = root.value(u"categories"_s).toObject();
    // Before categories, one pair of colours in the properties held for every note.
    const bool hasCategories = root.contains(u"categories"_s);
    const QString defaultCategory = properties.value(u"default_cat"_s).toString();
    const bool hidden = !properties.value(u"all_visible"_s).toBool(true);

    const QJsonArray notes = root.value(u"notes"_s).toArray();
    for (qsizetype index = 0; index < notes.size(); ++index) {
        if (index == maximumNotes) {
            result.problems.append({ item,
                tr("The file holds more than %1 notes; the rest were left.").arg(maximumNotes) });
            break;
        }
        const QJsonObject info = notes[index].toObject();
        const QJsonValue body = info.value(u"body"_s);
        if (!notes[index].isObject() || !(body.isString() || body.isUndefined())) {
            result.problems.append(
                { item, tr("Note %1 is damaged: it holds no text.").arg(index + 1) });
            continue;
        }
        SNImportedNote note;
        note.text = QWAttributedString(body.toString());
        note.sourceId = info.value(u"uuid"_s).toString();
        if (note.sourceId.isEmpty()) {
            // The app gives a note its uuid when it first saves it; until then its text names it.
            note.sourceId = QString::fromLatin1(
                QCryptographicHash::hash(body.toString().toUtf8(), QCryptographicHash::Sha1)
                    .toHex()
                    .left(16));
        }
        const QJsonObject window = info.value(u"properties"_s).toObject();
        note.position = pairOf(window.value(u"position"_s)).value_or(QPoint(10, 10));
        const QPoint size = pairOf(window.value(u"size"_s)).value_or(QPoint(200, 150));
        note.size = QSize(size.x(), size.y());
        note.isHidden = hidden;

        if (hasCategories) {
            QString category = info.value(u"cat"_s).toString();
            if (!categories.contains(category))
                category = defaultCategory;
            const QJsonObject data = categories.value(category).toObject();
            note.backgroundColor = colorOfHsv(data.value(u"bgcolor_hsv"_s), { 48.0 / 360, 1, 1 });
            note.textColor
                = colorOfRgb(data.value(u"textcolor"_s), { 32.0 / 255, 32.0 / 255, 32.0 / 255 });
            if (categories.contains(category)) {
                note.colorName = data.value(u"name"_s).toString(tr("New Category"));
                note.tags = QStringList { note.colorName };
            }
        } else {
            note.backgroundColor
                = colorOfHsv(properties.value(u"d_bgcolor_hsv"_s), { 56.0 / 360, 1, 1 });
            note.textColor = colorOfRgb(properties.value(u"d_textcolor"_s), { 0, 0, 0 });
        }

        // The app writes its local time without a zone.
        const QDateTime modified
            = SNImportFile::dateFromIsoString(info.value(u"last_modified"_s).toString());
        note.dateModified = modified.isValid() ? std::optional(modified) : fileTime;
        note.dateCreated = note.dateModified;
        result.notes.append(std::move(note));
    }
    return result;
}

SNImportReadResult SNIndicatorStickynotesReader::read(const QString &path) const
{
    return SNImportFile::parse(path, &readSettingsJson);
}
