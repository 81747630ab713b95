#pragma once

#include "preferences/QWModuleViewController.h"

#include <QList>

#include <functional>
#include <memory>

class SNModalPresenter;
class SNStickyNote;
class SNStickyNoteManager;

namespace Ui {
class BackupsPreferencesViewController;
}

// The Backups page: the daily copies of the notes with their dates and note counts, the folder
// that holds them, a backup made on request, and a copy's notes brought back beside today's.
// Restoring deletes nothing and adds no note twice; the notes that come back are handed to the
// opener, which shows them.
class BackupsPreferencesViewController final : public QWModuleViewController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BackupsPreferencesViewController)

public:
    using NotesOpener = std::function<void(const QList<std::shared_ptr<SNStickyNote>> &notes)>;

    explicit BackupsPreferencesViewController(
        SNStickyNoteManager &store, NotesOpener opener = {}, QObject *parent = nullptr);
    ~BackupsPreferencesViewController() override;

    QString moduleTitle() const override;
    bool moduleIsResizable() const override { return false; }

    void setModalPresenter(const std::shared_ptr<SNModalPresenter> &presenter);
    QString backupsFolder() const;

    // The list as shown, newest first; the selected row is the one Restore takes.
    void reloadBackups();
    void selectBackupAtRow(int row);
    void backUpNow();
    // Asks first; false when the user said no or nothing is selected.
    bool restoreSelectedBackup();
    void openBackupsFolder();
    // The result of the last action, as the page shows it.
    QString statusText() const;

    void qw_viewWillAppear() override;

protected:
    std::unique_ptr<QWidget> loadView() override;
    void qw_viewDidLoad() override;

private:
    void updateButtons();
    void showStatus(const QString &text);

    SNStickyNoteManager &m_store;
    NotesOpener m_opener;
    std::shared_ptr<SNModalPresenter> m_presenter;
    std::unique_ptr<Ui::BackupsPreferencesViewController> m_ui;
};
