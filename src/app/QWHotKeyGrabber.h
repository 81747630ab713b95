#pragma once

#include <QtGlobal>

#include <functional>

// Where system-wide key combinations are taken from the rest of the desktop. The hot-key helper
// hands each combination an identifier; the grabber reports presses and releases by it.
class QWHotKeyGrabber
{
    Q_DISABLE_COPY_MOVE(QWHotKeyGrabber)

public:
    using EventHandler = std::function<void(qint64 identifier)>;

    QWHotKeyGrabber() = default;
    virtual ~QWHotKeyGrabber();

    // `code` is a stored key code, `modifiers` an X11 modifier mask. False when the desktop
    // refuses (another program holds the combination, or the key does not exist).
    virtual bool grabKeyWithIdentifier(qint64 code, quint16 modifiers, qint64 identifier) = 0;
    // Unknown identifiers are ignored.
    virtual void ungrabKeyWithIdentifier(qint64 identifier) = 0;

    void setPressedHandler(EventHandler handler) { m_pressedHandler = std::move(handler); }
    void setReleasedHandler(EventHandler handler) { m_releasedHandler = std::move(handler); }

protected:
    void keyWasPressed(qint64 identifier) const;
    void keyWasReleased(qint64 identifier) const;

private:
    EventHandler m_pressedHandler;
    EventHandler m_releasedHandler;
};
