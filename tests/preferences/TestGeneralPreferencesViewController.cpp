#include "preferences/GeneralPreferencesViewController.h"
#include "preferences/QWKeyComboRecorder.h"
#include "preferences/SNHotKeyState.h"
#include "preferences/SNPreferencesTestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>

#include <optional>

using namespace Qt::StringLiterals;
using Settings = SNUserDefaults;
using Getter = bool (Settings::*)() const;
using Setter = void (Settings::*)(bool);

class TestGeneralPreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void boxesShowAndWriteTheirSetting_data();
    void boxesShowAndWriteTheirSetting();
    void oneWayToTheNotesAlwaysStays_data();
    void oneWayToTheNotesAlwaysStays();
    void taskbarCheckBoxRestsForAMoment();
    void spellingOffGreysAutoCorrection();
    void recorderStoresWhatItRecords_data();
    void recorderStoresWhatItRecords();
    void theDesktopsWayWithTheKeysShows();

private:
    template <typename T> T *child(const char *name) const
    {
        return m_controller->view()->findChild<T *>(QLatin1StringView(name));
    }
    Settings &settings() const { return Settings::standardUserDefaults(); }
    // Read from the file, as the next start of the program reads it.
    QVariant stored(const QString &key) const
    {
        return QSettings(GVUserDefaults::standardStorePath(), QSettings::IniFormat).value(key);
    }

    std::optional<PreferencesFixture> m_fixture;
    std::unique_ptr<GeneralPreferencesViewController> m_controller;
};

void TestGeneralPreferencesViewController::init()
{
    m_fixture.emplace();
    settings().setShowMenuIcon(true);
    settings().setShowIconInDock(true);
    settings().setCheckSpelling(true);
    settings().setHotKeyCombo({ QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask, 45 });
    settings().setNoteHotKeyCombo({ QWKeyCombo::CommandKeyMask, 40 });
    m_controller = std::make_unique<GeneralPreferencesViewController>();
    m_controller->view()->show();
}

void TestGeneralPreferencesViewController::cleanup()
{
    m_controller.reset();
    m_fixture.reset();
}

void TestGeneralPreferencesViewController::boxesShowAndWriteTheirSetting_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<Getter>("get");
    QTest::addColumn<Setter>("set");
    // The login item is also switched from the welcome window: it shows here at once.
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("everywhere") << u"hotKeyEnabledCheckbox"_s << &Settings::hotKeyEnabled
                                << &Settings::setHotKeyEnabled << false;
    QTest::newRow("hidden") << u"hideWindowCheckbox"_s << &Settings::hideWindow
                            << &Settings::setHideWindow << false;
    QTest::newRow("login") << u"startCheckbox"_s << &Settings::startAtLogin
                           << &Settings::setStartAtLogin << true;
    QTest::newRow("correction") << u"correctSpellingCheckbox"_s << &Settings::autoCorrectSpelling
                                << &Settings::setAutoCorrectSpelling << false;
}

void TestGeneralPreferencesViewController::boxesShowAndWriteTheirSetting()
{
    QFETCH(QString, box);
    QFETCH(Getter, get);
    QFETCH(Setter, set);
    QFETCH(bool, atOnce);
    auto *checkbox = m_controller->view()->findChild<QCheckBox *>(box);
    const bool before = (settings().*get)();
    QCOMPARE(checkbox->isChecked(), before);
    // Changed while the page was away: shown when it comes back, if not at once.
    (settings().*set)(!before);
    if (!atOnce)
        m_controller->qw_viewWillAppear();
    QCOMPARE(checkbox->isChecked(), !before);
    checkbox->click();
    QCOMPARE((settings().*get)(), before);
}

void TestGeneralPreferencesViewController::oneWayToTheNotesAlwaysStays_data()
{
    QTest::addColumn<QString>("first"); // turned off first, then comes back
    QTest::addColumn<QString>("second");
    QTest::newRow("tray icon last") << Settings::showIconInDockKey() << Settings::showMenuIconKey();
    QTest::newRow("taskbar last") << Settings::showMenuIconKey() << Settings::showIconInDockKey();
}

void TestGeneralPreferencesViewController::oneWayToTheNotesAlwaysStays()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    const auto box = [this](const QString &key) {
        return key == Settings::showMenuIconKey() ? m_controller->showMenuIconCheckbox()
                                                  : m_controller->showDockIconCheckbox();
    };
    box(first)->click();
    m_fixture->time.advanceBy(1.0);
    QSignalSpy written(&settings(), &GVUserDefaults::didChangeValueForKey);
    box(second)->click();
    QVERIFY(box(first)->isChecked() && stored(first).toBool());
    QVERIFY(!box(second)->isChecked() && !stored(second).toBool());
    // The one coming back is written before the other goes.
    QCOMPARE(written.count(), 2);
    QCOMPARE(written.at(0).at(0).toString(), first);
    QCOMPARE(written.at(1).at(0).toString(), second);
}

void TestGeneralPreferencesViewController::taskbarCheckBoxRestsForAMoment()
{
    QCheckBox *checkbox = m_controller->showDockIconCheckbox();
    checkbox->click();
    m_fixture->time.advanceBy(0.15);
    checkbox->click(); // does nothing yet
    QVERIFY(!settings().showIconInDock());
    m_fixture->time.advanceBy(0.05);
    checkbox->click();
    QVERIFY(settings().showIconInDock());
}

