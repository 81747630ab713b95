#pragma once

#include "preferences/SNHotKeyState.h"

#include <QObject>

#include <functional>

class QWHotKeyHelper;
class SNUserDefaults;

// The program's two system-wide hot keys, as the settings set them: one shows or hides the tag
// browser, the other makes a new note. Their identifiers are -1 until a registration succeeds,
// and keep their values when the keys are turned off: unregistering a stale one does nothing.
// It also keeps the state the preferences show: how far the keys reach, and what the desktop
// made of them.
class SNGlobalHotKeys final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNGlobalHotKeys)

public:
    using Action = std::function<void()>;

    SNGlobalHotKeys(SNUserDefaults &defaults, QWHotKeyHelper &helper, Action showTags,
        Action newNote, QObject *parent = nullptr);
    ~SNGlobalHotKeys() override;

    // Registers both again from the settings, or neither while they are off.
    void updateHotkeys();
    // Any identifier but the show-tags key's, stale ones included, makes a new note.
    void hotKeyWasPressed(qint64 identifier);

    qint64 hotKeyID() const { return m_hotKeyID; }
    qint64 noteHotKeyID() const { return m_noteHotKeyID; }
    SNHotKeyState &state() { return m_state; }

    // The command that starts this program, as a user types it: its name where the search
    // path finds this very program, else its whole path.
    static QString programCommand();

private:
    void updateState();

    SNUserDefaults &m_defaults;
    QWHotKeyHelper &m_helper;
    Action m_showTags;
    Action m_newNote;
    qint64 m_hotKeyID = -1;
    qint64 m_noteHotKeyID = -1;
    SNHotKeyState m_state;
};
