#include "app/SNSyncService.h"

#include "app/SNHistoryService.h"

QString SNSyncService::methodName(SNSyncCommand::Kind kind)
{
    switch (kind) {
    case SNSyncCommand::Kind::SetFolder:
        return QStringLiteral("SetFolder");
    case SNSyncCommand::Kind::ShowStatus:
        return QStringLiteral("Status");
    }
    return {};
}

SNSyncService::SNSyncService(QObject *exported) : QDBusAbstractAdaptor(exported) { }

SNSyncService::~SNSyncService() = default;

QString SNSyncService::SetFolder(const QString &folder, const QDBusMessage &message)
{
    return handle({ SNSyncCommand::Kind::SetFolder, folder }, message);
}

QString SNSyncService::Status(const QDBusMessage &message)
{
    return handle({ SNSyncCommand::Kind::ShowStatus, QString() }, message);
}

QString SNSyncService::handle(const SNSyncCommand &command, const QDBusMessage &message)
{
    return SNHistoryService::answer(
        m_handler ? m_handler(command) : SNHistoryService::notReady(), message);
}
