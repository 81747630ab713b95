#include "notewindow/SNLinkHighlighter.h"

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

void SNLinkHighlighter::highlightBlock(const QString &)
{
    if (m_linkFormat.properties().isEmpty())
        return;
    const QTextBlock block = currentBlock();
    for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        if (fragment.isValid() && fragment.charFormat().isAnchor())
            setFormat(fragment.position() - block.position(), fragment.length(), m_linkFormat);
    }
}
