#include "import/SNGnomeStickyReader.h"

#include "import/SNImportFile.h"
#include "import/SNImportJson.h"
#include "import/SNImportTextRanges.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNGnomeStickyReader", text);
}

constexpr qsizetype maximumNotes = 100000;
const QString legacyFileName = u"notes.json"_s;

struct Style
{
    QLatin1StringView name;
    QColor background;
    QColor text;
};

// The light colours of the app's style sheet, by style number 1 to 8. "window" follows the
// desktop's window colours: libadwaita's light ones.
const std::array<Style, 8> &styles()
{
    static const std::array<Style, 8> styles { {
        { "yellow"_L1, QColor(0xff, 0xf6, 0xcb), Qt::black },
        { "pink"_L1, QColor(0xff, 0xe3, 0xf1), Qt::black },
        { "green"_L1, QColor(0xe7, 0xf6, 0xe4), Qt::black },
        { "purple"_L1, QColor(0xf2, 0xe5, 0xff), Qt::black },
        { "blue"_L1, QColor(0xe7, 0xf3, 0xff), Qt::black },
        { "gray"_L1, QColor(0xed, 0xeb, 0xe9), Qt::black },
        { "charcoal"_L1, QColor(0x5e, 0x5e, 0x5e), Qt::white },
        { "window"_L1, QColor(0xfa, 0xfa, 0xfa), QColor(0x32, 0x32, 0x32) },
    } };
    return styles;
}

// The app counts characters as GTK does, in code points; a QString counts UTF-16 units.
class CodePoints
{
public:
    explicit CodePoints(const QString &text)
    {
        qsizetype point = 0;
        for (qsizetype i = 0; i < text.size(); ++i, ++point) {
            if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
                m_pairs.append(point);
                ++i;
            }
        }
        m_count = point;
    }

    // The UTF-16 position of a code point offset, clamped to the text.
    qsizetype position(double offset) const
    {
        const qsizetype point
            = std::isfinite(offset) ? qsizetype(std::clamp(offset, 0.0, double(m_count))) : 0;
        return point + (std::lower_bound(m_pairs.begin(), m_pairs.end(), point) - m_pairs.begin());
    }

private:
    QList<qsizetype> m_pairs; // the code point offsets of the characters past U+FFFF
    qsizetype m_count = 0;
};

QWAttributedString textOf(const QString &content, const QJsonArray &tags)
{
    const CodePoints points(content);
    SNImportTextRanges ranges;
    static const QHash<QString, SNImportTextRanges::Format> formats {
        { u"bold"_s, SNImportTextRanges::Bold },
        { u"italic"_s, SNImportTextRanges::Italic },
        { u"underline"_s, SNImportTextRanges::Underline },
        { u"strikethrough"_s, SNImportTextRanges::Strikethrough },
        { u"link"_s, SNImportTextRanges::Link },
    };
    for (const QJsonValue &value : tags) {
        const QJsonObject tag = value.toObject();
        const auto format = formats.constFind(tag.value(u"name"_s).toString());
        if (format == formats.cend() || !tag.value(u"start"_s).isDouble()
            || !tag.value(u"end"_s).isDouble())
            continue;
        ranges.add(*format, points.position(tag.value(u"start"_s).toDouble()),
            points.position(tag.value(u"end"_s).toDouble()));
    }
    return ranges.apply(content);
}

// One note object of either kind of file; nothing when it is no note.
std::optional<SNImportedNote> noteOf(
    const QJsonValue &value, const QString &fallbackId, const std::optional<QDateTime> &fileTime)
{
    const QJsonObject object = value.toObject();
    const QJsonValue content = object.value(u"content"_s);
    if (!value.isObject() || !(content.isString() || content.isUndefined()))
        return std::nullopt;
    SNImportedNote note;
    note.sourceId = object.value(u"uuid"_s).toString();
    if (note.sourceId.isEmpty())
        note.sourceId = fallbackId;
    // The content's first line is the title; the "title" key is only a shortened copy of it.
    note.text = textOf(content.toString(), object.value(u"tags"_s).toArray());
    const int styleNumber = object.value(u"style"_s).toInt(1);
    const Style &style = styles()[styleNumber >= 1 && styleNumber <= 8 ? styleNumber - 1 : 0];
    note.colorName = style.name;
    note.backgroundColor = style.background;
    note.textColor = style.text;
    const int width = object.value(u"width"_s).toInt();
    const int height = object.value(u"height"_s).toInt();
    if (width > 0 && height > 0)
        note.size = QSize(width, height);
    // The app shows again the notes whose windows were open when it quit.
    note.isHidden = !object.value(u"open"_s).toBool(false);
    const QDateTime modified
        = SNImportFile::dateFromIsoString(object.value(u"modified"_s).toString());
    note.dateModified = modified.isValid() ? std::optional(modified) : fileTime;
    // No creation date is kept: the note is as old as its last change.
    note.dateCreated = note.dateModified;
    return note;
}

} // namespace

