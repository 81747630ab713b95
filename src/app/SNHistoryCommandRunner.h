#pragma once

#include "app/SNHistoryCommand.h"

#include <QCoreApplication>

#include <functional>
#include <memory>

class SNStickyNote;
class SNStickyNoteManager;

// Carries out history commands on a note store. A restored note is handed to the opener (the
// running program opens its window); without one, it is only saved.
class SNHistoryCommandRunner final
{
    Q_DECLARE_TR_FUNCTIONS(SNHistoryCommandRunner)

public:
    using NoteOpener = std::function<void(const std::shared_ptr<SNStickyNote> &note)>;

    explicit SNHistoryCommandRunner(SNStickyNoteManager &store, NoteOpener opener = {});

    SNHistoryCommand::Result run(const SNHistoryCommand &command);

    // One line of the listing, without its line break: tabs inside the title become spaces.
    static QString listingLine(
        const QString &id, const QDateTime &dateDeleted, const QString &title);

private:
    SNHistoryCommand::Result listDeleted() const;
    SNHistoryCommand::Result restoreDeleted(const QString &id);
    SNHistoryCommand::Result backUpNow();

    SNStickyNoteManager &m_store;
    NoteOpener m_opener;
};
