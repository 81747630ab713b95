#include "notewindow/SNNoteMenus.h"

#include "notes/SNStickyNote.h"
#include "notewindow/SNStickyWindow.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"
#include "themeview/SNThemeSwatch.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QActionGroup>
#include <QMenu>
#include <QWidgetAction>

SNNoteMenus::SNNoteMenus(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
    const std::shared_ptr<SNStickyNote> &note, QObject *parent)
    : QObject(parent), m_window(window), m_ui(ui), m_note(note)
{
    buildMenus();
}

SNNoteMenus::~SNNoteMenus() = default;

void SNNoteMenus::buildMenus()
{
    m_pinMenu = new QMenu(m_window);
    // Exactly one pin state holds: the items show as choices of one.
    auto *pinChoices = new QActionGroup(m_pinMenu);
    for (QAction *item : { m_ui.pinNormalItem, m_ui.pinFloatingItem, m_ui.pinDesktopItem }) {
        pinChoices->addAction(item);
        m_pinMenu->addAction(item);
    }

    m_themeMenu = new QMenu(m_window);
    m_ui.themeMenuItem->setMenu(m_themeMenu);

    m_alphaMenuItem = new QWidgetAction(m_window);

    m_settingsMenu = new QMenu(m_window);
    m_settingsMenu->addAction(m_ui.themeMenuItem);
    m_settingsMenu->addAction(m_ui.collapseMenuItem);
    // The transparency item goes in before it once it holds the slider: a menu takes the view
    // of such an item only when the item is added.
    m_alphaMenuItemSuccessor = m_settingsMenu->addSeparator();
    m_settingsMenu->addAction(m_ui.exportNoteItem);
    m_settingsMenu->addSeparator();
    m_settingsMenu->addActions(
        { m_ui.preferencesItem, m_ui.helpItem, m_ui.rateAppItem, m_ui.mailingListItem });
    m_settingsMenu->addSeparator();
    m_settingsMenu->addAction(m_ui.quitItem);

    m_tagsMenu = new QMenu(m_window);
    m_tagsMenu->addActions({ m_ui.filterTagsMenuItem, m_ui.showTagsItem });

    // Ctrl+, opens the preferences from anywhere in the note. There is no mailing list to
    // join, and an item that does nothing is worse than none.
    m_window->addAction(m_ui.preferencesItem);
    m_ui.mailingListItem->setVisible(false);

    // Their shortcuts work while the note is the active window, menu open or not.
    m_window->addActions({ m_ui.exportNoteItem, m_ui.quitItem });
}

void SNNoteMenus::setApplicationMenu(QMenu *menu)
{
    if (m_applicationMenu)
        m_settingsMenu->removeAction(m_applicationMenu->menuAction());
    m_applicationMenu = menu;
    if (menu)
        m_settingsMenu->insertMenu(m_ui.quitItem, menu);
}

void SNNoteMenus::addAlphaMenuItem()
{
    m_alphaMenuItem->setDefaultWidget(m_ui.alphaView);
    m_settingsMenu->insertAction(m_alphaMenuItemSuccessor, m_alphaMenuItem);
}

void SNNoteMenus::checkPinItem(qint64 pinState)
{
    const QList<QAction *> pinItems = m_pinMenu->actions();
    const qsizetype checkedIndex = pinState >= 0 && pinState < pinItems.size() ? pinState : 0;
    for (qsizetype i = 0; i < pinItems.size(); ++i)
        pinItems[i]->setChecked(i == checkedIndex);
}

void SNNoteMenus::updateThemeMenu()
{
    // Later: this may run from one of these very items.
    const QList<QAction *> oldItems = m_themeMenu->actions();
    for (QAction *item : oldItems) {
        m_themeMenu->removeAction(item);
        item->deleteLater();
    }

    const std::shared_ptr<SNTheme> noteTheme = m_note ? m_note->theme() : nullptr;
    const QString currentSaveName = noteTheme ? noteTheme->saveName() : QString();
    const auto addItem = [&](const SNTheme &theme) {
        QAction *item
            = new QAction(SNThemeSwatch::colorImageWithTheme(theme), theme.name(), m_themeMenu);
        item->setData(theme.saveName());
        item->setCheckable(true);
        item->setChecked(theme.saveName() == currentSaveName);
        connect(item, &QAction::triggered, this, [this, item] { Q_EMIT themeItemTriggered(item); });
        m_themeMenu->addAction(item);
    };

    SNThemeManager &registry = SNThemeManager::sharedManager();
    for (const std::shared_ptr<SNTheme> &theme : registry.bundledThemes())
        addItem(*theme);
    const SNThemeManager::UserThemeList userThemes = registry.userThemes();
    if (!userThemes.isEmpty()) {
        m_themeMenu->addSeparator();
        for (const std::shared_ptr<SNUserTheme> &theme : userThemes)
            addItem(*theme);
    }
}
