#include "notewindow/SNRainbowizer.h"

#include "kit/QWTextAttributes.h"
#include "notes/SNStickyNote.h"

#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <QTextCursor>
#include <QTextDocument>

namespace {

// Words are the stretches the boundary finder marks as items: letters and digits, without the
// spaces and punctuation between them.
void appendWords(QList<SNRainbowizer::Unit> &units, const QString &text, int offset)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    int start = -1;
    // The finder starts on the boundary at 0.
    for (qsizetype position = finder.position(); position >= 0;
         position = finder.toNextBoundary()) {
        const QTextBoundaryFinder::BoundaryReasons reasons = finder.boundaryReasons();
        if (start >= 0 && reasons.testFlag(QTextBoundaryFinder::EndOfItem)) {
            units.append({ offset + start, int(position) - start });
            start = -1;
        }
        if (reasons.testFlag(QTextBoundaryFinder::StartOfItem))
            start = int(position);
    }
}

void appendCharacters(QList<SNRainbowizer::Unit> &units, const QString &text, int offset)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int start = 0;
    for (qsizetype position = finder.toNextBoundary(); position >= 0;
         position = finder.toNextBoundary()) {
        units.append({ offset + start, int(position) - start });
        start = int(position);
    }
}

bool isBlank(const QTextDocument &document, const SNRainbowizer::Unit &unit)
{
    const QTextBlock block = document.findBlock(unit.position);
    return block.text().mid(unit.position - block.position(), unit.length).trimmed().isEmpty();
}

// Whether every character of the unit already shows the colour.
bool showsColor(const QTextDocument &document, const SNRainbowizer::Unit &unit, const QColor &color)
{
    const QTextBlock block = document.findBlock(unit.position);
    const int end = unit.position + unit.length;
    for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        if (fragment.position() + fragment.length() <= unit.position || fragment.position() >= end)
            continue;
        const QBrush brush = fragment.charFormat().foreground();
        if (brush.style() != Qt::SolidPattern || brush.color() != color)
            return false;
    }
    return true;
}

} // namespace

QList<SNRainbowizer::Unit> SNRainbowizer::unitsOfDocument(
    const QTextDocument &document, qint64 countState)
{
    QList<Unit> units;
    if (countState != SNStickyNote::CountWords && countState != SNStickyNote::CountParagraphs
        && countState != SNStickyNote::CountCharacters)
        return units;
    // No unit crosses a paragraph end, so each paragraph is looked at on its own.
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QString text = block.text();
        switch (countState) {
        case SNStickyNote::CountWords:
            appendWords(units, text, block.position());
            break;
        case SNStickyNote::CountParagraphs:
            units.append({ block.position(), int(text.size()) });
            break;
        case SNStickyNote::CountCharacters:
            appendCharacters(units, text, block.position());
            break;
        default:
            break;
        }
    }
    return units;
}

int SNRainbowizer::rainbowizeDocument(
    QTextDocument &document, qint64 countState, const QList<QWColor> &colors, int caretPosition)
{
    // Redo steps mean the text is a state out of the history, undone to: it had its colours
    // then, and a change now would throw the redo steps away.
    if (colors.isEmpty() || document.availableRedoSteps() > 0)
        return 0;
    const qsizetype limit = colors.size() - 3;

    struct Change
    {
        Unit unit;
        QWColor color;
    };
    QList<Change> changes;
    qsizetype index = 0;
    const QList<Unit> units = unitsOfDocument(document, countState);
    for (const Unit &unit : units) {
        if (isBlank(document, unit))
            continue;
        const QWColor &color = colors.at(index);
        if (!showsColor(document, unit, color.toQColor()))
            changes.append({ unit, color });
        if (++index >= limit)
            index = 0;
    }
    if (changes.isEmpty())
        return 0;

    QTextCursor cursor(&document);
    // The edit remembers where the cursor stood as it began, for its undo.
    cursor.setPosition(qBound(0, caretPosition, document.characterCount() - 1));
    cursor.beginEditBlock();
    for (const Change &change : std::as_const(changes)) {
        QWTextAttributes attributes;
        attributes.setForegroundColor(change.color);
        cursor.setPosition(change.unit.position);
        cursor.setPosition(change.unit.position + change.unit.length, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(attributes.toCharFormat());
    }
    cursor.endEditBlock();
    return int(changes.size());
}
