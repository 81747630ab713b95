#include "import/SNMintStickyReader.h"

#include "import/SNImportFile.h"
#include "import/SNImportJson.h"
#include "import/SNMintStickyMarkup.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNMintStickyReader", text);
}

constexpr qsizetype maximumNotes = 100000;

// The note colours of Sticky's style sheet; a name it does not know shows as yellow.
QColor backgroundOfColorName(const QString &name)
{
    static const QHash<QString, QColor> colors {
        { u"red"_s, QColor(0xff, 0x89, 0x90) },
        { u"green"_s, QColor(0xaf, 0xff, 0xaf) },
        { u"blue"_s, QColor(0x81, 0xbd, 0xff) },
        { u"yellow"_s, QColor(0xfe, 0xff, 0x9f) },
        { u"purple"_s, QColor(0xc6, 0x95, 0xff) },
        { u"teal"_s, QColor(0xaf, 0xff, 0xf8) },
        { u"orange"_s, QColor(0xff, 0xc4, 0x7b) },
        { u"magenta"_s, QColor(0xff, 0xb9, 0xfb) },
    };
    return colors.value(name);
}

int intOf(const QJsonObject &object, const QString &key, int fallback)
{
    const QJsonValue value = object.value(key);
    return value.isDouble() ? value.toInt(fallback) : fallback;
}

// Sticky gives notes no ids: the group, the place in it and what the note says tell them apart
// from one import to the next.
QString idOf(const QString &group, qsizetype index, const QString &title, const QString &text)
{
    const QByteArray hash
        = QCryptographicHash::hash(title.toUtf8() + '\0' + text.toUtf8(), QCryptographicHash::Sha1);
    return u"%1/%2/%3"_s.arg(group).arg(index).arg(QString::fromLatin1(hash.toHex().left(12)));
}

} // namespace

QString SNMintStickyReader::programId() const
{
    return u"mint-sticky"_s;
}

QString SNMintStickyReader::programName() const
{
    return tr("Sticky Notes (Linux Mint)");
}

QStringList SNMintStickyReader::candidatePaths(const SNImportEnvironment &environment) const
{
    return { environment.configHome + u"/sticky/notes.json"_s };
}

SNImportReadResult SNMintStickyReader::readNotesJson(
    const QByteArray &bytes, const std::optional<QDateTime> &fileTime)
{
    SNImportReadResult result;
    QString reason;
    const std::optional<QJsonDocument> document = SNImportJson::parse(bytes, &reason);
    if (!document || !document->isObject()) {
        result.problems.append(
            { u"notes.json"_s, document ? tr("The file holds no groups of notes.") : reason });
        return result;
    }
    const QJsonObject groups = document->object();
    qsizetype count = 0;
    for (auto group = groups.begin(); group != groups.end(); ++group) {
        if (!group->isArray()) {
            result.problems.append({ group.key(), tr("The group holds no list of notes.") });
            continue;
        }
        const QJsonArray notes = group->toArray();
        for (qsizetype index = 0; index < notes.size(); ++index) {
            if (count == maximumNotes) {
                result.problems.append({ u"notes.json"_s,
                    tr("The file holds more than %1 notes; the rest were left.")
                        .arg(maximumNotes) });
                return result;
            }
            const QJsonObject info = notes[index].toObject();
            if (!notes[index].isObject()) {
                result.problems.append({ group.key(),
                    tr("Note %1 of the group is not a note: it holds no title and text.")
                        .arg(index + 1) });
                continue;
            }
            const QJsonValue titleValue = info.value(u"title"_s);
            const QJsonValue textValue = info.value(u"text"_s);
            if (!(titleValue.isString() || titleValue.isUndefined())
                || !(textValue.isString() || textValue.isUndefined())) {
                result.problems.append({ group.key(),
                    tr("Note %1 of the group is damaged: its title or text is not text.")
                        .arg(index + 1) });
                continue;
            }
            ++count;
            const QString title = info.value(u"title"_s).toString();
            const QString markup = info.value(u"text"_s).toString();
            SNImportedNote note;
            note.sourceId = idOf(group.key(), index, title, markup);
            const QWAttributedString body = SNMintStickyMarkup::parse(markup);
            // The title shows in the note's title bar; in Vellumo it is the first line.
            QWMutableAttributedString text;
            if (!title.isEmpty() && !body.string().startsWith(title))
                text.appendString(title + u'\n');
            text.appendAttributedString(body);
            note.text = text.attributedString();
            note.position = QPoint(intOf(info, u"x"_s, 0), intOf(info, u"y"_s, 0));
            note.size = QSize(intOf(info, u"width"_s, 250), intOf(info, u"height"_s, 200));
            QString colorName = info.value(u"color"_s).toString();
            if (!backgroundOfColorName(colorName).isValid())
                colorName = u"yellow"_s;
            note.colorName = colorName;
            note.backgroundColor = backgroundOfColorName(colorName);
            note.textColor = QColor(0x30, 0x30, 0x30);
            note.tags = QStringList { group.key() };
            note.dateCreated = fileTime;
            note.dateModified = fileTime;
            result.notes.append(std::move(note));
        }
    }
    if (!result.notes.isEmpty())
        result.remarks.append(tr("Sticky Notes keeps no dates: the notes are dated by when "
                                 "notes.json was last saved."));
    return result;
}

SNImportReadResult SNMintStickyReader::read(const QString &path) const
{
    return SNImportFile::parse(path, &readNotesJson);
}
