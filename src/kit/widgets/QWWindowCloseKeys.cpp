#include "kit/widgets/QWWindowCloseKeys.h"

#include <QKeyEvent>
#include <QWidget>

QWWindowCloseKeys::QWWindowCloseKeys(QWidget *window) : QObject(window)
{
    window->installEventFilter(this);
}

void QWWindowCloseKeys::install(QWidget *window)
{
    new QWWindowCloseKeys(window); // owned by the window
}

bool QWWindowCloseKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != parent() || event->type() != QEvent::KeyPress)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    if (!key->matches(QKeySequence::Cancel) && !key->matches(QKeySequence::Close))
        return false;
    static_cast<QWidget *>(watched)->close();
    return true;
}
