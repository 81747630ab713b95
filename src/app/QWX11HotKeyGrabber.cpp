#include "app/QWX11HotKeyGrabber.h"

#include "kit/QWKeyCodes.h"
#include "kit/widgets/QWX11Connection.h"

#include <QByteArray>
#include <QGuiApplication>

#include <X11/X.h>
#include <X11/keysym.h>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

using QWX11Connection::OwnedReply;
using QWX11Connection::takeReply;

namespace {

// The modifiers a hot key can be made of; the locks and pointer buttons are not among them.
constexpr quint16 comboModifiersMask = ShiftMask | ControlMask | Mod1Mask | Mod4Mask;

// The server's key map, read when a grab is made: the user may have changed it since the last.
class KeyboardMapping final
{
public:
    explicit KeyboardMapping(xcb_connection_t *connection)
    {
        const xcb_setup_t *setup = xcb_get_setup(connection);
        m_minimumKeycode = setup->min_keycode;
        const int count = setup->max_keycode - setup->min_keycode + 1;
        m_reply = takeReply(xcb_get_keyboard_mapping_reply(connection,
            xcb_get_keyboard_mapping(connection, setup->min_keycode, static_cast<quint8>(count)),
            nullptr));
        m_modifiers = takeReply(xcb_get_modifier_mapping_reply(
            connection, xcb_get_modifier_mapping(connection), nullptr));
    }

    // Every key whose unshifted or shifted symbol is `keysym`.
    QList<quint8> keycodesForKeysym(quint32 keysym) const
    {
        QList<quint8> keycodes;
        if (!m_reply || keysym == NoSymbol)
            return keycodes;
        const int perKeycode = m_reply->keysyms_per_keycode;
        const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(m_reply.get());
        const int length = xcb_get_keyboard_mapping_keysyms_length(m_reply.get());
        const int columns = qMin(perKeycode, 2);
        for (int index = 0; perKeycode > 0 && index + perKeycode <= length; index += perKeycode) {
            for (int column = 0; column < columns; ++column) {
                if (symbols[index + column] == keysym) {
                    keycodes.append(static_cast<quint8>(m_minimumKeycode + index / perKeycode));
                    break;
                }
            }
        }
        return keycodes;
    }

    // The modifier bit Num Lock sets; 0 when no modifier carries it.
    quint16 numLockMask() const
    {
        if (!m_modifiers)
            return 0;
        const QList<quint8> numLockKeys = keycodesForKeysym(XK_Num_Lock);
        const int perModifier = m_modifiers->keycodes_per_modifier;
        const xcb_keycode_t *keycodes = xcb_get_modifier_mapping_keycodes(m_modifiers.get());
        for (int modifier = 0; modifier < 8; ++modifier) {
            for (int slot = 0; slot < perModifier; ++slot) {
                const xcb_keycode_t keycode = keycodes[modifier * perModifier + slot];
                if (keycode != 0 && numLockKeys.contains(keycode))
                    return static_cast<quint16>(1 << modifier);
            }
        }
        return 0;
    }

private:
    int m_minimumKeycode = 0;
    OwnedReply<xcb_get_keyboard_mapping_reply_t> m_reply { nullptr, &std::free };
    OwnedReply<xcb_get_modifier_mapping_reply_t> m_modifiers { nullptr, &std::free };
};

} // namespace

std::unique_ptr<QWX11HotKeyGrabber> QWX11HotKeyGrabber::create()
{
    xcb_connection_t *connection = QWX11Connection::connection();
    if (!connection)
        return nullptr;
    return std::unique_ptr<QWX11HotKeyGrabber>(new QWX11HotKeyGrabber(connection));
}

QWX11HotKeyGrabber::QWX11HotKeyGrabber(xcb_connection_t *connection) : m_connection(connection)
{
    for (xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem;
         xcb_screen_next(&it))
        m_roots.append(it.data->root);
    qGuiApp->installNativeEventFilter(this);
}

QWX11HotKeyGrabber::~QWX11HotKeyGrabber()
{
    for (const Grab &grab : std::as_const(m_grabs))
        ungrab(grab);
    if (qGuiApp) {
        xcb_flush(m_connection);
        qGuiApp->removeNativeEventFilter(this);
    }
}

