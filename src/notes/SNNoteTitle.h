#pragma once

#include <QString>

class QTextDocument;

// A note's title: its first paragraph that holds more than white space.
class SNNoteTitle final
{
public:
    static constexpr qsizetype windowTitleLimit = 50;

    SNNoteTitle() = delete;

    // The first non-blank paragraph, trimmed; empty when there is none.
    static QString titleTextOfDocument(const QTextDocument &document);
    // The same for plain text, whose paragraphs end at line breaks.
    static QString titleTextOfString(const QString &text);
    // For the window: up to 50 characters, longer titles cut there and "..." added.
    static QString windowTitle(const QString &titleText);
    // For the collapsed note: the whole title.
    static QString collapsedTitle(const QString &titleText);
    static QString untitledTitle(); // "Untitled Sticky Note"
};
