#pragma once

#include "app/SNSyncCommand.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QString>

#include <functional>

// The running program's interface on the session bus for sharing the notes through a sync
// folder: the folder is set there so that sharing starts at once, and the status comes from the
// program that shares. A command's error goes back to the caller as a D-Bus error.
class SNSyncService final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.vellumo.Vellumo.Sync")
    Q_DISABLE_COPY_MOVE(SNSyncService)

public:
    static QString interfaceName() { return QStringLiteral("org.vellumo.Vellumo.Sync"); }
    // The method that carries each kind of command.
    static QString methodName(SNSyncCommand::Kind kind);

    using Handler = std::function<SNSyncCommand::Result(const SNSyncCommand &command)>;

    // Adapts `exported`, the object registered on the bus.
    explicit SNSyncService(QObject *exported);
    ~SNSyncService() override;

    void setHandler(Handler handler) { m_handler = std::move(handler); }

public Q_SLOTS:
    QString SetFolder(const QString &folder, const QDBusMessage &message);
    QString Status(const QDBusMessage &message);

private:
    QString handle(const SNSyncCommand &command, const QDBusMessage &message);

    Handler m_handler;
};
