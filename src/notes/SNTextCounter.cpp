#include "notes/SNTextCounter.h"

#include <QCoreApplication>
#include <QTextBoundaryFinder>

namespace {

bool isLineEnd(QChar character)
{
    return character == QLatin1Char('\n') || character == QLatin1Char('\r')
        || character == QChar::ParagraphSeparator || character == QChar::LineSeparator;
}

qsizetype countWords(const QString &text)
{
    qsizetype words = 0;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        const qsizetype end = finder.position();
        if (finder.boundaryReasons().testFlag(QTextBoundaryFinder::EndOfItem)) {
            // Punctuation and symbols between words are items too; a word holds a letter or
            // a digit.
            for (qsizetype i = start; i < end; ++i) {
                if (text.at(i).isLetterOrNumber()) {
                    ++words;
                    break;
                }
            }
        }
        start = end;
    }
    return words;
}

qsizetype countParagraphs(const QString &text)
{
    qsizetype paragraphs = 0;
    bool inParagraph = false;
    for (const QChar character : text) {
        if (isLineEnd(character) && character != QChar::LineSeparator) {
            inParagraph = false;
        } else if (!inParagraph && !character.isSpace()) {
            inParagraph = true;
            ++paragraphs;
        }
    }
    return paragraphs;
}

qsizetype countCharacters(const QString &text)
{
    qsizetype characters = 0;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        const qsizetype end = finder.position();
        if (!isLineEnd(text.at(start)))
            ++characters;
        start = end;
    }
    return characters;
}

} // namespace

qsizetype SNTextCounter::countOfText(const QString &text, qint64 countState)
{
    switch (countState) {
    case CountWords:
        return countWords(text);
    case CountParagraphs:
        return countParagraphs(text);
    case CountCharacters:
        return countCharacters(text);
    default:
        return 0;
    }
}

QString SNTextCounter::labelText(qsizetype count, qint64 countState)
{
    QString unit;
    switch (countState) {
    case CountWords:
        unit = QCoreApplication::translate("SNTextCounter", "word");
        break;
    case CountParagraphs:
        unit = QCoreApplication::translate("SNTextCounter", "paragraph");
        break;
    case CountCharacters:
        unit = QCoreApplication::translate("SNTextCounter", "character");
        break;
    default:
        break;
    }
    const QString suffix = count == 1 ? QString() : QStringLiteral("s");
    // "%ld %@%@": the count, the unit, the plural ending.
    return QStringLiteral("%1 %2%3").arg(count).arg(unit, suffix);
}

qint64 SNTextCounter::nextCountState(qint64 countState)
{
    const qint64 next = countState + 1;
    return next >= CountStateCount ? CountWords : next;
}
