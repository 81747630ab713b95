#include "app/QWWelcomeWindowController.h"
#include "kit/QWNotificationCenter.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

class TestQWWelcomeWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensOncePerUserAndClosingLetsTheNotesShow()
    {
        QSettings store(m_folder.filePath(QStringLiteral("opens.conf")), QSettings::IniFormat);
        QWWelcomeWindowController welcome(store);
        welcome.setShowsRunAtLoginButton(true);
        // Its closing lets the program show the notes.
        int closings = 0;
        const auto closing = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            QWWelcomeWindowController::didCloseNotification, &welcome,
            [&closings](const QWNotification &) { ++closings; });
        welcome.applicationDidLaunch();
        welcome.applicationDidLaunch(); // while open, changes nothing
        QVERIFY(welcome.window()->isVisible());
        QVERIFY(!welcome.canShowMainInterface());
        // The window is no dialog, yet Return from the switch presses Get Started as in one.
        QTest::keyClick(
            welcome.window()->findChild<QCheckBox *>(QStringLiteral("runAtLoginButton")),
            Qt::Key_Return);
        QVERIFY(!welcome.window()->isVisible());
        QVERIFY(welcome.canShowMainInterface());
        QCOMPARE(closings, 1);
        // Closing a window that was never opened as the welcome announces nothing.
        welcome.window()->show();
        welcome.window()->close();
        QCOMPARE(closings, 1);

        // The next start of the program, with the same settings, meets no window.
        QWWelcomeWindowController later(store);
        later.applicationDidLaunch();
        QVERIFY(later.canShowMainInterface());
        QVERIFY(!later.isWindowLoaded());
    }

    void windowIsTheSizeOfItsContent()
    {
        QSettings store(m_folder.filePath(QStringLiteral("size.conf")), QSettings::IniFormat);
        QWWelcomeWindowController welcome(store);
        welcome.setShowsRunAtLoginButton(true);
        welcome.setApplicationsMenuInstaller([] { return true; });
        welcome.applicationDidLaunch();
        const QWidget *window = welcome.window();
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
    QTemporaryDir m_folder;
};

QTEST_MAIN(TestQWWelcomeWindowController)
#include "TestQWWelcomeWindowController.moc"
