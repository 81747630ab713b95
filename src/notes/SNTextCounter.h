#pragma once

#include <QString>

// What a note's counter shows: its words, paragraphs or characters, by the note's count state.
class SNTextCounter final
{
public:
    enum CountState : qint64 {
        CountWords = 0,
        CountParagraphs = 1,
        CountCharacters = 2,
        CountStateCount = 3,
    };

    SNTextCounter() = delete;

    // Words as the Unicode word rules find them; paragraphs that hold more than white space;
    // characters as a reader sees them (a letter with its accents, an emoji: one each), line
    // ends not included. An unknown state counts nothing.
    static qsizetype countOfText(const QString &text, qint64 countState);
    // "1 word", "0 words", "12 paragraphs"; the count alone for an unknown state.
    static QString labelText(qsizetype count, qint64 countState);
    // The state after this one: words, paragraphs, characters, words again.
    static qint64 nextCountState(qint64 countState);
};
