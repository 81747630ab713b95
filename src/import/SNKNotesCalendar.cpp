#include "import/SNKNotesCalendar.h"

#include "import/SNImportFile.h"
#include "import/SNImportTitledText.h"
#include "import/SNKNotesHtml.h"

#include <QCoreApplication>
#include <QHash>
#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNKNotesCalendar", text);
}

// One content line: "NAME;PARAM=VALUE:value".
struct Property
{
    QString name; // upper case
    QString parameters; // upper case, as written after the name
    QString value;
};

std::optional<Property> propertyOfLine(const QString &line)
{
    // The value starts at the first colon outside quoted parameter values.
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line[i] == u'"')
            quoted = !quoted;
        else if (line[i] == u':' && !quoted) {
            const QString head = line.left(i);
            const qsizetype semicolon = head.indexOf(u';');
            return Property { head.left(semicolon).trimmed().toUpper(),
                semicolon < 0 ? QString() : head.mid(semicolon + 1).toUpper(), line.mid(i + 1) };
        }
    }
    return std::nullopt;
}

QString unescapedText(const QString &value)
{
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != u'\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const QChar next = value[++i];
        out += (next == u'n' || next == u'N') ? u'\n' : next;
    }
    return out;
}

// Continuation lines start with a space or a tab, which is dropped with the line break.
QStringList unfoldedLines(const QString &text)
{
    QStringList lines;
    for (QString line : text.split(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if ((line.startsWith(u' ') || line.startsWith(u'\t')) && !lines.isEmpty())
            lines.last() += QStringView(line).mid(1);
        else
            lines.append(line);
    }
    return lines;
}

std::optional<QColor> firstColor(std::initializer_list<std::optional<QColor>> colors)
{
    for (const std::optional<QColor> &color : colors) {
        if (color)
            return color;
    }
    return std::nullopt;
}

SNImportedNote noteOfJournal(const QHash<QString, Property> &journal,
    const SNKNotesCalendar::SettingsLookup &settingsLookup, const SNKNotesConfig &defaults,
    const QDateTime &fileTime, int index)
{
    SNImportedNote note;
    const QString uid = journal.value(u"UID"_s).value.trimmed();
    note.sourceId = uid.isEmpty() ? u"journal-%1"_s.arg(index + 1) : uid;
    const QString title = unescapedText(journal.value(u"SUMMARY"_s).value).simplified();
    const Property description = journal.value(u"DESCRIPTION"_s);
    const bool rich = description.parameters.contains(u"X-KDE-TEXTFORMAT=HTML"_s)
        || journal.value(u"X-KDE-KNOTES-RICHTEXT"_s)
                .value.trimmed()
                .compare(u"true"_s, Qt::CaseInsensitive)
            == 0;
    const QString body = unescapedText(description.value);
    const QWAttributedString text
        = rich ? SNKNotesHtml::toAttributedString(body) : QWAttributedString(body);
    note.text = SNImportTitledText::make(title, text);

    const SNKNotesConfig settings(
        uid.isEmpty() ? QByteArray() : settingsLookup(uid).value_or(QByteArray()));
    const auto journalColor = [&journal](const QString &name) {
        return SNKNotesConfig::colorFromString(journal.value(name).value);
    };
    // The calendar's colours come before the settings file's, as KNotes reads them.
    note.backgroundColor = firstColor(
        { journalColor(u"X-KDE-KNOTES-BGCOLOR"_s), settings.color(u"Display"_s, u"bgcolor"_s),
            defaults.color(u"Display"_s, u"bgcolor"_s), QColor(Qt::yellow) });
    note.textColor = firstColor(
        { journalColor(u"X-KDE-KNOTES-FGCOLOR"_s), settings.color(u"Display"_s, u"fgcolor"_s),
            defaults.color(u"Display"_s, u"fgcolor"_s), QColor(Qt::black) });
    const std::optional<int> width = settings.integer(u"Display"_s, u"width"_s);
    const std::optional<int> height = settings.integer(u"Display"_s, u"height"_s);
    if (width && height && *width > 0 && *height > 0)
        note.size = QSize(*width, *height);
    // -10000,-10000 is KNotes' "let the window manager place it".
    const std::optional<QPoint> position = settings.point(u"WindowDisplay"_s, u"position"_s);
    if (position && *position != QPoint(-10000, -10000))
        note.position = position;
    note.isFloating = settings.boolean(u"WindowDisplay"_s, u"KeepAbove"_s).value_or(false);
    note.isHidden = settings.boolean(u"WindowDisplay"_s, u"HideNote"_s).value_or(false);

    const auto date = [&journal](const QString &name) {
        return SNKNotesCalendar::dateFromString(journal.value(name).value);
    };
    QDateTime modified = date(u"LAST-MODIFIED"_s);
    if (!modified.isValid())
        modified = date(u"DTSTAMP"_s);
    if (!modified.isValid())
        modified = fileTime;
    QDateTime created = date(u"CREATED"_s);
    if (!created.isValid())
        created = modified;
    note.dateCreated = created;
    note.dateModified = modified;
    return note;
}

} // namespace

