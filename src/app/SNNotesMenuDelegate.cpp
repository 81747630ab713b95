#include "app/SNNotesMenuDelegate.h"

#include "kit/widgets/QWWindowManager.h"
#include "notes/SNStickyNote.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyNoteWindowController.h"

#include <QMenu>

#include <algorithm>

namespace {

QDateTime creationDateOf(const SNStickyNoteWindowController *controller)
{
    const std::shared_ptr<SNStickyNote> &note = controller->note();
    return note ? note->dateCreated().value_or(QDateTime()) : QDateTime();
}

} // namespace

SNNotesMenuDelegate::SNNotesMenuDelegate(
    SNNoteWindowSet &notes, QWWindowManager &windowManager, QObject *parent)
    : QObject(parent), m_notes(notes), m_windowManager(windowManager)
{ }

SNNotesMenuDelegate::~SNNotesMenuDelegate() = default;

void SNNotesMenuDelegate::menuNeedsUpdate(QMenu *menu)
{
    menu->clear();
    generateNotesInMenu(menu);
}

void SNNotesMenuDelegate::generateNotesInMenu(QMenu *menu)
{
    QList<SNStickyNoteWindowController *> controllers = m_notes.controllers();
    // Newest first.
    std::stable_sort(controllers.begin(), controllers.end(),
        [](const SNStickyNoteWindowController *first, const SNStickyNoteWindowController *second) {
            return creationDateOf(second) < creationDateOf(first);
        });
    for (SNStickyNoteWindowController *controller : std::as_const(controllers)) {
        QAction *item = menu->addAction(controller->window()->windowTitle());
        item->setData(QVariant::fromValue<QObject *>(controller));
        connect(item, &QAction::triggered, this,
            [this, item] { showWindowControllerFromMenuItem(item); });
    }
}

void SNNotesMenuDelegate::showWindowControllerFromMenuItem(QAction *sender)
{
    if (!sender)
        return;
    // Only a controller still managed is used.
    auto *represented
        = qobject_cast<SNStickyNoteWindowController *>(sender->data().value<QObject *>());
    if (represented && m_notes.contains(represented))
        m_windowManager.showWindow(represented->window());
}
