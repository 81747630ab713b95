#pragma once

#include <QTextCharFormat>

class QContextMenuEvent;
class QMenu;
class QString;
class SNTextView;

// What a note's editor asks of the controller of its note: the menu of a right click, what a
// click on a link does, and the format that typing continues in.
class SNTextViewDelegate
{
public:
    virtual ~SNTextViewDelegate();

    // The menu to show for a right click at a character index, given the editor's own menu. A
    // menu made here is to be a child of the proposed one, which the editor deletes.
    virtual QMenu *textViewMenuForEventAtIndex(SNTextView *view, QMenu *proposedMenu, int index);
    // True when the click was handled; otherwise the editor opens the link itself.
    virtual bool textViewClickedOnLinkAtIndex(SNTextView *view, const QString &link, int index);
    // The format that what is typed next takes.
    virtual QTextCharFormat textViewShouldChangeTypingAttributesToAttributes(SNTextView *view,
        const QTextCharFormat &oldAttributes, const QTextCharFormat &newAttributes);

protected:
    SNTextViewDelegate() = default;
    SNTextViewDelegate(const SNTextViewDelegate &) = default;
    SNTextViewDelegate &operator=(const SNTextViewDelegate &) = default;
};
