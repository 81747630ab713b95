#include "import/SNMarkdownFrontMatter.h"

#include "notes/SNStickyNote.h"
#include "tags/SNTag.h"
#include "themes/SNTheme.h"

#include <QStringList>

using namespace Qt::Literals::StringLiterals;

QString SNMarkdownFrontMatter::text(const SNStickyNote &note, const QString &title)
{
    QString yaml = u"---\n"_s;
    if (!title.isEmpty())
        yaml += u"title: "_s + scalar(title) + u'\n';
    if (const std::optional<QDateTime> created = note.dateCreated(); created && created->isValid())
        yaml += u"created: "_s + dateString(*created) + u'\n';
    if (const std::optional<QDateTime> updated = note.dateModified(); updated && updated->isValid())
        yaml += u"updated: "_s + dateString(*updated) + u'\n';
    if (const std::shared_ptr<SNTheme> theme = note.theme(); theme && !theme->name().isEmpty())
        yaml += u"theme: "_s + scalar(theme->name()) + u'\n';
    QStringList tags;
    for (const std::shared_ptr<SNTag> &tag : note.tags()) {
        const QString name = tag->name().startsWith(u'#') ? tag->name().mid(1) : tag->name();
        if (!name.isEmpty() && !tags.contains(name))
            tags.append(name);
    }
    if (!tags.isEmpty()) {
        yaml += u"tags:\n"_s;
        for (const QString &tag : std::as_const(tags))
            yaml += u"  - "_s + scalar(tag) + u'\n';
    }
    return yaml + u"---\n\n"_s;
}

QString SNMarkdownFrontMatter::scalar(const QString &value)
{
    // Plain only what begins with a letter and holds nothing YAML gives a meaning ("key: x",
    // " #comment", flow brackets), and is none of the words YAML 1.1 reads as true, false or null.
    static const QStringList words { u"y"_s, u"n"_s, u"yes"_s, u"no"_s, u"on"_s, u"off"_s,
        u"true"_s, u"false"_s, u"null"_s };
    const bool plain = !value.isEmpty() && value.front().isLetter() && !value.back().isSpace()
        && !words.contains(value.toLower())
        && std::all_of(value.cbegin(), value.cend(), [](QChar c) {
               return c.isLetterOrNumber() || c.isMark() || c == u' '
                   || u"._-()/+!?',"_s.contains(c)
                   || (c.unicode() >= 0x80 && (c.isPunct() || c.isSymbol() || c.isSurrogate()));
           });
    if (plain)
        return value;
    QString quoted = u"\""_s;
    for (const QChar c : value) {
        if (c == u'"' || c == u'\\')
            quoted += u'\\' + QString(c);
        else if (c.unicode() < 0x20 || c.unicode() == 0x7F || c.category() == QChar::Other_Control
            || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            quoted += u"\\u%1"_s.arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            quoted += c;
    }
    return quoted + u'"';
}

QString SNMarkdownFrontMatter::dateString(const QDateTime &date)
{
    const int offset = date.offsetFromUtc();
    const int minutes = std::abs(offset) / 60;
    return date.toString(u"yyyy-MM-dd'T'HH:mm:ss"_s) + (offset < 0 ? u'-' : u'+')
        + u"%1:%2"_s.arg(minutes / 60, 2, 10, QLatin1Char('0'))
              .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}
