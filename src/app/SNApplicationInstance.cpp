#include "app/SNApplicationInstance.h"

#include "app/SNLaunchRequest.h"
#include "settings/SNApplicationInfo.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QThread>

namespace {

// Long enough for a busy program to answer; a hung one must not hang the caller for ever.
constexpr int callTimeout = 20000;

QDBusMessage methodCall(
    const QString &method, const QString &interface = SNApplicationService::interfaceName())
{
    return QDBusMessage::createMethodCall(SNApplicationInfo::applicationIdentifier(),
        SNApplicationInstance::objectPath(), interface, method);
}

// A command's answer: its output, or the error the program or the bus gave.
SNHistoryCommand::Result commandResult(const QDBusMessage &call)
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, callTimeout);
    if (reply.type() == QDBusMessage::ErrorMessage)
        return { QString(), reply.errorMessage() };
    return { reply.arguments().value(0).toString(), QString() };
}

} // namespace

QString SNApplicationInstance::objectPath()
{
    return QStringLiteral("/")
        + SNApplicationInfo::applicationIdentifier().replace(QLatin1Char('.'), QLatin1Char('/'));
}

SNApplicationInstance::SNApplicationInstance(QObject *parent)
    : QObject(parent),
      m_service(new SNApplicationService(&m_exported)),
      m_historyService(new SNHistoryService(&m_exported)),
      m_syncService(new SNSyncService(&m_exported)),
      m_importService(new SNImportService(&m_exported))
{ }

SNApplicationInstance::~SNApplicationInstance() = default;

SNApplicationInstance::Claim SNApplicationInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface())
        return Claim::Alone;
    if (!bus.registerObject(objectPath(), &m_exported, QDBusConnection::ExportAdaptors))
        return Claim::Alone;
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply
        = bus.interface()->registerService(SNApplicationInfo::applicationIdentifier(),
            QDBusConnectionInterface::DontQueueService,
            QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Claim::Primary;
    bus.unregisterObject(objectPath());
    if (reply.isValid())
        return Claim::Secondary;
    qWarning("[DEBUG] Could not take the name %s on the session bus: %s",
        qUtf8Printable(SNApplicationInfo::applicationIdentifier()),
        qUtf8Printable(reply.error().message()));
    return Claim::Alone;
}

void SNApplicationInstance::setRequestHandler(SNApplicationService::Handler handler)
{
    m_service->setHandler(std::move(handler));
}

void SNApplicationInstance::setHistoryHandler(SNHistoryService::Handler handler)
{
    m_historyService->setHandler(std::move(handler));
}

void SNApplicationInstance::setSyncHandler(SNSyncService::Handler handler)
{
    m_syncService->setHandler(std::move(handler));
}

void SNApplicationInstance::setImportHandler(SNImportService::Handler handler)
{
    m_importService->setHandler(std::move(handler));
}

SNHistoryCommand::Result SNApplicationInstance::forward(const SNHistoryCommand &command) const
{
    QDBusMessage call
        = methodCall(SNHistoryService::methodName(command.kind), SNHistoryService::interfaceName());
    if (command.kind == SNHistoryCommand::Kind::RestoreDeleted)
        call << command.id;
    return commandResult(call);
}

SNSyncCommand::Result SNApplicationInstance::forward(const SNSyncCommand &command) const
{
    QDBusMessage call
        = methodCall(SNSyncService::methodName(command.kind), SNSyncService::interfaceName());
    if (command.kind == SNSyncCommand::Kind::SetFolder)
        call << command.folder;
    return commandResult(call);
}

SNImportCommand::Result SNApplicationInstance::forward(const SNImportCommand &command) const
{
    QDBusMessage call
        = methodCall(SNImportService::methodName(command.kind), SNImportService::interfaceName());
    if (command.kind == SNImportCommand::Kind::Import)
        call << command.program << command.path;
    else if (command.kind == SNImportCommand::Kind::ExportMarkdown)
        call << command.path;
    return commandResult(call);
}

bool SNApplicationInstance::forward(const SNLaunchRequest &request, QString *errorText) const
{
    QList<QDBusMessage> calls;
    const QVariantMap platformData;
    if (!request.uris.isEmpty()) {
        QDBusMessage open = methodCall(QStringLiteral("Open"));
        open << request.uris << platformData;
        calls.append(open);
    }
    for (const QString &action : request.actions) {
        QDBusMessage activateAction = methodCall(QStringLiteral("ActivateAction"));
        QVariantList parameter;
        if (action == SNLaunchRequest::noteFromSelectionAction() && request.selectionText)
            parameter.append(*request.selectionText);
        activateAction << action << parameter << platformData;
        calls.append(activateAction);
    }
    if (calls.isEmpty()) {
        QDBusMessage activate = methodCall(QStringLiteral("Activate"));
        activate << platformData;
        calls.append(activate);
    }

    QDBusConnection bus = QDBusConnection::sessionBus();
    for (const QDBusMessage &call : std::as_const(calls)) {
        const QDBusMessage reply = bus.call(call, QDBus::Block, callTimeout);
        if (reply.type() == QDBusMessage::ErrorMessage) {
            if (errorText)
                *errorText = reply.errorMessage();
            return false;
        }
    }
    return true;
}

bool SNApplicationInstance::waitUntilNameIsReleased(int timeoutMilliseconds) const
{
    QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    if (!bus)
        return true;
    const QDeadlineTimer deadline(timeoutMilliseconds);
    while (bus->isServiceRegistered(SNApplicationInfo::applicationIdentifier()).value()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(20);
    }
    return true;
}
