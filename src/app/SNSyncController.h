#pragma once

#include "notes/SNRecordMerger.h"
#include "preferences/SNSyncState.h"

#include <QObject>

#include <functional>
#include <memory>

class QWTimer;
class SNModalPresenter;
class SNStickyNoteManager;
class SNSyncSession;
class SNUserDefaults;

// Shares the notes through the sync folder of the settings while the program runs: a session
// over the store for as long as a folder is chosen, none when it is cleared. A folder that is
// not there (yet) keeps the notes local and is looked for again every 30 seconds and whenever
// the setting is written. A computer found writing under this one's id from another machine
// makes this one take a new id. Before a merge deletes many notes, the user is asked.
class SNSyncController final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNSyncController)

public:
    SNSyncController(SNUserDefaults &defaults, SNStickyNoteManager &store,
        std::shared_ptr<SNModalPresenter> presenter, QObject *parent = nullptr);
    ~SNSyncController() override;

    // Follows the settings from now on.
    void start();
    // Runs before every merge, so that what is typed in open windows is in the store.
    void setBeforeMerge(std::function<void()> beforeMerge);

    SNSyncState &state() { return m_state; }
    SNSyncSession *session() const { return m_session.get(); }

    // Asks whether the notes another computer deleted go here too; true deletes them.
    bool askAboutDeletion(qsizetype count);

Q_SIGNALS:
    void notesMerged(const SNRecordMerger::Result &result);

private:
    void settingDidChange(const QString &key);
    void folderDidChange();
    void tryToStart();
    void stopRetrying();
    std::unique_ptr<SNSyncSession> makeSession(const QString &folder);

    SNUserDefaults &m_defaults;
    SNStickyNoteManager &m_store;
    std::shared_ptr<SNModalPresenter> m_presenter;
    std::function<void()> m_beforeMerge;
    SNSyncState m_state;
    std::unique_ptr<SNSyncSession> m_session;
    std::shared_ptr<QWTimer> m_retryTimer;
};
