#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class QAction;
class QMenu;
class QWidgetAction;
class SNStickyNote;
class SNStickyWindow;

namespace Ui {
class SNStickyNoteWindowController;
}

// The menus of a note window's buttons: pin states, settings with the theme submenu and the
// transparency slider, and the tag menu. It builds them from the window's items and keeps the
// theme menu in step with the themes there are; what an item does is its owner's to connect.
class SNNoteMenus final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteMenus)

public:
    // The note is read on each use, as the owner may be handed another one.
    SNNoteMenus(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
        const std::shared_ptr<SNStickyNote> &note, QObject *parent = nullptr);
    ~SNNoteMenus() override;

    QMenu *pinMenu() const { return m_pinMenu; }
    QMenu *themeMenu() const { return m_themeMenu; }
    QMenu *settingsMenu() const { return m_settingsMenu; }
    QMenu *tagsMenu() const { return m_tagsMenu; }
    QWidgetAction *alphaMenuItem() const { return m_alphaMenuItem; }

    // The program's own commands, in the settings menu above Quit. The menu stays its owner's.
    void setApplicationMenu(QMenu *menu);
    // Puts the transparency slider into the settings menu, once the window has loaded.
    void addAlphaMenuItem();
    // Checks the item of the pin state; an unknown state shows as the first.
    void checkPinItem(qint64 pinState);
    // One item per theme, the note's own checked, user themes after a separator.
    void updateThemeMenu();

Q_SIGNALS:
    void themeItemTriggered(QAction *item);

private:
    void buildMenus();

    SNStickyWindow *m_window;
    Ui::SNStickyNoteWindowController &m_ui;
    const std::shared_ptr<SNStickyNote> &m_note;
    QMenu *m_pinMenu = nullptr;
    QMenu *m_themeMenu = nullptr;
    QMenu *m_settingsMenu = nullptr;
    QMenu *m_tagsMenu = nullptr;
    QWidgetAction *m_alphaMenuItem = nullptr;
    QAction *m_alphaMenuItemSuccessor = nullptr;
    QPointer<QMenu> m_applicationMenu;
};
