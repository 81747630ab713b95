#include "preferences/GeneralPreferencesViewController.h"
#include "preferences/QWKeyComboRecorder.h"
#include "preferences/SNHotKeyState.h"
#include "preferences/SNPreferencesTestSupport.h"

#include <QLabel>
#include <QSettings>
#include <QSignalSpy>

#include <optional>

using namespace Qt::StringLiterals;
using Settings = SNUserDefaults;

class TestGeneralPreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_fixture.emplace();
        settings().setShowMenuIcon(true);
        settings().setShowIconInDock(true);
        settings().setHotKeyCombo({ QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask, 45 });
        settings().setNoteHotKeyCombo({ QWKeyCombo::CommandKeyMask, 40 });
        m_controller = std::make_unique<GeneralPreferencesViewController>();
        m_controller->view()->show();
    }

    void cleanup()
    {
        m_controller.reset();
        m_fixture.reset();
    }

    void oneWayToTheNotesAlwaysStays_data()
    {
        QTest::addColumn<QString>("first"); // turned off first, then comes back
        QTest::addColumn<QString>("second");
        QTest::newRow("tray icon last")
            << Settings::showIconInDockKey() << Settings::showMenuIconKey();
        QTest::newRow("taskbar last")
            << Settings::showMenuIconKey() << Settings::showIconInDockKey();
    }

    void oneWayToTheNotesAlwaysStays()
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

    void taskbarCheckBoxRestsForAMoment()
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

    void recorderStoresWhatItRecords_data()
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

    void recorderStoresWhatItRecords()
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

    void theDesktopsWayWithTheKeysShows()
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
        QVERIFY(!child<QWidget>("commandsPanel")->isVisible());
        state.update(Route::DesktopDecides, { u"Meta+T"_s, u"vellumo --toggle-tags"_s },
            { u"Meta+N"_s, u"vellumo --new-note"_s });
        QCOMPARE(child<QLabel>("noteShortcutDesktopLabel")->text(), u"Meta+N"_s);

        // No portal: the recorders stay, with the commands for the desktop's own settings.
        state.update(Route::ProgramWindowsOnly, { {}, u"/opt/v/vellumo --toggle-tags"_s },
            { {}, u"/opt/v/vellumo --new-note"_s });
        QVERIFY(recorderShows());
        QVERIFY(child<QWidget>("commandsPanel")->isVisible());
        QCOMPARE(child<QLabel>("noteCommandLabel")->text(), u"/opt/v/vellumo --new-note"_s);

        state.update(Route::Grabbed, {}, {});
        QVERIFY(recorderShows());
        QVERIFY(!child<QWidget>("commandsPanel")->isVisible());
    }

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

QTEST_MAIN(TestGeneralPreferencesViewController)
#include "TestGeneralPreferencesViewController.moc"
