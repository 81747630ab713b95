#include "app/SNHistoryCommandRunner.h"

#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

#include <QDateTime>
#include <QUuid>

namespace {

QString titleOrUntitled(const QString &title)
{
    return title.isEmpty() ? SNNoteTitle::untitledTitle() : title;
}

} // namespace

SNHistoryCommandRunner::SNHistoryCommandRunner(SNStickyNoteManager &store, NoteOpener opener)
    : m_store(store), m_opener(std::move(opener))
{ }

SNHistoryCommand::Result SNHistoryCommandRunner::run(const SNHistoryCommand &command)
{
    switch (command.kind) {
    case SNHistoryCommand::Kind::ListDeleted:
        return listDeleted();
    case SNHistoryCommand::Kind::RestoreDeleted:
        return restoreDeleted(command.id);
    case SNHistoryCommand::Kind::BackUpNow:
        return backUpNow();
    }
    return {};
}

QString SNHistoryCommandRunner::listingLine(
    const QString &id, const QDateTime &dateDeleted, const QString &title)
{
    QString shownTitle = titleOrUntitled(title);
    shownTitle.replace(QLatin1Char('\t'), QLatin1Char(' '));
    return id + QLatin1Char('\t')
        + dateDeleted.toOffsetFromUtc(dateDeleted.offsetFromUtc()).toString(Qt::ISODate)
        + QLatin1Char('\t') + shownTitle;
}

SNHistoryCommand::Result SNHistoryCommandRunner::listDeleted() const
{
    SNHistoryCommand::Result result;
    for (const SNDeletedNote &deleted : m_store.recentlyDeletedNotes()) {
        result.output += listingLine(deleted.uuid.toString(QUuid::WithoutBraces),
                             deleted.dateDeleted.toLocalTime(), deleted.title)
            + QLatin1Char('\n');
    }
    return result;
}

SNHistoryCommand::Result SNHistoryCommandRunner::restoreDeleted(const QString &id)
{
    const QUuid uuid = QUuid::fromString(id.trimmed());
    const std::shared_ptr<SNStickyNote> note
        = uuid.isNull() ? nullptr : m_store.restoreDeletedNote(uuid);
    if (!note) {
        return { QString(),
            tr("No note with the id \"%1\" is in Recently Deleted; vellumo --list-deleted lists "
               "them.")
                .arg(id) };
    }
    if (m_opener)
        m_opener(note);
    if (!m_store.save())
        return { QString(), tr("The note came back but could not be saved.") };
    const std::optional<QWAttributedString> text = note->attributedString();
    return { tr("Restored \"%1\".")
                 .arg(titleOrUntitled(
                     SNNoteTitle::titleTextOfString(text ? text->string() : QString())))
            + QLatin1Char('\n'),
        QString() };
}

SNHistoryCommand::Result SNHistoryCommandRunner::backUpNow()
{
    QString error;
    if (!m_store.backUpNow(&error))
        return { QString(), tr("Could not back up the notes: %1").arg(error) };
    const QList<SNBackup> backups = m_store.backups();
    const QString path = backups.isEmpty() ? m_store.databasePath() : backups.constFirst().path;
    return { tr("Backed up the notes to %1").arg(path) + QLatin1Char('\n'), QString() };
}
