#include "tags/SNHashtagScanner.h"

#include "kit/QWAttributedString.h"
#include "kit/QWColor.h"
#include "kit/QWTextAttributes.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace {

const QRegularExpression &tagExpression()
{
    static const QRegularExpression expression(SNHashtagScanner::tagPattern(),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    return expression;
}

} // namespace

QList<SNHashtagScanner::Occurrence> SNHashtagScanner::occurrencesInString(QStringView text)
{
    QList<Occurrence> occurrences;
    QRegularExpressionMatchIterator matches = tagExpression().globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        occurrences.append({ match.capturedStart(0), match.capturedLength(0), match.captured(0) });
    }
    return occurrences;
}

std::optional<SNHashtagScanner::Occurrence> SNHashtagScanner::occurrenceAtIndex(
    const QTextDocument &document, qsizetype index)
{
    // A tag never crosses a paragraph end: its block is enough.
    const QTextBlock block = document.findBlock(int(index));
    if (!block.isValid())
        return std::nullopt;
    const qsizetype offset = index - block.position();
    const QList<Occurrence> occurrences = occurrencesInString(block.text());
    for (const Occurrence &occurrence : occurrences) {
        if (occurrence.start <= offset && offset < occurrence.start + occurrence.length)
            return Occurrence { occurrence.start + block.position(), occurrence.length,
                occurrence.name };
    }
    return std::nullopt;
}

QList<std::shared_ptr<SNTag>> SNHashtagScanner::tokenizeTags(
    const QString &text, SNTagManager &tagManager)
{
    QList<std::shared_ptr<SNTag>> tags;
    const QList<Occurrence> occurrences = occurrencesInString(text);
    for (const Occurrence &occurrence : occurrences) {
        std::shared_ptr<SNTag> tag = tagManager.tagWithName(occurrence.name);
        if (!tag) {
            tag = SNTag::tagWithNameColor(occurrence.name, QWColor::qw_randomColor());
            tagManager.addTag(tag);
        }
        if (!tags.contains(tag))
            tags.append(tag);
    }
    return tags;
}

bool SNHashtagScanner::stringIsValidTag(const QString &string)
{
    if (string == QLatin1String("#"))
        return false;
    return tagExpression().match(string).hasMatch();
}

void SNHashtagScanner::clearOldTags(QWMutableAttributedString &text)
{
    // Runs of one marker, whatever other attributes split them.
    struct Stretch
    {
        qsizetype start;
        qsizetype end;
        QString tag;
    };
    QList<Stretch> stretches;
    for (const QWTextRun &run : text.runs()) {
        const QString &tag = run.attributes.tagName();
        if (tag.isEmpty())
            continue;
        if (!stretches.isEmpty() && stretches.last().end == run.location
            && stretches.last().tag == tag)
            stretches.last().end = run.location + run.length;
        else
            stretches.append({ run.location, run.location + run.length, tag });
    }
    for (const Stretch &stretch : std::as_const(stretches)) {
        if (stringIsValidTag(text.string().mid(stretch.start, stretch.end - stretch.start)))
            continue;
        text.modifyAttributesRange(
            stretch.start, stretch.end - stretch.start, [](QWTextAttributes &attributes) {
                attributes.setTagName(QString());
                attributes.setLink(QString());
            });
    }
}

void SNHashtagScanner::markTags(QWMutableAttributedString &text)
{
    const QList<Occurrence> occurrences = occurrencesInString(text.string());
    if (occurrences.isEmpty())
        return;
    // One pass over runs and occurrences together: a note of a megabyte has thousands of each.
    QWMutableAttributedString marked;
    const QString &string = text.string();
    qsizetype next = 0;
    for (const QWTextRun &run : text.runs()) {
        qsizetype position = run.location;
        while (position < run.end()) {
            while (next < occurrences.size()
                && occurrences[next].start + occurrences[next].length <= position)
                ++next;
            QWTextAttributes attributes = run.attributes;
            qsizetype pieceEnd = run.end();
            if (next < occurrences.size() && occurrences[next].start <= position) {
                const Occurrence &occurrence = occurrences[next];
                pieceEnd = std::min(pieceEnd, occurrence.start + occurrence.length);
                attributes.setLink(occurrence.name);
                attributes.setTagName(occurrence.name);
            } else if (next < occurrences.size()) {
                pieceEnd = std::min(pieceEnd, occurrences[next].start);
            }
            marked.appendString(string.mid(position, pieceEnd - position), attributes);
            position = pieceEnd;
        }
    }
    text = std::move(marked);
}

QWAttributedString SNHashtagScanner::taggedString(const QWAttributedString &text)
{
    QWMutableAttributedString tagged(text);
    clearOldTags(tagged);
    markTags(tagged);
    return tagged.attributedString();
}

void SNHashtagScanner::removeTagMarkers(QTextDocument &document)
{
    QList<std::pair<int, int>> marked;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.isValid()
                && fragment.charFormat().hasProperty(QWTextAttributes::TagNameProperty))
                marked.append({ fragment.position(), fragment.position() + fragment.length() });
        }
    }
    for (const auto &[start, end] : std::as_const(marked)) {
        QTextCursor cursor(&document);
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        QTextCharFormat format = cursor.charFormat();
        format.setAnchor(false);
        format.clearProperty(QTextFormat::AnchorHref);
        format.clearProperty(QWTextAttributes::TagNameProperty);
        cursor.setCharFormat(format);
    }
}
