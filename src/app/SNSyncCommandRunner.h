#pragma once

#include "app/SNSyncCommand.h"

#include <QCoreApplication>

class SNStickyNoteManager;
class SNSyncState;
class SNUserDefaults;

// Carries out sync commands on the settings and a note store. The running program hands in how
// its sharing goes; without it, the answers come from the settings and the folder alone.
class SNSyncCommandRunner final
{
    Q_DECLARE_TR_FUNCTIONS(SNSyncCommandRunner)

public:
    SNSyncCommandRunner(
        SNUserDefaults &defaults, SNStickyNoteManager &store, const SNSyncState *state = nullptr);

    SNSyncCommand::Result run(const SNSyncCommand &command);

private:
    SNSyncCommand::Result setFolder(const QString &folder);
    SNSyncCommand::Result showStatus() const;
    QString sharingText(const QString &folder) const;

    SNUserDefaults &m_defaults;
    SNStickyNoteManager &m_store;
    const SNSyncState *m_state;
};
