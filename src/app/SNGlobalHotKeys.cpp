#include "app/SNGlobalHotKeys.h"

#include "app/QWHotKeyHelper.h"
#include "settings/SNUserDefaults.h"

#include <QPointer>

SNGlobalHotKeys::SNGlobalHotKeys(SNUserDefaults &defaults, QWHotKeyHelper &helper, Action showTags,
    Action newNote, QObject *parent)
    : QObject(parent),
      m_defaults(defaults),
      m_helper(helper),
      m_showTags(std::move(showTags)),
      m_newNote(std::move(newNote))
{ }

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
    m_hotKeyID = m_helper.registerHotKey(m_defaults.hotKeyCombo());
    m_noteHotKeyID = m_helper.registerHotKey(m_defaults.noteHotKeyCombo());
}

void SNGlobalHotKeys::hotKeyWasPressed(qint64 identifier)
{
    if (identifier == m_hotKeyID)
        m_showTags();
    else
        m_newNote();
}
