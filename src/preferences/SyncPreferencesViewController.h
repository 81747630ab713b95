#pragma once

#include "preferences/QWModuleViewController.h"

#include <QPointer>

#include <memory>

class SNModalPresenter;
class SNStickyNoteManager;
class SNSyncState;
class SNUserDefaults;

namespace Ui {
class SyncPreferencesViewController;
}

// The Sync page: the folder a sync tool keeps in step between computers (chosen, or none to
// keep the notes here), how the sharing goes, what this computer is called there, every
// computer that writes to the folder with the time it last wrote, and what the last merge did.
// It only writes the settings; whoever runs the sharing follows them and tells the page through
// the state it is handed.
class SyncPreferencesViewController final : public QWModuleViewController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SyncPreferencesViewController)

public:
    // Without a state the page shows what the folder holds, as when the program does not share.
    SyncPreferencesViewController(SNUserDefaults &defaults, SNStickyNoteManager &store,
        SNSyncState *state = nullptr, QObject *parent = nullptr);
    ~SyncPreferencesViewController() override;

    QString moduleTitle() const override;
    bool moduleIsResizable() const override { return false; }

    void setModalPresenter(const std::shared_ptr<SNModalPresenter> &presenter);

    // Asks for a folder; false when the user cancelled.
    bool chooseFolder();
    void stopSyncing();
    void nameDidChange();
    void reload();

    // The lines of the page, as shown.
    QString statusText() const;
    QString lastMergeText() const;

    void qw_viewWillAppear() override;

protected:
    std::unique_ptr<QWidget> loadView() override;
    void qw_viewDidLoad() override;

private:
    QString describeSharing(const QString &folder) const;
    void reloadDevices(const QString &folder);

    SNUserDefaults &m_defaults;
    SNStickyNoteManager &m_store;
    QPointer<SNSyncState> m_state;
    std::shared_ptr<SNModalPresenter> m_presenter;
    std::unique_ptr<Ui::SyncPreferencesViewController> m_ui;
};
