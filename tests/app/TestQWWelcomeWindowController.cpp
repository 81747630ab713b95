#include "app/QWWelcomeWindowController.h"
#include "kit/QWNotificationCenter.h"

#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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
        // Its closing lets the program show the notes.
        m_closing = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            QWWelcomeWindowController::didCloseNotification, m_welcome.get(),
            [this](const QWNotification &) { ++m_closings; });
    }

    void cleanup()
    {
        m_closing.cancel();
        m_closings = 0;
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
        QCOMPARE(m_closings, 1);
        // Closing a window that was never opened as the welcome announces nothing.
        m_welcome->window()->show();
        m_welcome->window()->close();
        QCOMPARE(m_closings, 1);

        // The next start of the program, with the same settings, meets no window.
        QWWelcomeWindowController later(*m_store);
        later.applicationDidLaunch();
        QVERIFY(later.canShowMainInterface());
        QVERIFY(!later.isWindowLoaded());
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
    QWNotificationCenter::Observation m_closing;
    int m_closings = 0;
};

QTEST_MAIN(TestQWWelcomeWindowController)
#include "TestQWWelcomeWindowController.moc"
