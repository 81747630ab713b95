#pragma once

#include "app/SNApplicationService.h"
#include "app/SNHistoryService.h"
#include "app/SNImportService.h"
#include "app/SNSyncService.h"

#include <QObject>
#include <QString>

// One Vellumo per session: the first start takes the program's name on the session bus and
// serves requests there; later starts hand their requests to it and end. Without a session
// bus every start runs on its own.
class SNApplicationInstance final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNApplicationInstance)

public:
    enum class Claim {
        Primary, // the name is ours: serve requests
        Secondary, // another process holds it: forward to it
        Alone, // no session bus: run without one
    };

    static QString objectPath(); // "/org/vellumo/Vellumo"

    explicit SNApplicationInstance(QObject *parent = nullptr);
    ~SNApplicationInstance() override;

    // Exports the service, then asks for the name, so that a caller that finds the name also
    // finds the service.
    Claim claim();

    // Who carries out the requests that arrive; until set, callers are asked to try again.
    void setRequestHandler(SNApplicationService::Handler handler);
    // Who carries out the history commands that arrive.
    void setHistoryHandler(SNHistoryService::Handler handler);
    // Who carries out the sync commands that arrive.
    void setSyncHandler(SNSyncService::Handler handler);
    // Who carries out the import and Markdown commands that arrive.
    void setImportHandler(SNImportService::Handler handler);

    // Hands the request to the instance that holds the name. False, with a reason, when the
    // bus or the instance answered with an error.
    bool forward(const SNLaunchRequest &request, QString *errorText) const;
    // Runs the command in the instance that holds the name and gives back its answer.
    SNHistoryCommand::Result forward(const SNHistoryCommand &command) const;
    SNSyncCommand::Result forward(const SNSyncCommand &command) const;
    SNImportCommand::Result forward(const SNImportCommand &command) const;
    // After a forwarded quit: waits until the running instance has saved and gone.
    bool waitUntilNameIsReleased(int timeoutMilliseconds) const;

private:
    QObject m_exported;
    SNApplicationService *m_service;
    SNHistoryService *m_historyService;
    SNSyncService *m_syncService;
    SNImportService *m_importService;
};