QDateTime SNKNotesCalendar::dateFromString(const QString &text)
{
    static const QRegularExpression pattern(
        uR"(^\s*(\d{4})(\d{2})(\d{2})(?:T(\d{2})(\d{2})(\d{2})(Z?))?\s*$)"_s);
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    const QDate date(match.capturedView(1).toInt(), match.capturedView(2).toInt(),
        match.capturedView(3).toInt());
    const QTime time(match.capturedView(4).toInt(), match.capturedView(5).toInt(),
        match.capturedView(6).toInt());
    if (!date.isValid() || !time.isValid())
        return {};
    return match.captured(7).isEmpty() ? QDateTime(date, time) : QDateTime(date, time, Qt::UTC);
}

SNImportReadResult SNKNotesCalendar::read(const QByteArray &bytes, const SettingsLookup &settings,
    const SNKNotesConfig &defaults, const QDateTime &fileTime)
{
    SNImportReadResult result;
    const QStringList lines = unfoldedLines(SNImportFile::decodeText(bytes));
    bool sawCalendar = false;
    int depth = 0; // components open inside the journal, such as its alarm
    std::optional<QHash<QString, Property>> journal;
    int count = 0;
    for (const QString &line : lines) {
        const std::optional<Property> property = propertyOfLine(line);
        if (!property)
            continue;
        const QString value = property->value.trimmed().toUpper();
        if (property->name == u"BEGIN"_s) {
            if (value == u"VCALENDAR"_s)
                sawCalendar = true;
            if (journal)
                ++depth;
            else if (value == u"VJOURNAL"_s)
                journal.emplace();
        } else if (property->name == u"END"_s && journal) {
            if (depth > 0) {
                --depth;
                continue;
            }
            if (count == maximumNotes) {
                result.problems.append({ u"notes.ics"_s,
                    tr("The calendar holds more than %1 notes; the rest were left.")
                        .arg(maximumNotes) });
                return result;
            }
            result.notes.append(noteOfJournal(*journal, settings, defaults, fileTime, count++));
            journal.reset();
        } else if (journal && depth == 0 && !journal->contains(property->name)) {
            journal->insert(property->name, *property);
        }
    }
    if (journal) {
        const QString title = unescapedText(journal->value(u"SUMMARY"_s).value).simplified();
        result.problems.append({ title.isEmpty() ? u"notes.ics"_s : title,
            tr("The file ends inside this note: it was cut off.") });
    }
    if (!sawCalendar && result.notes.isEmpty() && result.problems.isEmpty())
        result.problems.append({ u"notes.ics"_s, tr("It is not an iCalendar file.") });
    return result;
}
