#include "app/QWWelcomeWindowController.h"
#include "kit/QWNotificationCenter.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <vector>

class TestQWWelcomeWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void opensOncePerUser();
    void closingLetsTheMainInterfaceShow();
    void runAtLoginSwitchReportsOnlyTheUsersChanges();
    void applicationsMenuOfferNeedsAnInstaller();
    void windowIsTheSizeOfItsContent();

private:
    QPushButton *button(const QString &name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<QWWelcomeWindowController> m_welcome;
    QList<QWNotification> m_posted;
    std::vector<QWNotificationCenter::Observation> m_observations;
};

void TestQWWelcomeWindowController::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_store = std::make_unique<QSettings>(
        m_folder->filePath(QStringLiteral("settings.conf")), QSettings::IniFormat);
    m_welcome = std::make_unique<QWWelcomeWindowController>(*m_store);
    for (const QString &name : { QWWelcomeWindowController::didOpenNotification,
             QWWelcomeWindowController::didCloseNotification,
             QWWelcomeWindowController::didToggleRunAtLoginNotification }) {
        m_observations.push_back(
            QWNotificationCenter::defaultCenter().observeNameObjectHandler(name, m_welcome.get(),
                [this](const QWNotification &notification) { m_posted.append(notification); }));
    }
}

void TestQWWelcomeWindowController::cleanup()
{
    m_observations.clear();
    m_posted.clear();
    m_welcome.reset();
    m_store.reset();
    m_folder.reset();
}

QPushButton *TestQWWelcomeWindowController::button(const QString &name) const
{
    return m_welcome->window()->findChild<QPushButton *>(name);
}

void TestQWWelcomeWindowController::opensOncePerUser()
{
    QVERIFY(m_welcome->canShowMainInterface());
    m_welcome->applicationDidLaunch();
    QVERIFY(m_welcome->isOpen());
    QVERIFY(!m_welcome->canShowMainInterface());
    QVERIFY(m_welcome->window()->isVisible());
    QCOMPARE(m_welcome->window()->windowTitle(), QStringLiteral("Welcome to Vellumo"));
    QCOMPARE(m_posted.size(), 1);
    QCOMPARE(m_posted.constFirst().name, QWWelcomeWindowController::didOpenNotification);

    // Launching again while open changes nothing.
    m_welcome->applicationDidLaunch();
    QCOMPARE(m_posted.size(), 1);

    // The next start of the program, with the same settings, meets no window.
    QWWelcomeWindowController later(*m_store);
    later.applicationDidLaunch();
    QVERIFY(!later.isOpen());
    QVERIFY(later.canShowMainInterface());
    QVERIFY(!later.isWindowLoaded());
}

void TestQWWelcomeWindowController::closingLetsTheMainInterfaceShow()
{
    m_welcome->applicationDidLaunch();
    m_posted.clear();
    button(QStringLiteral("getStartedButton"))->click();
    QVERIFY(!m_welcome->window()->isVisible());
    QVERIFY(m_welcome->canShowMainInterface());
    QCOMPARE(m_posted.size(), 1);
    QCOMPARE(m_posted.constFirst().name, QWWelcomeWindowController::didCloseNotification);

    // Closing a window that was never opened as the welcome announces nothing.
    m_posted.clear();
    m_welcome->window()->show();
    m_welcome->window()->close();
    QVERIFY(m_posted.isEmpty());
}

void TestQWWelcomeWindowController::runAtLoginSwitchReportsOnlyTheUsersChanges()
{
    m_welcome->setShowsRunAtLoginButton(true);
    m_welcome->setRunsAtLogin(true);
    m_welcome->applicationDidLaunch();
    m_posted.clear();
    auto *runAtLogin
        = m_welcome->window()->findChild<QCheckBox *>(QStringLiteral("runAtLoginButton"));
    QVERIFY(runAtLogin->isVisible());
    QVERIFY(runAtLogin->isChecked());

    runAtLogin->click();
    QCOMPARE(m_posted.size(), 1);
    QCOMPARE(
        m_posted.constFirst().name, QWWelcomeWindowController::didToggleRunAtLoginNotification);
    QCOMPARE(m_posted.constFirst().userInfo.value(QStringLiteral("enabled")), QVariant(false));
    QVERIFY(!m_welcome->runsAtLogin());

    // The program setting the flag moves the switch without an echo.
    m_welcome->setRunsAtLogin(true);
    QVERIFY(runAtLogin->isChecked());
    QCOMPARE(m_posted.size(), 1);

    m_welcome->setShowsRunAtLoginButton(false);
    QVERIFY(!runAtLogin->isVisible());
}

void TestQWWelcomeWindowController::applicationsMenuOfferNeedsAnInstaller()
{
    m_welcome->applicationDidLaunch();
    QPushButton *add = button(QStringLiteral("addToApplicationsMenuButton"));
    QVERIFY(!add->isVisible());

    int installs = 0;
    bool succeeds = false;
    m_welcome->setApplicationsMenuInstaller([&] {
        ++installs;
        return succeeds;
    });
    QVERIFY(add->isVisible());
    auto *label = m_welcome->window()->findChild<QLabel *>(QStringLiteral("applicationsMenuLabel"));

    add->click();
    QCOMPARE(installs, 1);
    QVERIFY(add->isEnabled());
    QCOMPARE(
        label->text(), QStringLiteral("Vellumo could not be added to your applications menu."));

    succeeds = true;
    add->click();
    QCOMPARE(installs, 2);
    QVERIFY(!add->isEnabled());
    QCOMPARE(label->text(), QStringLiteral("Vellumo is in your applications menu now."));
}

void TestQWWelcomeWindowController::windowIsTheSizeOfItsContent()
{
    m_welcome->setShowsRunAtLoginButton(true);
    m_welcome->setApplicationsMenuInstaller([] { return true; });
    m_welcome->applicationDidLaunch();
    const QWidget *window = m_welcome->window();
    // Not resizable: window managers draw a resize handle along the bottom edge of a window
    // that is, which reads as a frame cut off.
    QCOMPARE(window->minimumSize(), window->size());
    QCOMPARE(window->maximumSize(), window->size());
    for (const QWidget *child : window->findChildren<QWidget *>()) {
        if (child->isVisible()) {
            QVERIFY2(window->rect().contains(QRect(child->mapTo(window, QPoint()), child->size())),
                qPrintable(child->objectName()));
        }
    }
}

QTEST_MAIN(TestQWWelcomeWindowController)
#include "TestQWWelcomeWindowController.moc"
