#pragma once

#include "kit/QWColor.h"

#include <QList>

class QTextDocument;

// Paints the text of a note in a cycle of colours, one colour per word, paragraph or character
// (by the note's count state), skipping what is only white space. The last three colours of the
// list are never used: with the note palette that leaves out Gray, Black and White, which would
// not look like a rainbow.
class SNRainbowizer final
{
public:
    SNRainbowizer() = delete;

    // A stretch of the document, in document positions.
    struct Unit
    {
        int position = 0;
        int length = 0;
        friend bool operator==(const Unit &, const Unit &) = default;
    };

    // Words, paragraphs (without their line end) or characters (as the user sees them) of
    // the document, in order, for a note's count state (SNStickyNote::CountState); none for a
    // state outside it.
    static QList<Unit> unitsOfDocument(const QTextDocument &document, qint64 countState);

    // Colours the units that are not blank, in one edit (one undo step). Units that already
    // show their colour are left alone, so colouring twice changes nothing the second time and
    // adds no undo step. While the document has redo steps nothing is coloured: its text was
    // brought back by an undo and shows the colours it had, and colouring it again would make
    // every undo of a colour step undo itself at once. Undoing the colours puts the caret back
    // at caretPosition (the editor's caret when they were made). Returns the number of units
    // coloured.
    static int rainbowizeDocument(QTextDocument &document, qint64 countState,
        const QList<QWColor> &colors, int caretPosition = 0);
};
