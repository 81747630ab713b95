#include "preferences/GeneralPreferencesViewController.h"
#include "preferences/QWKeyComboRecorder.h"
#include "settings/GVUserDefaults.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"

#include <QCheckBox>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

#include <memory>

namespace {

QWKeyCombo combo(quint64 flags, qint64 code)
{
    return { flags, code };
}

} // namespace

class TestGeneralPreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void controlsShowTheSettings();
    void loginItemSwitchedElsewhereShowsHere();
    void menuIconOffKeepsTheTaskbar();
    void taskbarOffKeepsTheMenuIcon();
    void taskbarCheckBoxRestsForAMoment();
    void spellingOffGreysAutoCorrection();
    void recordedCombinationsAreStored();
    void emptyCombinationIsStoredAsZeros();
    void recorderRefusesAPlainLetterAndEscapeKeepsTheOld();
    void opacitySliderWritesTheTransparency();

private:
    SNUserDefaults &defaults() const { return SNUserDefaults::standardUserDefaults(); }
    QVariant storedValue(const QString &key) const
    {
        return QSettings(GVUserDefaults::standardStorePath(), QSettings::IniFormat).value(key);
    }

    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<GeneralPreferencesViewController> m_controller;
};

void TestGeneralPreferencesViewController::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    QWScheduler::setCurrent(m_scheduler.get());
    SNUserDefaults &settings = defaults();
    settings.setShowMenuIcon(true);
    settings.setShowIconInDock(true);
    settings.setCheckSpelling(true);
    settings.setAutoCorrectSpelling(true);
    settings.setHotKeyEnabled(true);
    settings.setHideWindow(false);
    settings.setDefaultWindowAlpha(double(0.95f));
    settings.setHotKeyCombo({ QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask, 45 });
    m_controller = std::make_unique<GeneralPreferencesViewController>();
    m_controller->view()->show();
}

void TestGeneralPreferencesViewController::cleanup()
{
    m_controller.reset();
    QWScheduler::setCurrent(nullptr);
    m_scheduler.reset();
}

void TestGeneralPreferencesViewController::controlsShowTheSettings()
{
    QCOMPARE(m_controller->moduleTitle(), QStringLiteral("Preferences"));
    QVERIFY(!m_controller->moduleIsResizable());
    defaults().setHideWindow(true);
    defaults().setHotKeyEnabled(false);
    defaults().setNoteHotKeyCombo({ QWKeyCombo::CommandKeyMask, 40 });
    // Settings changed while the page was away show when it comes back.
    m_controller->qw_viewWillAppear();
    QVERIFY(m_controller->hideWindowCheckbox()->isChecked());
    QVERIFY(!m_controller->hotKeyEnabledCheckbox()->isChecked());
    QVERIFY(m_controller->showMenuIconCheckbox()->isChecked());
    QCOMPARE(
        m_controller->noteShortcutRecorder()->keyCombo(), combo(QWKeyCombo::CommandKeyMask, 40));
    QCOMPARE(m_controller->noteShortcutRecorder()->displayedText(), QStringLiteral("Super+K"));

    m_controller->hideWindowCheckbox()->click();
    m_controller->hotKeyEnabledCheckbox()->click();
    QVERIFY(!defaults().hideWindow());
    QVERIFY(defaults().hotKeyEnabled());
}

void TestGeneralPreferencesViewController::loginItemSwitchedElsewhereShowsHere()
{
    QVERIFY(!m_controller->startCheckbox()->isChecked());
    defaults().setStartAtLogin(true);
    QVERIFY(m_controller->startCheckbox()->isChecked());
    m_controller->startCheckbox()->click();
    QVERIFY(!defaults().startAtLogin());
    QVERIFY(!m_controller->startCheckbox()->isChecked());
}

void TestGeneralPreferencesViewController::menuIconOffKeepsTheTaskbar()
{
    m_controller->showDockIconCheckbox()->click();
    m_scheduler->advanceBy(0.2);
    QVERIFY(!defaults().showIconInDock());
    QVERIFY(defaults().showMenuIcon());

    QStringList written;
    connect(&defaults(), &GVUserDefaults::didChangeValueForKey, this,
        [&written](const QString &key) { written.append(key); });
    m_controller->showMenuIconCheckbox()->click();
    QVERIFY(!defaults().showMenuIcon());
    QVERIFY(defaults().showIconInDock());
    QVERIFY(m_controller->showDockIconCheckbox()->isChecked());
    QVERIFY(!m_controller->showMenuIconCheckbox()->isChecked());
    // The taskbar comes back before the tray icon goes.
    QCOMPARE(written,
        QStringList({ SNUserDefaults::showIconInDockKey(), SNUserDefaults::showMenuIconKey() }));
    disconnect(&defaults(), nullptr, this, nullptr);
}

void TestGeneralPreferencesViewController::taskbarOffKeepsTheMenuIcon()
{
    m_controller->showMenuIconCheckbox()->click();
    QVERIFY(!defaults().showMenuIcon());

    m_controller->showDockIconCheckbox()->click();
    QVERIFY(!defaults().showIconInDock());
    QVERIFY(defaults().showMenuIcon());
    QVERIFY(m_controller->showMenuIconCheckbox()->isChecked());
}

