#include "preferences/GeneralPreferencesViewController.h"

#include "kit/QWDebouncer.h"
#include "preferences/QWKeyComboRecorder.h"
#include "preferences/SNHotKeyState.h"
#include "settings/SNUserDefaults.h"
#include "ui_GeneralPreferencesViewController.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>

GeneralPreferencesViewController::GeneralPreferencesViewController(QObject *parent)
    : GeneralPreferencesViewController(nullptr, parent)
{ }

GeneralPreferencesViewController::GeneralPreferencesViewController(
    SNUserDefaults *defaults, QObject *parent)
    : QWModuleViewController(parent),
      m_defaults(defaults),
      m_showDockIconTimer(std::make_unique<QWDebouncer>(showDockIconReenableDelay, [this] {
          if (m_ui)
              m_ui->showDockIconCheckbox->setEnabled(true);
      }))
{ }

GeneralPreferencesViewController::~GeneralPreferencesViewController() = default;

SNUserDefaults &GeneralPreferencesViewController::defaults() const
{
    return m_defaults ? *m_defaults : SNUserDefaults::standardUserDefaults();
}

QString GeneralPreferencesViewController::moduleTitle() const
{
    return tr("Preferences");
}

std::unique_ptr<QWidget> GeneralPreferencesViewController::loadView()
{
    auto view = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::GeneralPreferencesViewController>();
    m_ui->setupUi(view.get());
    return view;
}

void GeneralPreferencesViewController::qw_viewDidLoad()
{
    for (QWKeyComboRecorder *recorder : { m_ui->shortcutRecorder, m_ui->noteShortcutRecorder }) {
        connect(recorder, &QWKeyComboRecorder::keyComboDidChange, this,
            &GeneralPreferencesViewController::shortcutRecorderKeyComboDidChange);
    }
    connect(m_ui->hotKeyEnabledCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::hotKeyEnabledDidChange);
    connect(m_ui->startCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::startAtLoginDidChange);
    connect(m_ui->hideWindowCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::hideWindowDidChange);
    connect(m_ui->showMenuIconCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::showMenuIconDidChange);
    connect(m_ui->showDockIconCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::showDockIconDidChange);
    connect(m_ui->opacitySlider, &QSlider::valueChanged, this,
        &GeneralPreferencesViewController::opacityDidChange);
    connect(m_ui->checkSpellingCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::checkSpellingDidChange);
    connect(m_ui->correctSpellingCheckbox, &QCheckBox::clicked, this,
        &GeneralPreferencesViewController::correctSpellingDidChange);
    connect(
        m_ui->copyTagsCommandButton, &QPushButton::clicked, this, [this] { copyCommandOf(true); });
    connect(
        m_ui->copyNoteCommandButton, &QPushButton::clicked, this, [this] { copyCommandOf(false); });

    updateUI();
    // A login item switched elsewhere (the welcome window) shows here too. The connection
    // ends with this controller.
    connect(&defaults(), &GVUserDefaults::didChangeValueForKey, this,
        &GeneralPreferencesViewController::settingDidChange);
}

void GeneralPreferencesViewController::settingDidChange(const QString &key)
{
    if (key == SNUserDefaults::startAtLoginKey())
        updateUI();
}

void GeneralPreferencesViewController::qw_viewWillAppear()
{
    QWModuleViewController::qw_viewWillAppear();
    if (!m_ui)
        return;
    updateUI();
    m_ui->shortcutRecorder->update();
}

