#pragma once

#include "kit/widgets/QWWindowController.h"
#include "preferences/QWModuleViewController.h"

#include <QColor>
#include <QPoint>
#include <QPointer>
#include <QPropertyAnimation>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class BackupsPreferencesViewController;
class GeneralPreferencesViewController;
class QListWidget;
class QWAboutViewController;
class SDApperancePreferencesViewController;
class SNModalPresenter;
class SNStickyNote;
class SNStickyNoteManager;
class SNHotKeyState;
class SNSyncState;
class SyncPreferencesViewController;

namespace Ui {
class QWPreferencesWindowController;
}

// The preferences window: a sidebar of modules on the left, the chosen module's view on the
// right. Windows sized by their module (every module but the theme editor) fit it whenever it
// is chosen. Closing the window says once that the program goes on running in the tray.
class QWPreferencesWindowController final : public QWWindowController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWPreferencesWindowController)

public:
    // Sidebar rows.
    static constexpr int generalModuleRow = 0;
    static constexpr int themesModuleRow = 1;
    static constexpr int backupsModuleRow = 2;
    static constexpr int syncModuleRow = 3;
    static constexpr int aboutModuleRow = 4;

    // Shows the notes a backup brought back.
    using NotesOpener = std::function<void(const QList<std::shared_ptr<SNStickyNote>> &notes)>;

    static QString windowTitleText(); // "Preferences"
    static QString quitAlertMessage(); // "%@ will continue to run in the background", filled in
    static QString quitAlertInformativeText();
    static QString quitAlertButtonTitle(); // "Okay"
    // White 0.95, taken in single precision as the window's colours are.
    static QColor backgroundColor();

    static std::unique_ptr<QWPreferencesWindowController> controller();

    explicit QWPreferencesWindowController(QObject *parent = nullptr);
    ~QWPreferencesWindowController() override;

    // Who asks the user; tests answer in place of a person. Modules use it too.
    const std::shared_ptr<SNModalPresenter> &modalPresenter() const { return m_presenter; }
    void setModalPresenter(const std::shared_ptr<SNModalPresenter> &presenter);
    // The store whose backups the Backups page lists, else the shared one; set before the
    // window loads.
    void setNoteStore(SNStickyNoteManager *store, NotesOpener opener);
    // How the sharing through a sync folder goes, for the Sync page; set before the window
    // loads.
    void setSyncState(SNSyncState *state);
    // How the desktop takes the hot keys, for the first page.
    void setHotKeyState(SNHotKeyState *state);

    // The first time, the window comes up in the middle of the screen the pointer is on.
    void showWindow() override;

    void selectModuleAtRow(int row);
    // Shows the window with the current module, in front of every program.
    void actuallyShowWindow();
    void configureWindow();
    // Nothing happens when the module is already the current one.
    void setCurrentModule(QWModuleViewController *module);
    // Fits the window to the module; false when there is no window or nothing to fit.
    bool resizeWindowIfNeededForViewControllerAnimated(
        QWModuleViewController *module, bool animated);
    QSize windowSizeWithController(QWModuleViewController *module);

    // The sidebar.
    int numberOfRowsInTableView() const;
    bool tableViewShouldSelectRow(int row) const;
    void tableViewSelectionDidChange();

    // The window.
    bool windowShouldClose();
    QSize windowWillResizeToSize(const QSize &proposed);
    void windowDidResignKey();

    // While the program quits, the window closes without a word.
    void setTerminating(bool terminating) { m_terminating = terminating; }

    bool canHide() const { return m_canHide; }
    bool isLoaded() const { return m_isLoaded; }
    QListWidget *tableView() const;
    QWidget *sidebarView() const;
    QWidget *contentView() const;
    QWidget *moduleContentView() const;
    QWModuleViewController *currentModule() const { return m_currentModule; }
    QList<QWModuleViewController *> modules() const;
    QWModuleViewController *moduleAtRow(int row) const;
    GeneralPreferencesViewController *generalViewController() const;
    SDApperancePreferencesViewController *appearanceViewController() const;
    QWAboutViewController *aboutViewController() const;
    BackupsPreferencesViewController *backupsViewController() const;
    SyncPreferencesViewController *syncViewController() const;

protected:
    std::unique_ptr<QWidget> loadWindow() override;
    void qw_viewDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void reloadSidebar();
    void qw_setResizable(bool resizable);
    void qw_originalSetContentSizeAnimated(const QSize &size, bool animated);
    QSize wantedSizeOfModule(QWModuleViewController *module) const;
    int moduleAreaLeftEdge() const;
    int verticalSpaceOutsideModuleArea() const;

    std::unique_ptr<Ui::QWPreferencesWindowController> m_ui;
    std::shared_ptr<SNModalPresenter> m_presenter;
    SNStickyNoteManager *m_noteStore = nullptr;
    NotesOpener m_notesOpener;
    QPointer<SNSyncState> m_syncState;
    QPointer<SNHotKeyState> m_hotKeyState;
    std::vector<std::unique_ptr<QWModuleViewController>> m_modules;
    QPointer<QWModuleViewController> m_currentModule;
    QPointer<QWidget> m_currentView;
    QPointer<QPropertyAnimation> m_resizeAnimation;
    bool m_canHide = false;
    bool m_isLoaded = false;
    bool m_resizable = true;
    bool m_terminating = false;
    bool m_wasShown = false;
    std::optional<QPoint> m_dragOrigin;
};
