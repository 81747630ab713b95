#include "preferences/GeneralPreferencesViewController.h"
#include "preferences/QWKeyComboRecorder.h"
#include "preferences/QWPreferencesWindowController.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SNPreferencesTestSupport.h"

#include <QListWidget>
#include <QSignalSpy>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

class TestQWPreferencesWindowController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.emplace(); }
    void cleanup() { m_fixture.reset(); }

    void switchingModulesTellsBothAndOnlyOnce()
    {
        auto controller = QWPreferencesWindowController::controller();
        controller->window(); // makes the modules
        GeneralPreferencesViewController *general = controller->generalViewController();
        SDApperancePreferencesViewController *themes = controller->appearanceViewController();
        QCOMPARE(controller->currentModule(), general);
        QSignalSpy generalWillDisappear(general, &QWViewController::viewWillDisappear);
        QSignalSpy generalDidDisappear(general, &QWViewController::viewDidDisappear);
        QSignalSpy themesWillAppear(themes, &QWViewController::viewWillAppear);
        QSignalSpy themesDidAppear(themes, &QWViewController::viewDidAppear);
        controller->tableView()->setCurrentRow(QWPreferencesWindowController::themesModuleRow);
        // The module already shown: nothing more.
        controller->setCurrentModule(themes);
        for (const QSignalSpy *spy :
            { &generalWillDisappear, &generalDidDisappear, &themesWillAppear, &themesDidAppear })
            QCOMPARE(spy->count(), 1);
        QVERIFY(themes->moduleIsVisible() && !general->moduleIsVisible());
        QCOMPARE(themes->view()->parentWidget(), controller->moduleContentView());
        QVERIFY(!general->view()->parentWidget());
    }

    void modulesDecideWhetherTheWindowResizes()
    {
        auto controller = QWPreferencesWindowController::controller();
        QWidget *window = controller->window();
        // General is not resizable: the window is fixed at the size that fits it.
        QCOMPARE(window->minimumSize(), window->maximumSize());
        QCOMPARE(window->width(),
            controller->windowSizeWithController(controller->generalViewController()).width());
        // The theme editor lets the window grow, never below what it needs.
        controller->selectModuleAtRow(QWPreferencesWindowController::themesModuleRow);
        QCOMPARE(window->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
        QCOMPARE(window->minimumSize(),
            controller->windowSizeWithController(controller->appearanceViewController()));
        // In full screen a module that cannot resize leaves the size alone.
        window->showFullScreen();
        const QSize fullScreen = window->size();
        controller->selectModuleAtRow(QWPreferencesWindowController::aboutModuleRow);
        QCOMPARE(window->size(), fullScreen);
    }

    void onlyOkayWithTheBoxTickedSilencesTheQuitAlert_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("tick");
        QTest::addColumn<bool>("silenced");
        QTest::newRow("Okay, ticked") << u"Okay"_s << true << true;
        QTest::newRow("Okay") << u"Okay"_s << false << false;
        // A box with one button reports these as a press of it.
        QTest::newRow("Escape, ticked") << u"Escape"_s << true << false;
        QTest::newRow("close button, ticked") << QString() << true << false;
    }

    void onlyOkayWithTheBoxTickedSilencesTheQuitAlert()
    {
        QFETCH(QString, button);
        QFETCH(bool, tick);
        QFETCH(bool, silenced);
        AnsweringPresenter &person = *m_fixture->presenter;
        person.answers = { { button, tick }, { button, tick } };
        auto controller = QWPreferencesWindowController::controller();
        controller->setModalPresenter(m_fixture->presenter);
        QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);
        for (int time = 1; time <= 2; ++time) {
            controller->showWindow();
            QVERIFY(controller->window()->close());
            QCOMPARE(willClose.count(), time);
            QCOMPARE(SNUserDefaults::suppressQuitAlert(), silenced);
        }
        // Quitting closes the window without a word.
        controller->setTerminating(true);
        QVERIFY(controller->windowShouldClose());
        QCOMPARE(person.asked.size(), silenced ? 1 : 2);
    }

    void escapeIsTheFocusedControlsBeforeItClosesTheWindow()
    {
        SNUserDefaults::setSuppressQuitAlert(true);
        auto controller = QWPreferencesWindowController::controller();
        controller->showWindow();
        QWidget *window = controller->window();
        auto *recorder = window->findChild<QWKeyComboRecorder *>(u"shortcutRecorder"_s);
        QTest::keyClick(recorder, Qt::Key_Return);
        QVERIFY(recorder->isRecording());
        QTest::keyClick(recorder, Qt::Key_Escape);
        QVERIFY(!recorder->isRecording() && window->isVisible());
        QTest::keyClick(recorder, Qt::Key_Escape);
        QVERIFY(!window->isVisible());
        controller->showWindow();
        QTest::keyClick(window, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!window->isVisible());
    }

private:
    std::optional<PreferencesFixture> m_fixture;
};

QTEST_MAIN(TestQWPreferencesWindowController)
#include "TestQWPreferencesWindowController.moc"
