#include "app/SNRecentlyDeletedMenuDelegate.h"

#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNNoteWindowSet.h"

#include <QLocale>
#include <QMenu>
#include <QUuid>

namespace {

QString itemText(const SNDeletedNote &deleted)
{
    const QString title = deleted.title.isEmpty() ? SNNoteTitle::untitledTitle()
                                                  : SNNoteTitle::windowTitle(deleted.title);
    const QString date
        = QLocale().toString(deleted.dateDeleted.toLocalTime(), QLocale::ShortFormat);
    // A menu would take "&" for the mark of a key.
    return QString(title).replace(QLatin1Char('&'), QLatin1String("&&")) + QStringLiteral(" — ")
        + date;
}

} // namespace

SNRecentlyDeletedMenuDelegate::SNRecentlyDeletedMenuDelegate(
    SNStickyNoteManager &store, SNNoteWindowSet &notes, QObject *parent)
    : QObject(parent), m_store(store), m_notes(notes)
{ }

SNRecentlyDeletedMenuDelegate::~SNRecentlyDeletedMenuDelegate() = default;

QString SNRecentlyDeletedMenuDelegate::emptyMenuTitle()
{
    return tr("No Deleted Notes");
}

void SNRecentlyDeletedMenuDelegate::menuNeedsUpdate(QMenu *menu)
{
    menu->clear();
    const QList<SNDeletedNote> deleted = m_store.recentlyDeletedNotes();
    if (deleted.isEmpty()) {
        menu->addAction(emptyMenuTitle())->setEnabled(false);
        return;
    }
    for (const SNDeletedNote &note : deleted) {
        QAction *item = menu->addAction(itemText(note));
        item->setData(note.uuid);
        connect(item, &QAction::triggered, this, [this, item] { restoreNoteFromMenuItem(item); });
    }
}

void SNRecentlyDeletedMenuDelegate::restoreNoteFromMenuItem(QAction *sender)
{
    if (!sender)
        return;
    if (const std::shared_ptr<SNStickyNote> note
        = m_store.restoreDeletedNote(sender->data().toUuid()))
        m_notes.openNote(note, true);
}
