#include "notewindow/SNTextViewDelegate.h"

SNTextViewDelegate::~SNTextViewDelegate() = default;

QMenu *SNTextViewDelegate::textViewMenuForEventAtIndex(SNTextView *, QMenu *proposedMenu, int)
{
    return proposedMenu;
}

bool SNTextViewDelegate::textViewClickedOnLinkAtIndex(SNTextView *, const QString &, int)
{
    return false;
}

QTextCharFormat SNTextViewDelegate::textViewShouldChangeTypingAttributesToAttributes(
    SNTextView *, const QTextCharFormat &, const QTextCharFormat &newAttributes)
{
    return newAttributes;
}
