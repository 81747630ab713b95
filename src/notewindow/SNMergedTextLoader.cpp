#include "notewindow/SNMergedTextLoader.h"

#include "kit/QWAttributedString.h"
#include "themeview/SNThemeTextStyler.h"

#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>

#include <algorithm>

int SNMergedTextLoader::mapPosition(const QString &before, const QString &after, int position)
{
    const qsizetype shorter = std::min(before.size(), after.size());
    qsizetype prefix = 0;
    while (prefix < shorter && before.at(prefix) == after.at(prefix))
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix
        && before.at(before.size() - 1 - suffix) == after.at(after.size() - 1 - suffix))
        ++suffix;
    if (position <= prefix)
        return position;
    if (position >= before.size() - suffix)
        return int(std::clamp<qsizetype>(position + after.size() - before.size(), 0, after.size()));
    return int(after.size() - suffix);
}

bool SNMergedTextLoader::load(
    QTextEdit &editor, const QWAttributedString &text, const SNTheme *theme)
{
    QTextDocument &document = *editor.document();
    const QString before = document.toPlainText();
    if (QWAttributedString::fromTextDocument(document) == text)
        return false;
    // The text as the editor's plain text reads it, one character per line break.
    QString shown = text.string();
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    shown.replace(QChar(0x2029), QLatin1Char('\n'));
    shown.replace(QChar(0x2028), QLatin1Char('\n'));

    const QTextCursor cursor = editor.textCursor();
    const int anchor = mapPosition(before, shown, cursor.anchor());
    const int position = mapPosition(before, shown, cursor.position());
    const int horizontal = editor.horizontalScrollBar()->value();
    const int vertical = editor.verticalScrollBar()->value();
    {
        const QSignalBlocker blocker(&editor);
        text.toTextDocument(document);
        if (theme)
            SNThemeTextStyler::neutralizeDocument(document, *theme);
        QTextCursor moved(&document);
        const int end = document.characterCount() - 1;
        moved.setPosition(std::clamp(anchor, 0, end));
        moved.setPosition(std::clamp(position, 0, end), QTextCursor::KeepAnchor);
        editor.setTextCursor(moved);
    }
    editor.horizontalScrollBar()->setValue(horizontal);
    editor.verticalScrollBar()->setValue(vertical);
    return true;
}
