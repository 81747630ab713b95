#include "app/SNHistoryService.h"

#include "app/SNApplicationService.h"

#include <QDBusConnection>

QString SNHistoryService::methodName(SNHistoryCommand::Kind kind)
{
    switch (kind) {
    case SNHistoryCommand::Kind::ListDeleted:
        return QStringLiteral("ListDeleted");
    case SNHistoryCommand::Kind::RestoreDeleted:
        return QStringLiteral("RestoreDeleted");
    case SNHistoryCommand::Kind::BackUpNow:
        return QStringLiteral("BackUpNow");
    }
    return {};
}

SNHistoryService::SNHistoryService(QObject *exported) : QDBusAbstractAdaptor(exported) { }

SNHistoryService::~SNHistoryService() = default;

QString SNHistoryService::ListDeleted(const QDBusMessage &message)
{
    return handle({ SNHistoryCommand::Kind::ListDeleted, QString() }, message);
}

QString SNHistoryService::RestoreDeleted(const QString &id, const QDBusMessage &message)
{
    return handle({ SNHistoryCommand::Kind::RestoreDeleted, id }, message);
}

QString SNHistoryService::BackUpNow(const QDBusMessage &message)
{
    return handle({ SNHistoryCommand::Kind::BackUpNow, QString() }, message);
}

QString SNHistoryService::handle(const SNHistoryCommand &command, const QDBusMessage &message)
{
    return answer(m_handler ? m_handler(command) : notReady(), message);
}

SNHistoryCommand::Result SNHistoryService::notReady()
{
    return { QString(), tr("Vellumo is still starting; please try again in a moment.") };
}

QString SNHistoryService::answer(
    const SNHistoryCommand::Result &result, const QDBusMessage &message)
{
    if (result.succeeded())
        return result.output;
    message.setDelayedReply(true);
    QDBusConnection::sessionBus().send(
        message.createErrorReply(SNApplicationService::failedErrorName(), result.error));
    return {};
}
