#include "notes/SNNoteTitle.h"

#include <QCoreApplication>
#include <QTextBlock>
#include <QTextDocument>

QString SNNoteTitle::untitledTitle()
{
    return QCoreApplication::translate("SNNoteTitle", "Untitled Sticky Note");
}

QString SNNoteTitle::titleTextOfDocument(const QTextDocument &document)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        // Soft line breaks stay inside a paragraph; trimmed() takes them off its ends.
        const QString text = block.text().trimmed();
        if (!text.isEmpty())
            return text;
    }
    return QString();
}

QString SNNoteTitle::titleTextOfString(const QString &text)
{
    const QList<QStringView> paragraphs = QStringView(text).split(QChar::ParagraphSeparator);
    for (QStringView paragraph : paragraphs) {
        for (QStringView line : paragraph.split(QLatin1Char('\n'))) {
            if (const QStringView trimmed = line.trimmed(); !trimmed.isEmpty())
                return trimmed.toString();
        }
    }
    return QString();
}

QString SNNoteTitle::windowTitle(const QString &titleText)
{
    if (titleText.isEmpty())
        return untitledTitle();
    if (titleText.size() <= windowTitleLimit)
        return titleText;
    qsizetype cut = windowTitleLimit;
    // Never half a character that takes two code units.
    if (titleText.at(cut - 1).isHighSurrogate())
        --cut;
    return titleText.left(cut) + QStringLiteral("...");
}

QString SNNoteTitle::collapsedTitle(const QString &titleText)
{
    return titleText.isEmpty() ? untitledTitle() : titleText;
}
