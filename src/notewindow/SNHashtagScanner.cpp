#include "notewindow/SNHashtagScanner.h"

#include "kit/QWColor.h"
#include "kit/QWTextAttributes.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <vector>

namespace {

const QRegularExpression &tagExpression()
{
    static const QRegularExpression expression(SNHashtagScanner::tagPattern(),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    return expression;
}

// One stretch of text in one format, as far as tags are concerned.
struct Run
{
    int position = 0;
    int length = 0;
    QString link; // empty when not a link
    QString tagName; // empty when not marked
};

std::vector<Run> runsOfDocument(const QTextDocument &document)
{
    std::vector<Run> runs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (!fragment.isValid())
                continue;
            const QTextCharFormat format = fragment.charFormat();
            runs.push_back({ fragment.position(), fragment.length(),
                format.isAnchor() ? format.anchorHref() : QString(),
                format.stringProperty(QWTextAttributes::TagNameProperty) });
        }
    }
    return runs;
}

// Whether every character of [start, end) is already a link to the tag and marked with it.
// `next` walks forward over the runs as the matches do.
bool isMarked(const std::vector<Run> &runs, size_t &next, int start, int end, const QString &tag)
{
    while (next < runs.size() && runs[next].position + runs[next].length <= start)
        ++next;
    for (size_t i = next; i < runs.size() && runs[i].position < end; ++i) {
        if (runs[i].link != tag || runs[i].tagName != tag)
            return false;
    }
    return next < runs.size() && runs[next].position <= start;
}

// An edit block that joins the user's last edit, or a block of its own when there is none.
void beginJoinedEditBlock(QTextCursor &cursor)
{
    if (cursor.document()->availableUndoSteps() > 0)
        cursor.joinPreviousEditBlock();
    else
        cursor.beginEditBlock();
}

QTextCharFormat tagFormat(const QString &tag)
{
    QTextCharFormat format;
    format.setAnchor(true);
    format.setAnchorHref(tag);
    format.setProperty(QWTextAttributes::TagNameProperty, tag);
    return format;
}

} // namespace

bool SNHashtagScanner::stringIsValidTag(const QString &string)
{
    if (string == QLatin1String("#"))
        return false;
    return tagExpression().match(string).hasMatch();
}

void SNHashtagScanner::clearOldTags(QTextDocument &document)
{
    const std::vector<Run> runs = runsOfDocument(document);
    QTextCursor cursor(&document);
    bool editing = false;
    for (size_t i = 0; i < runs.size();) {
        if (runs[i].tagName.isEmpty()) {
            ++i;
            continue;
        }
        // A run is the stretch of one marker, whatever other formats split it into fragments.
        size_t last = i;
        while (last + 1 < runs.size() && runs[last + 1].tagName == runs[i].tagName
            && runs[last + 1].position == runs[last].position + runs[last].length)
            ++last;
        const size_t first = i;
        i = last + 1;

        cursor.setPosition(runs[first].position);
        cursor.setPosition(runs[last].position + runs[last].length, QTextCursor::KeepAnchor);
        if (stringIsValidTag(cursor.selectedText()))
            continue;
        if (!editing) {
            beginJoinedEditBlock(cursor);
            editing = true;
        }
        // Fragment by fragment, so that each keeps its other formats.
        for (size_t j = first; j <= last; ++j) {
            QTextCursor fragment(&document);
            fragment.setPosition(runs[j].position);
            fragment.setPosition(runs[j].position + runs[j].length, QTextCursor::KeepAnchor);
            QTextCharFormat format = fragment.charFormat();
            format.setAnchor(false);
            format.clearProperty(QTextFormat::AnchorHref);
            format.clearProperty(QWTextAttributes::TagNameProperty);
            fragment.setCharFormat(format);
        }
    }
    if (editing)
        cursor.endEditBlock();
}

QList<std::shared_ptr<SNTag>> SNHashtagScanner::tokenizeTags(
    QTextDocument &document, SNTagManager &tagManager)
{
    QList<std::shared_ptr<SNTag>> tags;
    if (document.isEmpty())
        return tags;
    clearOldTags(document);

    const QString text = document.toPlainText();
    QRegularExpressionMatchIterator matches = tagExpression().globalMatch(text);
    if (!matches.hasNext())
        return tags;

    const std::vector<Run> runs = runsOfDocument(document);
    size_t nextRun = 0;
    QTextCursor cursor(&document);
    bool editing = false;
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString name = match.captured(0);
        std::shared_ptr<SNTag> tag = tagManager.tagWithName(name);
        if (!tag) {
            tag = SNTag::tagWithNameColor(name, QWColor::qw_randomColor());
            tagManager.addTag(tag);
        }
        if (!tags.contains(tag))
            tags.append(tag);

        const int start = int(match.capturedStart(0));
        const int end = int(match.capturedEnd(0));
        if (isMarked(runs, nextRun, start, end, name))
            continue;
        if (!editing) {
            beginJoinedEditBlock(cursor);
            editing = true;
        }
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(tagFormat(name));
    }
    if (editing)
        cursor.endEditBlock();
    return tags;
}
