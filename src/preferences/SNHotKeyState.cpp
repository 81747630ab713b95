#include "preferences/SNHotKeyState.h"

SNHotKeyState::SNHotKeyState(QObject *parent) : QObject(parent) { }

SNHotKeyState::~SNHotKeyState() = default;

void SNHotKeyState::update(Route route, const Shortcut &showTags, const Shortcut &newNote)
{
    if (route == m_route && showTags == m_showTags && newNote == m_newNote)
        return;
    m_route = route;
    m_showTags = showTags;
    m_newNote = newNote;
    Q_EMIT changed();
}
