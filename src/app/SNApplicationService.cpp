#include "app/SNApplicationService.h"

#include <QDBusConnection>

SNApplicationService::SNApplicationService(QObject *exported) : QDBusAbstractAdaptor(exported) { }

SNApplicationService::~SNApplicationService() = default;

void SNApplicationService::Activate(const QVariantMap &, const QDBusMessage &message)
{
    handle(SNLaunchRequest(), message);
}

void SNApplicationService::Open(
    const QStringList &uris, const QVariantMap &, const QDBusMessage &message)
{
    SNLaunchRequest request;
    request.uris = uris;
    handle(request, message);
}

void SNApplicationService::ActivateAction(const QString &actionName, const QVariantList &parameter,
    const QVariantMap &, const QDBusMessage &message)
{
    SNLaunchRequest request;
    request.actions.append(actionName);
    // note-from-selection carries the text that came on the caller's standard input.
    if (actionName == SNLaunchRequest::noteFromSelectionAction() && !parameter.isEmpty())
        request.selectionText = parameter.constFirst().toString();
    handle(request, message);
}

void SNApplicationService::handle(const SNLaunchRequest &request, const QDBusMessage &message)
{
    const QString error = m_handler
        ? m_handler(request)
        : tr("Vellumo is still starting; please try again in a moment.");
    if (error.isEmpty())
        return;
    message.setDelayedReply(true);
    QDBusConnection::sessionBus().send(message.createErrorReply(failedErrorName(), error));
}
