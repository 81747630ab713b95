#pragma once

#include "import/SNImportedNote.h"
#include "kit/QWRichTextDump.h"
#include "notes/SNStickyNote.h"
#include "tags/SNTag.h"

#include <QStringList>

#include <algorithm>

// What a reader read, as a golden file holds it: the notes in the order of their ids, each with
// what the reader set, then the problems and remarks; and the notes the importer made of them.
// Dates are written in UTC.
class SNImportedNoteDump final
{
public:
    static QString describe(const SNImportReadResult &result)
    {
        QList<SNImportedNote> notes = result.notes;
        std::stable_sort(notes.begin(), notes.end(),
            [](const auto &a, const auto &b) { return a.sourceId < b.sourceId; });
        QString out;
        for (const SNImportedNote &note : notes)
            out += describe(note);
        for (const SNImportProblem &problem : result.problems)
            out += u"problem "_s + QWRichTextDump::quoted(problem.item) + u": "_s + problem.reason
                + u'\n';
        for (const QString &remark : result.remarks)
            out += u"remark "_s + remark + u'\n';
        return out;
    }

    static QString describe(const SNImportedNote &note)
    {
        QString out = u"== note "_s + QWRichTextDump::quoted(note.sourceId) + u'\n';
        const auto add = [&out](bool set, const QString &name, const QString &value) {
            if (set)
                out += name + u": "_s + value + u'\n';
        };
        add(note.backgroundColor.has_value(), u"background"_s, colorName(note.backgroundColor));
        add(note.textColor.has_value(), u"text color"_s, colorName(note.textColor));
        add(!note.colorName.isEmpty(), u"color name"_s, QWRichTextDump::quoted(note.colorName));
        add(note.position.has_value(), u"position"_s,
            u"%1,%2"_s.arg(note.position.value_or(QPoint()).x())
                .arg(note.position.value_or(QPoint()).y()));
        add(note.size.has_value(), u"size"_s,
            u"%1x%2"_s.arg(note.size.value_or(QSize()).width())
                .arg(note.size.value_or(QSize()).height()));
        add(note.isFloating, u"floating"_s, u"yes"_s);
        add(note.isHidden, u"hidden"_s, u"yes"_s);
        add(note.dateCreated.has_value(), u"created"_s, date(note.dateCreated));
        add(note.dateModified.has_value(), u"modified"_s, date(note.dateModified));
        QStringList tags;
        for (const QString &tag : note.tags)
            tags.append(QWRichTextDump::quoted(tag));
        add(!tags.isEmpty(), u"tags"_s, tags.join(u", "_s));
        return out + QWRichTextDump::describe(note.text);
    }

    // A note the importer made: its first line, then its theme, window, states, dates and tags.
    static QString describe(const SNStickyNote &note)
    {
        const QString text = note.attributedString().value_or(QWAttributedString()).string();
        QString out = u"== "_s + QWRichTextDump::quoted(text.section(u'\n', 0, 0)) + u"\ntheme: "_s
            + note.themeName() + u"\nframe: "_s + note.windowFrame() + u'\n';
        if (note.pinState() == SNStickyNote::PinStateFloating)
            out += u"floating\n"_s;
        if (note.isCollapsed())
            out += u"collapsed\n"_s;
        out += u"created: "_s + date(note.dateCreated()) + u"\nmodified: "_s
            + date(note.dateModified()) + u'\n';
        QStringList tags;
        for (const auto &tag : note.tags())
            tags.append(tag->name());
        return tags.isEmpty() ? out : out + u"tags: "_s + tags.join(u' ') + u'\n';
    }

private:
    static QString colorName(const std::optional<QColor> &color)
    {
        return color->name(color->alpha() == 255 ? QColor::HexRgb : QColor::HexArgb);
    }

    static QString date(const std::optional<QDateTime> &date)
    {
        return date->isValid() ? date->toUTC().toString(Qt::ISODateWithMs) : u"invalid"_s;
    }
};
