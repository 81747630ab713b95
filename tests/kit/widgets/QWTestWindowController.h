#pragma once

#include "kit/widgets/QWWindowController.h"

#include <QEvent>
#include <QRect>

// Of a frameless window with that frame; announces its closing from the close, as a note does.
class QWTestWindowController : public QWWindowController
{
public:
    explicit QWTestWindowController(const QRect &frame = { 100, 100, 300, 200 })
        : m_frame(frame) { }

protected:
    std::unique_ptr<QWidget> loadWindow() override
    {
        auto window = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint);
        window->setGeometry(m_frame);
        window->installEventFilter(this);
        return window;
    }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == window() && event->type() == QEvent::Close)
            announceWindowWillClose();
        return false;
    }

private:
    QRect m_frame;
};
