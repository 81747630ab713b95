#include "app/SNGlobalHotKeys.h"

#include "app/QWHotKeyGrabber.h"
#include "app/QWHotKeyHelper.h"
#include "app/SNLaunchRequest.h"
#include "settings/SNUserDefaults.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

SNGlobalHotKeys::SNGlobalHotKeys(SNUserDefaults &defaults, QWHotKeyHelper &helper, Action showTags,
    Action newNote, QObject *parent)
    : QObject(parent),
      m_defaults(defaults),
      m_helper(helper),
      m_showTags(std::move(showTags)),
      m_newNote(std::move(newNote))
{
    if (QWHotKeyGrabber *grabber = m_helper.grabber())
        connect(grabber, &QWHotKeyGrabber::reachDidChange, this, &SNGlobalHotKeys::updateState);
    updateState();
}

SNGlobalHotKeys::~SNGlobalHotKeys() = default;

void SNGlobalHotKeys::updateHotkeys()
{
    if (m_hotKeyID != -1)
        m_helper.unregisterHotkeyWithID(m_hotKeyID);
    if (m_noteHotKeyID != -1)
        m_helper.unregisterHotkeyWithID(m_noteHotKeyID);
    if (!m_defaults.hotKeyEnabled())
        return;
    if (!m_helper.pressedBlock()) {
        m_helper.setPressedBlock([self = QPointer<SNGlobalHotKeys>(this)](qint64 identifier) {
            if (self)
                self->hotKeyWasPressed(identifier);
        });
    }
    // A desktop that binds the keys for the program files them under these names and shows
    // the descriptions in its shortcut settings.
    m_hotKeyID = m_helper.registerHotKey(m_defaults.hotKeyCombo(),
        SNLaunchRequest::toggleTagsAction(), tr("Show or hide the tag browser"));
    m_noteHotKeyID = m_helper.registerHotKey(
        m_defaults.noteHotKeyCombo(), SNLaunchRequest::newNoteAction(), tr("New note"));
}

void SNGlobalHotKeys::hotKeyWasPressed(qint64 identifier)
{
    if (identifier == m_hotKeyID)
        m_showTags();
    else
        m_newNote();
}

void SNGlobalHotKeys::updateState()
{
    const QWHotKeyGrabber *grabber = m_helper.grabber();
    SNHotKeyState::Route route = SNHotKeyState::Route::Grabbed;
    if (grabber && grabber->reach() == QWHotKeyGrabber::Reach::DesktopDecides)
        route = SNHotKeyState::Route::DesktopDecides;
    else if (grabber && grabber->reach() == QWHotKeyGrabber::Reach::ProgramWindowsOnly)
        route = SNHotKeyState::Route::ProgramWindowsOnly;
    // The search path is looked through once for both.
    const QString program = programCommand();
    const auto shortcut = [grabber, &program](const QString &action) {
        return SNHotKeyState::Shortcut { grabber ? grabber->desktopTrigger(action) : QString(),
            program + QStringLiteral(" --") + action };
    };
    m_state.update(route, shortcut(SNLaunchRequest::toggleTagsAction()),
        shortcut(SNLaunchRequest::newNoteAction()));
}

QString SNGlobalHotKeys::programCommand()
{
    const QFileInfo program(QCoreApplication::applicationFilePath());
    const QString found = QStandardPaths::findExecutable(program.fileName());
    QString command
        = !found.isEmpty() && QFileInfo(found).canonicalFilePath() == program.canonicalFilePath()
        ? program.fileName()
        : program.filePath();
    if (command.contains(QLatin1Char(' ')))
        command = QLatin1Char('\'') + command + QLatin1Char('\'');
    return command;
}
