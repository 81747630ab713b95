#include "app/QWPortalHotKeyGrabber.h"

#include "kit/QWDebouncer.h"
#include "kit/QWKeyCodes.h"
#include "kit/QWKeyCombo.h"

#include <X11/Xlib.h>
#include <algorithm>

using namespace Qt::StringLiterals;

QWPortalHotKeyGrabber::QWPortalHotKeyGrabber(
    std::unique_ptr<QWGlobalShortcutsPortal> portal, std::unique_ptr<QWHotKeyGrabber> fallback)
    : m_portal(std::move(portal)),
      m_fallback(std::move(fallback)),
      m_binding(std::make_unique<QWDebouncer>(0.0, [this] { bindNow(); }))
{
    connect(m_portal.get(), &QWGlobalShortcutsPortal::stateDidChange, this,
        &QWPortalHotKeyGrabber::portalDidAnswer);
    connect(m_portal.get(), &QWGlobalShortcutsPortal::triggersDidChange, this,
        &QWHotKeyGrabber::reachDidChange);
    connect(m_portal.get(), &QWGlobalShortcutsPortal::shortcutActivated, this,
        [this](const QString &name) {
            if (const qint64 identifier = identifierForName(name); identifier >= 0)
                keyWasPressed(identifier);
        });
    connect(m_portal.get(), &QWGlobalShortcutsPortal::shortcutDeactivated, this,
        [this](const QString &name) {
            if (const qint64 identifier = identifierForName(name); identifier >= 0)
                keyWasReleased(identifier);
        });
    if (m_fallback) {
        m_fallback->setPressedHandler([this](qint64 identifier) { keyWasPressed(identifier); });
        m_fallback->setReleasedHandler([this](qint64 identifier) { keyWasReleased(identifier); });
    }
}

QWPortalHotKeyGrabber::~QWPortalHotKeyGrabber() = default;

bool QWPortalHotKeyGrabber::grabKey(const QWHotKeyRequest &request)
{
    m_requests.insert(request.identifier, request);
    if (!m_fallbackHolds) {
        bindSoon();
        return true;
    }
    const bool held = m_fallback && m_fallback->grabKey(request);
    // While the portal has not answered, it may yet take what the fallback refuses.
    if (held || m_portal->state() == QWGlobalShortcutsPortal::State::Asking)
        return true;
    m_requests.remove(request.identifier);
    return false;
}

void QWPortalHotKeyGrabber::ungrabKeyWithIdentifier(qint64 identifier)
{
    if (!m_requests.remove(identifier))
        return;
    if (!m_fallbackHolds)
        bindSoon();
    else if (m_fallback)
        m_fallback->ungrabKeyWithIdentifier(identifier);
}

QWHotKeyGrabber::Reach QWPortalHotKeyGrabber::reach() const
{
    return m_portal->state() == QWGlobalShortcutsPortal::State::Ready ? Reach::DesktopDecides
                                                                      : Reach::ProgramWindowsOnly;
}

QString QWPortalHotKeyGrabber::desktopTrigger(const QString &name) const
{
    return m_portal->triggers().value(name);
}

void QWPortalHotKeyGrabber::portalDidAnswer()
{
    // The keys move to the portal, or back when a portal that had them goes away.
    const bool portalTakes = m_portal->state() == QWGlobalShortcutsPortal::State::Ready;
    if (portalTakes == m_fallbackHolds) {
        m_fallbackHolds = !portalTakes;
        for (const QWHotKeyRequest &request : std::as_const(m_requests)) {
            if (!m_fallback)
                break;
            if (portalTakes)
                m_fallback->ungrabKeyWithIdentifier(request.identifier);
            else
                m_fallback->grabKey(request);
        }
    }
    if (portalTakes)
        bindSoon();
    Q_EMIT reachDidChange();
}

void QWPortalHotKeyGrabber::bindSoon()
{
    m_binding->restart();
}

void QWPortalHotKeyGrabber::bindNow()
{
    QList<QWGlobalShortcutsPortal::Shortcut> shortcuts;
    for (const QWHotKeyRequest &request : std::as_const(m_requests)) {
        const QWKeyCombo combo { QWKeyCodes::flagsForX11Modifiers(request.modifiers),
            request.code };
        shortcuts.append({ request.name, request.description, preferredTrigger(combo) });
    }
    // In a fixed order, so that the same keys make the same list and no new binding.
    std::sort(shortcuts.begin(), shortcuts.end(),
        [](const auto &left, const auto &right) { return left.name < right.name; });
    m_portal->bindShortcuts(shortcuts);
}

qint64 QWPortalHotKeyGrabber::identifierForName(const QString &name) const
{
    for (auto it = m_requests.cbegin(); it != m_requests.cend(); ++it) {
        if (it->name == name)
            return it.key();
    }
    return -1;
}

QString QWPortalHotKeyGrabber::preferredTrigger(const QWKeyCombo &combo)
{
    if (combo.isEmpty())
        return {};
    // Key names are the X keysym names the format is made of.
    const quint32 keysym = QWKeyCodes::keysymForKeyCode(combo.code);
    const char *key = keysym == NoSymbol ? nullptr : XKeysymToString(keysym);
    if (!key)
        return {};
    QStringList parts;
    if (combo.flags & QWKeyCombo::ControlKeyMask)
        parts << u"CTRL"_s;
    if (combo.flags & QWKeyCombo::OptionKeyMask)
        parts << u"ALT"_s;
    if (combo.flags & QWKeyCombo::ShiftKeyMask)
        parts << u"SHIFT"_s;
    if (combo.flags & QWKeyCombo::CommandKeyMask)
        parts << u"LOGO"_s;
    parts << QString::fromLatin1(key);
    return parts.join(u'+');
}