QString SNGnomeStickyReader::programId() const
{
    return u"gnome-sticky"_s;
}

QString SNGnomeStickyReader::programName() const
{
    return tr("Sticky Notes (GNOME)");
}

QStringList SNGnomeStickyReader::candidatePaths(const SNImportEnvironment &environment) const
{
    return { environment.dataHome + u"/com.vixalien.sticky"_s,
        environment.home + u"/.var/app/com.vixalien.sticky/data/com.vixalien.sticky"_s };
}

SNImportReadResult SNGnomeStickyReader::readNoteJson(
    const QByteArray &bytes, const QString &fileName, const std::optional<QDateTime> &fileTime)
{
    SNImportReadResult result;
    QString reason;
    const std::optional<QJsonDocument> document = SNImportJson::parse(bytes, &reason);
    if (!document) {
        result.problems.append({ fileName, reason });
        return result;
    }
    QString fallbackId = fileName;
    fallbackId.chop(fallbackId.endsWith(u".json"_s) ? 5 : 0);
    if (std::optional<SNImportedNote> note
        = document->isObject() ? noteOf(document->object(), fallbackId, fileTime) : std::nullopt)
        result.notes.append(std::move(*note));
    else
        result.problems.append({ fileName, tr("The file holds no note.") });
    return result;
}

SNImportReadResult SNGnomeStickyReader::readLegacyNotesJson(
    const QByteArray &bytes, const std::optional<QDateTime> &fileTime)
{
    SNImportReadResult result;
    QString reason;
    const std::optional<QJsonDocument> document = SNImportJson::parse(bytes, &reason);
    const QJsonValue notes = document ? document->object().value(u"notes"_s) : QJsonValue();
    if (!document || !notes.isArray()) {
        result.problems.append(
            { legacyFileName, document ? tr("The file holds no list of notes.") : reason });
        return result;
    }
    const QJsonArray array = notes.toArray();
    for (qsizetype i = 0; i < array.size(); ++i) {
        if (i == maximumNotes) {
            result.problems.append({ legacyFileName,
                tr("The file holds more than %1 notes; the rest were left.").arg(maximumNotes) });
            break;
        }
        std::optional<SNImportedNote> note
            = noteOf(array[i], u"notes.json#%1"_s.arg(i + 1), fileTime);
        if (note)
            result.notes.append(std::move(*note));
        else
            result.problems.append({ legacyFileName, tr("Entry %1 is no note.").arg(i + 1) });
    }
    return result;
}

SNImportReadResult SNGnomeStickyReader::read(const QString &path) const
{
    const QDir folder(path);
    SNImportReadResult result;
    // As the app does: an old notes.json beside the notes folder is what it would show.
    const QString legacyPath = folder.filePath(legacyFileName);
    if (QFileInfo(legacyPath).isFile()) {
        QString reason;
        const std::optional<QByteArray> bytes = SNImportFile::read(legacyPath, &reason);
        SNImportReadResult legacy = bytes
            ? readLegacyNotesJson(*bytes, SNImportFile::modificationTime(legacyPath))
            : SNImportReadResult { {}, { { legacyFileName, reason } }, {} };
        if (legacy.problems.isEmpty() || !legacy.notes.isEmpty())
            return legacy;
        // A notes.json it cannot read, the app passes over for the notes folder.
        result.problems = legacy.problems;
    }

    const QDir notesFolder(folder.filePath(u"notes"_s));
    QStringList files
        = notesFolder.entryList({ u"*.json"_s }, QDir::Files | QDir::NoSymLinks, QDir::Name);
    if (files.size() > maximumNotes) {
        result.problems.append({ u"notes"_s,
            tr("The folder holds %1 notes; the first %2 were read and the rest were left.")
                .arg(files.size())
                .arg(maximumNotes) });
        files.resize(maximumNotes);
    }
    for (const QString &name : files) {
        const QString file = notesFolder.filePath(name);
        QString reason;
        const std::optional<QByteArray> bytes = SNImportFile::read(file, &reason);
        if (!bytes) {
            result.problems.append({ name, reason });
            continue;
        }
        const SNImportReadResult one
            = readNoteJson(*bytes, name, SNImportFile::modificationTime(file));
        result.notes.append(one.notes);
        result.problems.append(one.problems);
    }
    return result;
}