void GeneralPreferencesViewController::updateUI()
{
    if (!m_ui)
        return;
    SNUserDefaults &settings = defaults();
    m_ui->shortcutRecorder->setKeyCombo(settings.hotKeyCombo());
    m_ui->noteShortcutRecorder->setKeyCombo(settings.noteHotKeyCombo());
    m_ui->hotKeyEnabledCheckbox->setChecked(settings.hotKeyEnabled());
    m_ui->startCheckbox->setChecked(settings.startAtLogin());
    m_ui->hideWindowCheckbox->setChecked(settings.hideWindow());
    updateShowUI();
    {
        const QSignalBlocker blocker(m_ui->opacitySlider);
        m_ui->opacitySlider->setValue(
            int(std::lround(settings.defaultWindowAlpha() * m_ui->opacitySlider->maximum())));
    }
    showOpacityValue();
    m_ui->checkSpellingCheckbox->setChecked(settings.checkSpelling());
    m_ui->correctSpellingCheckbox->setChecked(settings.autoCorrectSpelling());
    updateSpellingUI();
    updateHotKeyRouteUI();
}

void GeneralPreferencesViewController::setHotKeyState(SNHotKeyState *state)
{
    disconnect(m_hotKeyStateConnection);
    m_hotKeyState = state;
    if (state) {
        m_hotKeyStateConnection = connect(state, &SNHotKeyState::changed, this,
            &GeneralPreferencesViewController::updateHotKeyRouteUI);
    }
    updateHotKeyRouteUI();
}

void GeneralPreferencesViewController::updateHotKeyRouteUI()
{
    if (!m_ui)
        return;
    const SNHotKeyState::Route route
        = m_hotKeyState ? m_hotKeyState->route() : SNHotKeyState::Route::Grabbed;
    const bool desktopDecides = route == SNHotKeyState::Route::DesktopDecides;
    m_ui->shortcutRecorder->setVisible(!desktopDecides);
    m_ui->noteShortcutRecorder->setVisible(!desktopDecides);
    m_ui->shortcutDesktopLabel->setVisible(desktopDecides);
    m_ui->noteShortcutDesktopLabel->setVisible(desktopDecides);
    m_ui->hotKeyRouteLabel->setVisible(route != SNHotKeyState::Route::Grabbed);
    m_ui->commandsPanel->setVisible(route == SNHotKeyState::Route::ProgramWindowsOnly);
    if (!m_hotKeyState)
        return;
    const auto keys = [](const SNHotKeyState::Shortcut &shortcut) {
        return shortcut.desktopTrigger.isEmpty() ? tr("None") : shortcut.desktopTrigger;
    };
    m_ui->shortcutDesktopLabel->setText(keys(m_hotKeyState->showTags()));
    m_ui->noteShortcutDesktopLabel->setText(keys(m_hotKeyState->newNote()));
    m_ui->tagsCommandLabel->setText(m_hotKeyState->showTags().command);
    m_ui->noteCommandLabel->setText(m_hotKeyState->newNote().command);
    if (desktopDecides) {
        m_ui->hotKeyRouteLabel->setText(
            tr("The desktop's keyboard settings decide these shortcuts; change them there."));
    } else {
        m_ui->hotKeyRouteLabel->setText(
            tr("This desktop lets no program set shortcuts, so these work only in Vellumo's "
               "windows; for every program, add these commands to the desktop's keyboard "
               "shortcuts:"));
    }
    // The page grows or shrinks by the lines that came or went.
    forceResize();
}

void GeneralPreferencesViewController::copyCommandOf(bool showTags)
{
    if (!m_hotKeyState)
        return;
    QGuiApplication::clipboard()->setText(
        showTags ? m_hotKeyState->showTags().command : m_hotKeyState->newNote().command);
}

void GeneralPreferencesViewController::updateSpellingUI()
{
    m_ui->correctSpellingCheckbox->setEnabled(defaults().checkSpelling());
}

void GeneralPreferencesViewController::updateShowUI()
{
    m_ui->showMenuIconCheckbox->setChecked(defaults().showMenuIcon());
    m_ui->showDockIconCheckbox->setChecked(defaults().showIconInDock());
}

void GeneralPreferencesViewController::showOpacityValue()
{
    m_ui->opacityValueLabel->setText(tr("%1 %").arg(m_ui->opacitySlider->value()));
}

