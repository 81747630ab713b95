#pragma once

#include "preferences/QWModuleViewController.h"

#include <QPointer>

#include <memory>

class QCheckBox;
class QSlider;
struct QWKeyCombo;
class QWKeyComboRecorder;
class QWDebouncer;
class SNHotKeyState;
class SNUserDefaults;

namespace Ui {
class GeneralPreferencesViewController;
}

// The first page of the preferences: one control per setting, each change written straight
// into the settings, where the application controller picks up what it observes (tray icon,
// taskbar, login item, hot keys).
class GeneralPreferencesViewController final : public QWModuleViewController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GeneralPreferencesViewController)

public:
    // How long the taskbar check box rests after a change, so that the taskbar presence can
    // settle before it is changed again.
    static constexpr double showDockIconReenableDelay = 0.2;

    explicit GeneralPreferencesViewController(QObject *parent = nullptr);
    // The settings to show; null means the shared ones.
    explicit GeneralPreferencesViewController(SNUserDefaults *defaults, QObject *parent = nullptr);
    ~GeneralPreferencesViewController() override;

    QString moduleTitle() const override;
    bool moduleIsResizable() const override { return false; }

    void updateUI();
    void updateSpellingUI();
    void updateShowUI();
    // Where the desktop decides the hot keys, its keys replace the recorders; where they reach
    // only the program's own windows, the commands for the desktop's shortcut settings show.
    void updateHotKeyRouteUI();

    // How the desktop takes the hot keys; null shows the recorders alone.
    void setHotKeyState(SNHotKeyState *state);

    // Handlers of the controls.
    void shortcutRecorderKeyComboDidChange(QWKeyComboRecorder *recorder, const QWKeyCombo &combo);
    void hotKeyEnabledDidChange();
    void startAtLoginDidChange();
    void hideWindowDidChange();
    void showMenuIconDidChange();
    void showDockIconDidChange();
    void opacityDidChange();
    void checkSpellingDidChange();
    void correctSpellingDidChange();
    void copyCommandOf(bool showTags);

    void qw_viewWillAppear() override;

    QWKeyComboRecorder *shortcutRecorder() const;
    QWKeyComboRecorder *noteShortcutRecorder() const;
    QCheckBox *hotKeyEnabledCheckbox() const;
    QCheckBox *startCheckbox() const;
    QCheckBox *hideWindowCheckbox() const;
    QCheckBox *showMenuIconCheckbox() const;
    QCheckBox *showDockIconCheckbox() const;
    QSlider *opacitySlider() const;
    QCheckBox *checkSpellingCheckbox() const;
    QCheckBox *correctSpellingCheckbox() const;

protected:
    std::unique_ptr<QWidget> loadView() override;
    void qw_viewDidLoad() override;

private:
    SNUserDefaults &defaults() const;
    void settingDidChange(const QString &key);
    void showOpacityValue();

    SNUserDefaults *m_defaults = nullptr;
    QPointer<SNHotKeyState> m_hotKeyState;
    QMetaObject::Connection m_hotKeyStateConnection;
    std::unique_ptr<Ui::GeneralPreferencesViewController> m_ui;
    std::unique_ptr<QWDebouncer> m_showDockIconTimer;
};
