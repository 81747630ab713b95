#include "app/QWHotKeyGrabber.h"

QWHotKeyGrabber::~QWHotKeyGrabber() = default;

QString QWHotKeyGrabber::desktopTrigger(const QString &) const
{
    return {};
}

void QWHotKeyGrabber::keyWasPressed(qint64 identifier) const
{
    if (m_pressedHandler)
        m_pressedHandler(identifier);
}

void QWHotKeyGrabber::keyWasReleased(qint64 identifier) const
{
    if (m_releasedHandler)
        m_releasedHandler(identifier);
}