void GeneralPreferencesViewController::shortcutRecorderKeyComboDidChange(
    QWKeyComboRecorder *recorder, const QWKeyCombo &combo)
{
    if (!m_ui)
        return;
    if (recorder == m_ui->shortcutRecorder)
        defaults().setHotKeyCombo(combo);
    else if (recorder == m_ui->noteShortcutRecorder)
        defaults().setNoteHotKeyCombo(combo);
}

void GeneralPreferencesViewController::hotKeyEnabledDidChange()
{
    defaults().setHotKeyEnabled(m_ui->hotKeyEnabledCheckbox->isChecked());
}

void GeneralPreferencesViewController::startAtLoginDidChange()
{
    defaults().setStartAtLogin(m_ui->startCheckbox->isChecked());
}

void GeneralPreferencesViewController::hideWindowDidChange()
{
    defaults().setHideWindow(m_ui->hideWindowCheckbox->isChecked());
}

void GeneralPreferencesViewController::showMenuIconDidChange()
{
    const bool show = m_ui->showMenuIconCheckbox->isChecked();
    // One of the two ways to reach the notes always stays.
    if (!show && !defaults().showIconInDock()) {
        defaults().setShowIconInDock(true);
        m_ui->showDockIconCheckbox->setChecked(true);
    }
    defaults().setShowMenuIcon(show);
}

void GeneralPreferencesViewController::showDockIconDidChange()
{
    QCheckBox *checkbox = m_ui->showDockIconCheckbox;
    checkbox->setEnabled(false);
    const bool show = checkbox->isChecked();
    if (!show && !defaults().showMenuIcon()) {
        defaults().setShowMenuIcon(true);
        m_ui->showMenuIconCheckbox->setChecked(true);
    }
    defaults().setShowIconInDock(show);

    m_showDockIconTimer->restart();
}

void GeneralPreferencesViewController::opacityDidChange()
{
    showOpacityValue();
    defaults().setDefaultWindowAlpha(
        double(m_ui->opacitySlider->value()) / m_ui->opacitySlider->maximum());
}

void GeneralPreferencesViewController::checkSpellingDidChange()
{
    defaults().setCheckSpelling(m_ui->checkSpellingCheckbox->isChecked());
    updateSpellingUI();
}

void GeneralPreferencesViewController::correctSpellingDidChange()
{
    defaults().setAutoCorrectSpelling(m_ui->correctSpellingCheckbox->isChecked());
}

QWKeyComboRecorder *GeneralPreferencesViewController::shortcutRecorder() const
{
    return m_ui ? m_ui->shortcutRecorder : nullptr;
}

QWKeyComboRecorder *GeneralPreferencesViewController::noteShortcutRecorder() const
{
    return m_ui ? m_ui->noteShortcutRecorder : nullptr;
}

QCheckBox *GeneralPreferencesViewController::hotKeyEnabledCheckbox() const
{
    return m_ui ? m_ui->hotKeyEnabledCheckbox : nullptr;
}

QCheckBox *GeneralPreferencesViewController::startCheckbox() const
{
    return m_ui ? m_ui->startCheckbox : nullptr;
}

QCheckBox *GeneralPreferencesViewController::hideWindowCheckbox() const
{
    return m_ui ? m_ui->hideWindowCheckbox : nullptr;
}

QCheckBox *GeneralPreferencesViewController::showMenuIconCheckbox() const
{
    return m_ui ? m_ui->showMenuIconCheckbox : nullptr;
}

QCheckBox *GeneralPreferencesViewController::showDockIconCheckbox() const
{
    return m_ui ? m_ui->showDockIconCheckbox : nullptr;
}

QSlider *GeneralPreferencesViewController::opacitySlider() const
{
    return m_ui ? m_ui->opacitySlider : nullptr;
}

QCheckBox *GeneralPreferencesViewController::checkSpellingCheckbox() const
{
    return m_ui ? m_ui->checkSpellingCheckbox : nullptr;
}

QCheckBox *GeneralPreferencesViewController::correctSpellingCheckbox() const
{
    return m_ui ? m_ui->correctSpellingCheckbox : nullptr;
}
