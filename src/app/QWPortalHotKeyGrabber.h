#pragma once

#include "app/QWGlobalShortcutsPortal.h"
#include "app/QWHotKeyGrabber.h"

#include <QHash>

#include <memory>

class QWDebouncer;
struct QWKeyCombo;

// System-wide hot keys on a Wayland desktop, which lets no program grab keys: the desktop's
// global shortcuts portal binds them, by name, and its own settings decide the keys. Until the
// portal has answered, and where there is none, the grabs go to the fallback (X11 grabs through
// XWayland, which see only keys typed into X11 windows). Changes made in one go (the settings
// replace both hot keys at once) make one new binding.
class QWPortalHotKeyGrabber final : public QWHotKeyGrabber
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWPortalHotKeyGrabber)

public:
    // The fallback may be null.
    QWPortalHotKeyGrabber(
        std::unique_ptr<QWGlobalShortcutsPortal> portal, std::unique_ptr<QWHotKeyGrabber> fallback);
    ~QWPortalHotKeyGrabber() override;

    // Taken at once; the desktop binds it a moment later, or may refuse it then.
    bool grabKey(const QWHotKeyRequest &request) override;
    void ungrabKeyWithIdentifier(qint64 identifier) override;
    Reach reach() const override;
    QString desktopTrigger(const QString &name) const override;

    // A combination as the freedesktop shortcuts format writes it: "CTRL+ALT+LOGO+n", "F5".
    // Empty when it has no key.
    static QString preferredTrigger(const QWKeyCombo &combo);

    const QWGlobalShortcutsPortal &portal() const { return *m_portal; }

private:
    void portalDidAnswer();
    void bindSoon();
    void bindNow();
    qint64 identifierForName(const QString &name) const;

    std::unique_ptr<QWGlobalShortcutsPortal> m_portal;
    std::unique_ptr<QWHotKeyGrabber> m_fallback;
    // Every grab asked for, by identifier, whoever holds it.
    QHash<qint64, QWHotKeyRequest> m_requests;
    std::unique_ptr<QWDebouncer> m_binding;
    // Whether the grabs are the fallback's: until the portal is ready, and while it is gone.
    bool m_fallbackHolds = true;
};
