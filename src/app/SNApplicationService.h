#pragma once

#include "app/SNLaunchRequest.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <functional>

// The running program's face on the session bus: the freedesktop application interface, through
// which a second start, the desktop entry's actions and the desktop's own shortcut settings
// reach it. Each call becomes a launch request for the handler; a handler's error text goes
// back to the caller as a D-Bus error.
class SNApplicationService final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
    Q_DISABLE_COPY_MOVE(SNApplicationService)

public:
    static QString interfaceName() { return QStringLiteral("org.freedesktop.Application"); }
    static QString failedErrorName() { return QStringLiteral("org.vellumo.Vellumo.Error.Failed"); }

    // Returns an error text, or nothing when the request was carried out.
    using Handler = std::function<QString(const SNLaunchRequest &request)>;

    // Adapts `exported`, the object registered on the bus.
    explicit SNApplicationService(QObject *exported);
    ~SNApplicationService() override;

    void setHandler(Handler handler) { m_handler = std::move(handler); }

public Q_SLOTS:
    void Activate(const QVariantMap &platformData, const QDBusMessage &message);
    void Open(
        const QStringList &uris, const QVariantMap &platformData, const QDBusMessage &message);
    void ActivateAction(const QString &actionName, const QVariantList &parameter,
        const QVariantMap &platformData, const QDBusMessage &message);

private:
    void handle(const SNLaunchRequest &request, const QDBusMessage &message);

    Handler m_handler;
};