void TestGeneralPreferencesViewController::spellingOffGreysAutoCorrection()
{
    m_controller->checkSpellingCheckbox()->click();
    QVERIFY(!settings().checkSpelling());
    QVERIFY(!m_controller->correctSpellingCheckbox()->isEnabled());
    m_controller->checkSpellingCheckbox()->click();
    QVERIFY(m_controller->correctSpellingCheckbox()->isEnabled());
}

void TestGeneralPreferencesViewController::recorderStoresWhatItRecords_data()
{
    QTest::addColumn<QKeyCombination>("keys");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("stored");
    const QKeyCombination controlAltK(Qt::ControlModifier | Qt::AltModifier, Qt::Key_K);
    QTest::newRow("with modifiers") << controlAltK << u"Ctrl+Alt+K"_s << u"Ctrl+Alt+K"_s;
    QTest::newRow("function key alone") << QKeyCombination(Qt::Key_F11) << u"F11"_s << u"F11"_s;
    QTest::newRow("plain letter refused")
        << QKeyCombination(Qt::Key_K) << u"Type a shortcut"_s << u"Super+K"_s;
    QTest::newRow("Escape keeps the old")
        << QKeyCombination(Qt::Key_Escape) << u"Super+K"_s << u"Super+K"_s;
    QTest::newRow("Backspace clears")
        << QKeyCombination(Qt::Key_Backspace) << u"None"_s << QString();
}

void TestGeneralPreferencesViewController::recorderStoresWhatItRecords()
{
    QFETCH(QKeyCombination, keys);
    QFETCH(QString, shown);
    QFETCH(QString, stored);
    const QWKeyCombo otherHotKey = settings().hotKeyCombo();
    QWKeyComboRecorder *recorder = m_controller->noteShortcutRecorder();
    QTest::mouseClick(recorder, Qt::LeftButton); // starts recording
    QTest::keyClick(recorder, keys.key(), keys.keyboardModifiers());
    QCOMPARE(recorder->displayedText(), shown);
    const QWKeyCombo inFile { this->stored(Settings::noteHotKeyModifierKey()).toULongLong(),
        this->stored(Settings::noteHotKeyCodeKey()).toLongLong() };
    QCOMPARE(inFile, settings().noteHotKeyCombo());
    QCOMPARE(inFile.description(), stored);
    // A cleared one too is stored as no modifiers and code 0, not as the code no key has.
    QVERIFY(inFile.code >= 0);
    QCOMPARE(settings().hotKeyCombo(), otherHotKey);
}

void TestGeneralPreferencesViewController::theDesktopsWayWithTheKeysShows()
{
    using Route = SNHotKeyState::Route;
    SNHotKeyState state;
    m_controller->setHotKeyState(&state);
    const auto recorderShows = [this] { return m_controller->shortcutRecorder()->isVisible(); };
    QVERIFY(recorderShows());
    QVERIFY(!child<QLabel>("hotKeyRouteLabel")->isVisible());

    // The desktop decides: its keys replace the recorders, and change as it reports them.
    state.update(Route::DesktopDecides, { u"Ctrl+Shift+N"_s, u"vellumo --toggle-tags"_s },
        { {}, u"vellumo --new-note"_s });
    QVERIFY(!recorderShows());
    QCOMPARE(child<QLabel>("shortcutDesktopLabel")->text(), u"Ctrl+Shift+N"_s);
    QCOMPARE(child<QLabel>("noteShortcutDesktopLabel")->text(), u"None"_s);
    QVERIFY(child<QLabel>("hotKeyRouteLabel")->text().contains(u"keyboard settings decide"_s));
    QVERIFY(!child<QWidget>("commandsPanel")->isVisible());
    state.update(Route::DesktopDecides, { u"Meta+T"_s, u"vellumo --toggle-tags"_s },
        { u"Meta+N"_s, u"vellumo --new-note"_s });
    QCOMPARE(child<QLabel>("noteShortcutDesktopLabel")->text(), u"Meta+N"_s);

    // No portal: the recorders stay, with the commands for the desktop's own settings.
    state.update(Route::ProgramWindowsOnly, { {}, u"/opt/v/vellumo --toggle-tags"_s },
        { {}, u"/opt/v/vellumo --new-note"_s });
    QVERIFY(recorderShows());
    QVERIFY(child<QWidget>("commandsPanel")->isVisible());
    QVERIFY(child<QLabel>("hotKeyRouteLabel")->text().contains(u"only in Vellumo's windows"_s));
    QCOMPARE(child<QLabel>("noteCommandLabel")->text(), u"/opt/v/vellumo --new-note"_s);
    child<QPushButton>("copyTagsCommandButton")->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"/opt/v/vellumo --toggle-tags"_s);
    child<QPushButton>("copyNoteCommandButton")->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"/opt/v/vellumo --new-note"_s);

    state.update(Route::Grabbed, {}, {});
    QVERIFY(recorderShows());
    QVERIFY(!child<QWidget>("commandsPanel")->isVisible());
}

QTEST_MAIN(TestGeneralPreferencesViewController)
#include "TestGeneralPreferencesViewController.moc"
