#include "import/SNKNotesHtml.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>

using namespace Qt::Literals::StringLiterals;

QWAttributedString SNKNotesHtml::toAttributedString(const QString &html)
{
    static const QRegularExpression bodyStyle(
        uR"((<body\b[^>]*?)\s+style\s*=\s*("[^"]*"|'[^']*'))"_s,
        QRegularExpression::CaseInsensitiveOption);
    QString cleaned = html;
    cleaned.replace(bodyStyle, u"\\1"_s);

    QTextDocument document;
    document.setHtml(cleaned);
    // Bullets are characters in a note: each list item gets one, indented by its level.
    QTextCursor cursor(&document);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextList *list = block.textList();
        if (!list)
            continue;
        const int level = std::max(1, list->format().indent());
        list->remove(block);
        cursor.setPosition(block.position());
        cursor.insertText(QString(2 * (level - 1), u' ') + u"• "_s, QTextCharFormat());
    }
    return QWAttributedString::fromTextDocument(document);
}
