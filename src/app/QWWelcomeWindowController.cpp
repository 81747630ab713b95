#include "app/QWWelcomeWindowController.h"

#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWWindowCloseKeys.h"
#include "ui_QWWelcomeWindowController.h"

#include <QEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QPushButton>
#include <QSettings>
#include <QSignalBlocker>

const QString QWWelcomeWindowController::didOpenNotification
    = QStringLiteral("QWWelcomeWindowDidOpenNotification");
const QString QWWelcomeWindowController::didCloseNotification
    = QStringLiteral("QWWelcomeWindowDidCloseNotification");
const QString QWWelcomeWindowController::didToggleRunAtLoginNotification
    = QStringLiteral("QWWelcomeWindowDidToggleRunAtLogin");

QWWelcomeWindowController::QWWelcomeWindowController(QSettings &store, QObject *parent)
    : QWWindowController(parent), m_store(store)
{ }

QWWelcomeWindowController::~QWWelcomeWindowController() = default;

SNImportPanel *QWWelcomeWindowController::importPanel() const
{
    return m_ui ? m_ui->importPanel : nullptr;
}

std::unique_ptr<QWidget> QWWelcomeWindowController::loadWindow()
{
    auto window = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::QWWelcomeWindowController>();
    m_ui->setupUi(window.get());
    return window;
}

void QWWelcomeWindowController::qw_viewDidLoad()
{
    m_ui->iconLabel->setPixmap(QGuiApplication::windowIcon().pixmap(64, 64));
    connect(m_ui->runAtLoginButton, &QCheckBox::toggled, this,
        &QWWelcomeWindowController::runAtLoginButtonWasToggled);
    connect(m_ui->addToApplicationsMenuButton, &QPushButton::clicked, this,
        &QWWelcomeWindowController::addToApplicationsMenu);
    connect(m_ui->getStartedButton, &QPushButton::clicked, window(), &QWidget::close);
    window()->installEventFilter(this);
    QWWindowCloseKeys::install(window());
    updateControls();
}

void QWWelcomeWindowController::updateControls()
{
    if (!m_ui)
        return;
    m_ui->runAtLoginButton->setVisible(m_showsRunAtLoginButton);
    const QSignalBlocker blocker(m_ui->runAtLoginButton);
    m_ui->runAtLoginButton->setChecked(m_runsAtLogin);
    m_ui->applicationsMenuView->setVisible(static_cast<bool>(m_applicationsMenuInstaller));
}

void QWWelcomeWindowController::setShowsRunAtLoginButton(bool shows)
{
    m_showsRunAtLoginButton = shows;
    updateControls();
}

void QWWelcomeWindowController::setRunsAtLogin(bool runsAtLogin)
{
    m_runsAtLogin = runsAtLogin;
    updateControls();
}

void QWWelcomeWindowController::setApplicationsMenuInstaller(ApplicationsMenuInstaller installer)
{
    m_applicationsMenuInstaller = std::move(installer);
    updateControls();
}

void QWWelcomeWindowController::applicationDidLaunch()
{
    if (m_open || m_store.value(wasShownKey()).toBool())
        return;
    // Marked at once: a crash while it is open must not bring it back on every start.
    m_store.setValue(wasShownKey(), true);
    m_store.sync();
    m_open = true;
    showWindow();
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        didOpenNotification, this);
}

void QWWelcomeWindowController::runAtLoginButtonWasToggled(bool checked)
{
    m_runsAtLogin = checked;
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        didToggleRunAtLoginNotification, this, { { enabledKey(), checked } });
}

void QWWelcomeWindowController::addToApplicationsMenu()
{
    if (!m_applicationsMenuInstaller)
        return;
    const bool installed = m_applicationsMenuInstaller();
    m_ui->addToApplicationsMenuButton->setEnabled(!installed);
    m_ui->applicationsMenuLabel->setText(installed
            ? tr("Vellumo is in your applications menu now.")
            : tr("Vellumo could not be added to your applications menu."));
}

bool QWWelcomeWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == window() && event->type() == QEvent::Close && m_open) {
        m_open = false;
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            didCloseNotification, this);
    }
    if (watched == window() && event->type() == QEvent::KeyPress) {
        // A plain window has no default button. As in a dialog, Return presses the focused push
        // button, else Get Started.
        const int key = static_cast<QKeyEvent *>(event)->key();
        auto *focused = qobject_cast<QPushButton *>(window()->focusWidget());
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            (focused && focused->isEnabled() ? focused : m_ui->getStartedButton)->click();
            return true;
        }
    }
    return QWWindowController::eventFilter(watched, event);
}
