#pragma once

#include "kit/widgets/QWWindowController.h"

#include <QString>

#include <functional>
#include <memory>

class QSettings;
class SNImportPanel;

namespace Ui {
class QWWelcomeWindowController;
}

// The window a user meets on the first start: a short welcome, the notes of other programs to
// bring in (when there are some), a switch to start the program at login and, for a program
// that runs from its build folder, an offer to add it to the applications menu. It opens once per
// user. While it is open the rest of the interface waits: canShowMainInterface() says no.
//
// It tells the program what happens through three notifications posted with itself as the
// object; the run-at-login one carries the switch's new state under "enabled".
class QWWelcomeWindowController final : public QWWindowController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWWelcomeWindowController)

public:
    static const QString didOpenNotification; // "QWWelcomeWindowDidOpenNotification"
    static const QString didCloseNotification; // "QWWelcomeWindowDidCloseNotification"
    static const QString didToggleRunAtLoginNotification; // "QWWelcomeWindowDidToggleRunAtLogin"
    static QString enabledKey() { return QStringLiteral("enabled"); }
    // Set in the store once the window has been shown.
    static QString wasShownKey() { return QStringLiteral("QWWelcomeWindowWasShown"); }

    // Adds the program to the applications menu; true on success.
    using ApplicationsMenuInstaller = std::function<bool()>;

    explicit QWWelcomeWindowController(QSettings &store, QObject *parent = nullptr);
    ~QWWelcomeWindowController() override;

    bool showsRunAtLoginButton() const { return m_showsRunAtLoginButton; }
    void setShowsRunAtLoginButton(bool shows);
    // The switch's state; setting it posts nothing.
    bool runsAtLogin() const { return m_runsAtLogin; }
    void setRunsAtLogin(bool runsAtLogin);
    // Without an installer there is no offer.
    void setApplicationsMenuInstaller(ApplicationsMenuInstaller installer);

    // Opens the window if this user has never seen it.
    void applicationDidLaunch();
    bool isOpen() const { return m_open; }
    // Where the notes of other programs are offered; null until the window is loaded.
    SNImportPanel *importPanel() const;
    bool canShowMainInterface() const { return !m_open; }

protected:
    std::unique_ptr<QWidget> loadWindow() override;
    void qw_viewDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updateControls();
    void runAtLoginButtonWasToggled(bool checked);
    void addToApplicationsMenu();

    QSettings &m_store;
    std::unique_ptr<Ui::QWWelcomeWindowController> m_ui;
    bool m_showsRunAtLoginButton = false;
    bool m_runsAtLogin = false;
    bool m_open = false;
    ApplicationsMenuInstaller m_applicationsMenuInstaller;
};
