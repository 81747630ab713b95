#include "app/QWApplicationHider.h"

#include <QApplication>

void QWApplicationHider::hide()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        const Qt::WindowType type = window->windowType();
        if (!window->isVisible() || type == Qt::Popup || type == Qt::ToolTip)
            continue;
        window->hide();
        m_hiddenWindows.append(window);
    }
}

void QWApplicationHider::unhide()
{
    const QList<QPointer<QWidget>> windows = std::exchange(m_hiddenWindows, {});
    for (const QPointer<QWidget> &window : windows) {
        if (!window)
            continue;
        window->show();
        window->raise();
    }
}
