#pragma once

#include "app/SNHistoryCommand.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QString>

#include <functional>

// The running program's own interface on the session bus, for what the freedesktop one cannot
// carry: commands that answer with text (the deleted notes, the backup made). A command's
// error goes back to the caller as a D-Bus error.
class SNHistoryService final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.vellumo.Vellumo.History")
    Q_DISABLE_COPY_MOVE(SNHistoryService)

public:
    static QString interfaceName() { return QStringLiteral("org.vellumo.Vellumo.History"); }
    // The method that carries each kind of command.
    static QString methodName(SNHistoryCommand::Kind kind);

    using Handler = std::function<SNHistoryCommand::Result(const SNHistoryCommand &command)>;

    // Adapts `exported`, the object registered on the bus.
    explicit SNHistoryService(QObject *exported);
    ~SNHistoryService() override;

    void setHandler(Handler handler) { m_handler = std::move(handler); }

    // The output for the caller, or nothing with the error sent back in its place.
    static QString answer(const SNHistoryCommand::Result &result, const QDBusMessage &message);
    // What a command that arrives before its handler is set answers.
    static SNHistoryCommand::Result notReady();

public Q_SLOTS:
    QString ListDeleted(const QDBusMessage &message);
    QString RestoreDeleted(const QString &id, const QDBusMessage &message);
    QString BackUpNow(const QDBusMessage &message);

private:
    QString handle(const SNHistoryCommand &command, const QDBusMessage &message);

    Handler m_handler;
};
