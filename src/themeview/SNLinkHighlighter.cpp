#include "themeview/SNLinkHighlighter.h"

#include "kit/QWSpellChecker.h"
#include "tags/SNHashtagScanner.h"

#include <QTextBlock>

SNLinkHighlighter::SNLinkHighlighter(QTextDocument *document) : QSyntaxHighlighter(document) { }

SNLinkHighlighter::~SNLinkHighlighter() = default;

void SNLinkHighlighter::setLinkFormat(const QTextCharFormat &format)
{
    if (m_linkFormat == format)
        return;
    m_linkFormat = format;
    rehighlight();
}

void SNLinkHighlighter::setSpellChecker(QWSpellChecker *checker)
{
    if (m_spellChecker == checker)
        return;
    m_spellChecker = checker;
    if (m_checksSpelling)
        rehighlight();
}

void SNLinkHighlighter::setChecksSpelling(bool checks)
{
    if (m_checksSpelling == checks)
        return;
    m_checksSpelling = checks;
    rehighlight();
}

QTextCharFormat SNLinkHighlighter::misspelledFormat()
{
    QTextCharFormat format;
    format.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
    format.setUnderlineColor(QColor(230, 40, 40));
    return format;
}

void SNLinkHighlighter::highlightBlock(const QString &text)
{
    const bool linksStyled = !m_linkFormat.properties().isEmpty();
    const bool spelling = m_checksSpelling && m_spellChecker && m_spellChecker->isAvailable();
    if (!linksStyled && !spelling)
        return;
    const QTextBlock block = currentBlock();
    // Links and tags first: a word inside one is the user's name for something, not a
    // misspelling.
    QList<std::pair<int, int>> links;
    for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        if (!fragment.isValid() || !fragment.charFormat().isAnchor())
            continue;
        const int start = fragment.position() - block.position();
        links.append({ start, start + fragment.length() });
    }
    const QList<SNHashtagScanner::Occurrence> tags = SNHashtagScanner::occurrencesInString(text);
    for (const SNHashtagScanner::Occurrence &tag : tags)
        links.append({ int(tag.start), int(tag.start + tag.length) });
    if (linksStyled) {
        for (const auto &[start, end] : std::as_const(links))
            setFormat(start, end - start, m_linkFormat);
    }
    if (!spelling)
        return;
    static const QTextCharFormat marked = misspelledFormat();
    const QList<QWSpellChecker::Range> ranges = m_spellChecker->misspelledRangesInString(text);
    for (const QWSpellChecker::Range &range : ranges) {
        const int start = int(range.start);
        const int end = int(range.start + range.length);
        const bool inLink
            = std::any_of(links.cbegin(), links.cend(), [&](const std::pair<int, int> &link) {
                  return start < link.second && end > link.first;
              });
        if (inLink)
            continue;
        setFormat(start, end - start, marked);
    }
}
