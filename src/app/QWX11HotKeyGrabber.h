#pragma once

#include "app/QWHotKeyGrabber.h"

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>

#include <memory>

struct xcb_connection_t;

// System-wide hot keys on X11: passive key grabs on every root window, read back through Qt's
// native event filter. A grab is exact about modifiers, so each combination is grabbed four
// times over, with and without Caps Lock and Num Lock; otherwise a hot key would stop working
// whenever Num Lock is on.
class QWX11HotKeyGrabber final : public QWHotKeyGrabber, public QAbstractNativeEventFilter
{
public:
    // Null when the program does not talk to an X server.
    static std::unique_ptr<QWX11HotKeyGrabber> create();
    ~QWX11HotKeyGrabber() override;

    bool grabKey(const QWHotKeyRequest &request) override;
    void ungrabKeyWithIdentifier(qint64 identifier) override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    struct Grab
    {
        QList<quint8> keycodes;
        quint16 modifiers = 0;
    };

    explicit QWX11HotKeyGrabber(xcb_connection_t *connection);
    void ungrab(const Grab &grab);
    // The lock modifiers a grab must also accept: none, Caps Lock, Num Lock and both.
    QList<quint16> lockVariants(quint16 numLockMask) const;
    bool isRootWindow(quint32 window) const;
    // The identifier of the grab that a key event with this key and state belongs to, or -1.
    qint64 identifierForKey(quint8 keycode, quint16 state) const;

    xcb_connection_t *m_connection;
    QList<quint32> m_roots;
    QHash<qint64, Grab> m_grabs;
    // Which grab each held key went to, so that its release is reported even when a modifier
    // was let go first.
    QHash<quint8, qint64> m_pressedKeys;
};