QList<quint16> QWX11HotKeyGrabber::lockVariants(quint16 numLockMask) const
{
    QList<quint16> variants { 0, LockMask };
    if (numLockMask != 0 && numLockMask != LockMask)
        variants << numLockMask << static_cast<quint16>(numLockMask | LockMask);
    return variants;
}

bool QWX11HotKeyGrabber::grabKey(const QWHotKeyRequest &request)
{
    const KeyboardMapping mapping(m_connection);
    Grab grab;
    grab.keycodes = mapping.keycodesForKeysym(QWKeyCodes::keysymForKeyCode(request.code));
    grab.modifiers = request.modifiers & comboModifiersMask;
    if (grab.keycodes.isEmpty())
        return false;

    QList<xcb_void_cookie_t> cookies;
    const QList<quint16> variants = lockVariants(mapping.numLockMask());
    for (const quint32 root : std::as_const(m_roots)) {
        for (const quint8 keycode : std::as_const(grab.keycodes)) {
            for (const quint16 variant : variants) {
                cookies.append(xcb_grab_key_checked(m_connection, 1, root,
                    static_cast<quint16>(grab.modifiers | variant), keycode, XCB_GRAB_MODE_ASYNC,
                    XCB_GRAB_MODE_ASYNC));
            }
        }
    }
    // Every request is checked, so that no error is left for Qt to report.
    bool refused = false;
    for (const xcb_void_cookie_t &cookie : std::as_const(cookies)) {
        if (xcb_generic_error_t *error = xcb_request_check(m_connection, cookie)) {
            refused = true;
            std::free(error);
        }
    }
    if (refused) {
        // Releases only our own grabs; another program's stay as they are.
        ungrab(grab);
        xcb_flush(m_connection);
        return false;
    }
    m_grabs.insert(request.identifier, grab);
    return true;
}

void QWX11HotKeyGrabber::ungrab(const Grab &grab)
{
    const KeyboardMapping mapping(m_connection);
    const QList<quint16> variants = lockVariants(mapping.numLockMask());
    for (const quint32 root : std::as_const(m_roots)) {
        for (const quint8 keycode : grab.keycodes) {
            for (const quint16 variant : variants)
                xcb_ungrab_key(
                    m_connection, keycode, root, static_cast<quint16>(grab.modifiers | variant));
        }
    }
}

void QWX11HotKeyGrabber::ungrabKeyWithIdentifier(qint64 identifier)
{
    const auto found = m_grabs.constFind(identifier);
    if (found == m_grabs.cend())
        return;
    ungrab(*found);
    m_grabs.erase(found);
    for (auto it = m_pressedKeys.begin(); it != m_pressedKeys.end();)
        it = it.value() == identifier ? m_pressedKeys.erase(it) : std::next(it);
    xcb_flush(m_connection);
}

bool QWX11HotKeyGrabber::isRootWindow(quint32 window) const
{
    return m_roots.contains(window);
}

qint64 QWX11HotKeyGrabber::identifierForKey(quint8 keycode, quint16 state) const
{
    const quint16 modifiers = state & comboModifiersMask;
    for (auto it = m_grabs.cbegin(); it != m_grabs.cend(); ++it) {
        if (it->modifiers == modifiers && it->keycodes.contains(keycode))
            return it.key();
    }
    return -1;
}

bool QWX11HotKeyGrabber::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != QByteArrayLiteral("xcb_generic_event_t"))
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const quint8 type = event->response_type & ~0x80;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
        return false;
    // Key press and release events share one layout.
    const auto *key = reinterpret_cast<const xcb_key_press_event_t *>(event);
    if (!isRootWindow(key->event))
        return false;

    if (type == XCB_KEY_PRESS) {
        const qint64 identifier = identifierForKey(key->detail, key->state);
        if (identifier < 0)
            return false;
        m_pressedKeys.insert(key->detail, identifier);
        keyWasPressed(identifier);
        return true;
    }
    const qint64 identifier = m_pressedKeys.take(key->detail);
    if (identifier <= 0)
        return false;
    keyWasReleased(identifier);
    return true;
}
