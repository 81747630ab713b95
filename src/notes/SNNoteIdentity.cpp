#include "notes/SNNoteIdentity.h"

#include "kit/QWKeyedArchiver.h"
#include "notes/SNStickyNote.h"

#include <QSet>

const QUuid SNNoteIdentity::idNamespace
    = QUuid::fromString(QStringLiteral("6c1a4f0e-55a2-4b8e-9d3b-2f7e0c9a8b41"));

qsizetype SNNoteIdentity::giveIdsToNotesWithout(const QList<std::shared_ptr<SNStickyNote>> &notes)
{
    QSet<QUuid> taken;
    for (const std::shared_ptr<SNStickyNote> &note : notes)
        taken.insert(note->uuid());
    qsizetype given = 0;
    for (const std::shared_ptr<SNStickyNote> &note : notes) {
        if (!note->uuid().isNull())
            continue;
        const QByteArray form = QWKeyedArchiver::archivedDataWithRootObject(*note);
        // Two identical notes of one archive still get two ids, in the archive's order.
        QUuid uuid = QUuid::createUuidV5(idNamespace, form);
        for (int copy = 2; taken.contains(uuid); ++copy)
            uuid = QUuid::createUuidV5(idNamespace, form + QByteArray::number(copy));
        taken.insert(uuid);
        note->setUuid(uuid);
        ++given;
    }
    return given;
}