void TestGeneralPreferencesViewController::taskbarCheckBoxRestsForAMoment()
{
    QCheckBox *checkbox = m_controller->showDockIconCheckbox();
    checkbox->click();
    QVERIFY(!checkbox->isEnabled());
    m_scheduler->advanceBy(0.15);
    QVERIFY(!checkbox->isEnabled());
    // A click meanwhile does nothing.
    checkbox->click();
    QVERIFY(!defaults().showIconInDock());
    m_scheduler->advanceBy(0.05);
    QVERIFY(checkbox->isEnabled());
    checkbox->click();
    QVERIFY(defaults().showIconInDock());
}

void TestGeneralPreferencesViewController::spellingOffGreysAutoCorrection()
{
    QVERIFY(m_controller->correctSpellingCheckbox()->isEnabled());
    m_controller->checkSpellingCheckbox()->click();
    QVERIFY(!defaults().checkSpelling());
    QVERIFY(!m_controller->correctSpellingCheckbox()->isEnabled());
    QVERIFY(m_controller->correctSpellingCheckbox()->isChecked());
    QVERIFY(defaults().autoCorrectSpelling());

    m_controller->checkSpellingCheckbox()->click();
    QVERIFY(m_controller->correctSpellingCheckbox()->isEnabled());
    m_controller->correctSpellingCheckbox()->click();
    QVERIFY(!defaults().autoCorrectSpelling());
}

void TestGeneralPreferencesViewController::recordedCombinationsAreStored()
{
    QWKeyComboRecorder *recorder = m_controller->noteShortcutRecorder();
    QSignalSpy changes(&defaults(), &GVUserDefaults::didChangeValueForKey);
    QTest::mouseClick(recorder, Qt::LeftButton);
    QVERIFY(recorder->isRecording());
    QTest::keyClick(recorder, Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
    QVERIFY(!recorder->isRecording());

    const QWKeyCombo expected { QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask, 40 };
    QCOMPARE(defaults().noteHotKeyCombo(), expected);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.first().first().toString(), SNUserDefaults::noteHotKeyComboKey());
    QCOMPARE(storedValue(SNUserDefaults::noteHotKeyCodeKey()).toLongLong(), 40);
    QCOMPARE(storedValue(SNUserDefaults::noteHotKeyModifierKey()).toULongLong(),
        QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask);
    // The other hot key is untouched.
    QCOMPARE(defaults().hotKeyCombo().code, 45);
}

void TestGeneralPreferencesViewController::emptyCombinationIsStoredAsZeros()
{
    QWKeyComboRecorder *recorder = m_controller->shortcutRecorder();
    recorder->beginRecording();
    QTest::keyClick(recorder, Qt::Key_Backspace);
    QCOMPARE(defaults().hotKeyCombo(), combo(0, 0));
    QCOMPARE(storedValue(SNUserDefaults::hotKeyCodeKey()).toLongLong(), 0);
    QCOMPARE(storedValue(SNUserDefaults::hotKeyModifierKey()).toULongLong(), 0u);
    QCOMPARE(recorder->displayedText(), QStringLiteral("None"));

    // Recorded over again, and cleared once more with the field's own button.
    recorder->beginRecording();
    QTest::keyClick(recorder, Qt::Key_T, Qt::ControlModifier);
    QCOMPARE(defaults().hotKeyCombo(), combo(QWKeyCombo::ControlKeyMask, 17));
    recorder->clearKeyCombo();
    QCOMPARE(defaults().hotKeyCombo(), combo(0, 0));
}

void TestGeneralPreferencesViewController::recorderRefusesAPlainLetterAndEscapeKeepsTheOld()
{
    QWKeyComboRecorder *recorder = m_controller->shortcutRecorder();
    const QWKeyCombo before = defaults().hotKeyCombo();
    QSignalSpy recorded(recorder, &QWKeyComboRecorder::keyComboDidChange);
    recorder->beginRecording();
    QTest::keyClick(recorder, Qt::Key_K);
    QVERIFY(recorder->isRecording());
    QTest::keyClick(recorder, Qt::Key_Escape);
    QVERIFY(!recorder->isRecording());
    QCOMPARE(recorded.count(), 0);
    QCOMPARE(defaults().hotKeyCombo(), before);

    // A function key needs no modifier.
    recorder->beginRecording();
    QTest::keyClick(recorder, Qt::Key_F11);
    QCOMPARE(recorded.count(), 1);
    QCOMPARE(defaults().hotKeyCombo(), combo(0, 103));
}

void TestGeneralPreferencesViewController::opacitySliderWritesTheTransparency()
{
    QSlider *slider = m_controller->opacitySlider();
    QCOMPARE(slider->value(), 95);
    slider->setValue(60);
    QCOMPARE(defaults().defaultWindowAlpha(), 0.6);
}

QTEST_MAIN(TestGeneralPreferencesViewController)
#include "TestGeneralPreferencesViewController.moc"
