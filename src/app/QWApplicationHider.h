#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

// Hides the program's windows as a whole and brings back exactly those it hid, as a desktop
// hides and shows a whole application. Menus and tool tips are left alone: they close by
// themselves.
class QWApplicationHider final
{
public:
    // Hides every visible top-level window, remembering it.
    void hide();
    // Shows again, in the order they were hidden, the windows hide() hid that still exist,
    // and forgets them.
    void unhide();

private:
    QList<QPointer<QWidget>> m_hiddenWindows;
};
