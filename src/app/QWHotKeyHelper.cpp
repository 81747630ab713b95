#include "app/QWHotKeyHelper.h"

#include "app/QWGlobalShortcutsPortal.h"
#include "app/QWHotKeyGrabber.h"
#include "app/QWPortalHotKeyGrabber.h"
#include "app/QWX11HotKeyGrabber.h"
#include "app/SNPlatformSelection.h"
#include "kit/QWKeyCodes.h"
#include "settings/SNApplicationInfo.h"

#include <QtDebug>

namespace {

// X11 grabs on an X11 desktop. Through XWayland they see only keys typed into X11 windows, so a
// Wayland session binds the keys through the desktop's portal, where there is one.
std::unique_ptr<QWHotKeyGrabber> grabberForSession()
{
    std::unique_ptr<QWHotKeyGrabber> x11 = QWX11HotKeyGrabber::create();
    if (!SNPlatformSelection::isWaylandSession())
        return x11;
    return std::make_unique<QWPortalHotKeyGrabber>(
        std::make_unique<QWGlobalShortcutsPortal>(SNApplicationInfo::applicationIdentifier()),
        std::move(x11));
}

} // namespace

QWHotKeyHelper::QWHotKeyHelper(std::unique_ptr<QWHotKeyGrabber> grabber)
    : m_grabber(std::move(grabber))
{
    registerHandlers();
}

QWHotKeyHelper::~QWHotKeyHelper()
{
    if (!m_grabber)
        return;
    for (auto it = m_carbonHotkeys.cbegin(); it != m_carbonHotkeys.cend(); ++it)
        m_grabber->ungrabKeyWithIdentifier(it.key());
}

QWHotKeyHelper &QWHotKeyHelper::sharedHelper()
{
    // Never destroyed: its grabs go with the X connection, which outlives no QApplication.
    static QWHotKeyHelper *const helper = new QWHotKeyHelper(grabberForSession());
    return *helper;
}

void QWHotKeyHelper::registerHandlers()
{
    if (!m_grabber)
        return;
    m_grabber->setPressedHandler([this](qint64 identifier) { hotkeyWasPressedWithID(identifier); });
    m_grabber->setReleasedHandler(
        [this](qint64 identifier) { hotkeyWasReleasedWithID(identifier); });
}

qint64 QWHotKeyHelper::registerHotKey(
    const QWKeyCombo &combo, const QString &name, const QString &description)
{
    if (combo.isEmpty())
        return -1;
    const qint64 identifier = m_nextIdentifier;
    const QWHotKeyRequest request { identifier, combo.code, translateModifierFlags(combo.flags),
        name.isEmpty() ? QString::number(identifier) : name, description };
    if (!m_grabber || !m_grabber->grabKey(request)) {
        qWarning("[DEBUG] Error registering hotkey");
        return -1;
    }
    m_carbonHotkeys.insert(identifier, combo);
    ++m_nextIdentifier;
    return identifier;
}

void QWHotKeyHelper::unregisterHotkeyWithID(qint64 identifier)
{
    if (!m_carbonHotkeys.remove(identifier))
        return;
    m_grabber->ungrabKeyWithIdentifier(identifier);
}

quint16 QWHotKeyHelper::translateModifierFlags(quint64 flags)
{
    return QWKeyCodes::x11ModifiersForFlags(flags);
}

void QWHotKeyHelper::hotkeyWasPressedWithID(qint64 identifier)
{
    if (m_pressedBlock)
        m_pressedBlock(identifier);
}

void QWHotKeyHelper::hotkeyWasReleasedWithID(qint64 identifier)
{
    if (m_releasedBlock)
        m_releasedBlock(identifier);
}
