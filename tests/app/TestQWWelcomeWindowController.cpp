#include "app/QWWelcomeWindowController.h"
#include "kit/QWNotificationCenter.h"

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
    void init()
    {
        m_store = std::make_unique<QSettings>(
            m_folder.filePath(QStringLiteral("settings.conf")), QSettings::IniFormat);
        m_store->clear();
        m_welcome = std::make_unique<QWWelcomeWindowController>(*m_store);
        for (const QString &name : { QWWelcomeWindowController::didOpenNotification,
                 QWWelcomeWindowController::didCloseNotification,
                 QWWelcomeWindowController::didToggleRunAtLoginNotification }) {
            m_observations.push_back(QWNotificationCenter::defaultCenter().observeNameObjectHandler(
                name, m_welcome.get(), [this](const QWNotification &notification) {
                    m_posted.append(notification.name);
                }));
        }
    }

    void cleanup()
    {
        m_observations.clear();
        m_posted.clear();
        m_welcome.reset();
        m_store.reset();
    }

    void opensOncePerUserAndClosingLetsTheNotesShow()
    {
        m_welcome->applicationDidLaunch();
        m_welcome->applicationDidLaunch(); // while open, changes nothing
        QVERIFY(m_welcome->window()->isVisible());
        QVERIFY(!m_welcome->canShowMainInterface());
        child<QPushButton>(QStringLiteral("getStartedButton"))->click();
        QVERIFY(!m_welcome->window()->isVisible());
        QVERIFY(m_welcome->canShowMainInterface());
        QCOMPARE(m_posted,
            (QStringList { QWWelcomeWindowController::didOpenNotification,
                QWWelcomeWindowController::didCloseNotification }));
        // Closing a window that was never opened as the welcome announces nothing.
        m_welcome->window()->show();
        m_welcome->window()->close();
        QCOMPARE(m_posted.size(), 2);

        // The next start of the program, with the same settings, meets no window.
        QWWelcomeWindowController later(*m_store);
        later.applicationDidLaunch();
        QVERIFY(later.canShowMainInterface());
        QVERIFY(!later.isWindowLoaded());
    }

    // A click reaching the settings, and the settings the switch: TestAppDelegate.
    void runAtLoginSwitchReportsOnlyTheUsersChanges()
    {
        m_welcome->setShowsRunAtLoginButton(true);
        m_welcome->applicationDidLaunch();
        m_posted.clear();
        auto *runAtLogin = child<QCheckBox>(QStringLiteral("runAtLoginButton"));
        QVERIFY(runAtLogin->isVisible() && !runAtLogin->isChecked());
        // The program setting the flag moves the switch without an echo.
        m_welcome->setRunsAtLogin(true);
        QVERIFY(runAtLogin->isChecked());
        QVERIFY(m_posted.isEmpty());
        m_welcome->setShowsRunAtLoginButton(false);
        QVERIFY(!runAtLogin->isVisible());
    }

    void applicationsMenuOfferNeedsAnInstaller()
    {
        m_welcome->applicationDidLaunch();
        auto *add = child<QPushButton>(QStringLiteral("addToApplicationsMenuButton"));
        QVERIFY(!add->isVisible());
        bool succeeds = false;
        m_welcome->setApplicationsMenuInstaller([&] { return succeeds; });
        QVERIFY(add->isVisible());
        auto *label = child<QLabel>(QStringLiteral("applicationsMenuLabel"));
        add->click();
        QVERIFY(add->isEnabled()); // to try again
        const QString failure = label->text();
        succeeds = true;
        add->click();
        QVERIFY(!add->isEnabled());
        QVERIFY(label->text() != failure);
    }

    void windowIsTheSizeOfItsContent()
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
                QVERIFY2(
                    window->rect().contains(QRect(child->mapTo(window, QPoint()), child->size())),
                    qPrintable(child->objectName()));
            }
        }
    }

private:
    template <typename Widget> Widget *child(const QString &name) const
    {
        return m_welcome->window()->findChild<Widget *>(name);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<QWWelcomeWindowController> m_welcome;
    QStringList m_posted;
    std::vector<QWNotificationCenter::Observation> m_observations;
};

QTEST_MAIN(TestQWWelcomeWindowController)
#include "TestQWWelcomeWindowController.moc"
