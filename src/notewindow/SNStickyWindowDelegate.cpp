#include "notewindow/SNStickyWindowDelegate.h"

SNStickyWindowDelegate::~SNStickyWindowDelegate() = default;

void SNStickyWindowDelegate::windowDidMove(SNStickyWindow *) { }

void SNStickyWindowDelegate::windowDidResize(SNStickyWindow *) { }

QSize SNStickyWindowDelegate::windowWillResizeToSize(SNStickyWindow *, const QSize &size)
{
    return size;
}

void SNStickyWindowDelegate::windowDidBecomeMain(SNStickyWindow *) { }
