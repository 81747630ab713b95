#pragma once

#include <QSize>

class SNStickyWindow;

// What a note window asks of, and tells, the controller that shows a note in it. Only the close
// decision and the close itself must be answered; the rest is news the delegate may ignore.
class SNStickyWindowDelegate
{
public:
    virtual ~SNStickyWindowDelegate();

    // Asked before every close, whoever asked for it (Ctrl+W, a button, the window manager).
    virtual bool windowShouldClose(SNStickyWindow *window) = 0;
    // The window is closing: the answer was yes.
    virtual void windowWillClose(SNStickyWindow *window) = 0;
    virtual void windowDidMove(SNStickyWindow *window);
    virtual void windowDidResize(SNStickyWindow *window);
    // The size a resize by the user ends at, given the size the pointer asks for.
    virtual QSize windowWillResizeToSize(SNStickyWindow *window, const QSize &size);
    // The window became the active one, the one that types.
    virtual void windowDidBecomeMain(SNStickyWindow *window);

protected:
    SNStickyWindowDelegate() = default;
    SNStickyWindowDelegate(const SNStickyWindowDelegate &) = default;
    SNStickyWindowDelegate &operator=(const SNStickyWindowDelegate &) = default;
};
