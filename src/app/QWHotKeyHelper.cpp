#include "app/QWHotKeyHelper.h"

#include "app/QWHotKeyGrabber.h"
#include "app/QWX11HotKeyGrabber.h"
#include "kit/QWKeyCodes.h"

#include <QtDebug>

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
    static QWHotKeyHelper *const helper = new QWHotKeyHelper(QWX11HotKeyGrabber::create());
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

qint64 QWHotKeyHelper::registerHotKey(const QWKeyCombo &combo)
{
    if (combo.isEmpty())
        return -1;
    const quint16 modifiers = translateModifierFlags(combo.flags);
    const qint64 identifier = m_nextIdentifier;
    if (!m_grabber || !m_grabber->grabKeyWithIdentifier(combo.code, modifiers, identifier)) {
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
