#include "notes/SNNoteMerger.h"

#include "kit/QWAttributedString.h"
#include "notes/SNJournalRecord.h"
#include "notes/SNNoteIdentity.h"
#include "notes/SNStickyNote.h"

const QString SNNoteMerger::conflictTitleSuffix = QStringLiteral(" (conflict)");

namespace {

QString plainText(const SNStickyNote &note)
{
    const std::optional<QWAttributedString> text = note.attributedString();
    return text ? text->string() : QString();
}

} // namespace

SNNoteMerger::Decision SNNoteMerger::merge(const SNStickyNote &own, const SNStickyNote &incoming)
{
    const SNNoteVersion ownVersion = own.version();
    const SNNoteVersion incomingVersion = incoming.version();
    const bool incomingIsNewer = incomingVersion.textStamp > ownVersion.textStamp;

    Decision decision;
    const bool ownHasSeen = ownVersion.hasSeenTextOf(incomingVersion);
    const bool incomingHasSeen = incomingVersion.hasSeenTextOf(ownVersion);
    if (ownHasSeen && incomingHasSeen) {
        // The same edits: only the formatting can differ, and the newer wins on every computer.
        decision.takesText
            = incomingIsNewer && own.attributedString() != incoming.attributedString();
    } else if (incomingHasSeen) {
        decision.takesText = true;
    } else if (!ownHasSeen) {
        decision.takesText = incomingIsNewer;
        // The same words typed on both sides are one text, not a conflict.
        if (plainText(own) != plainText(incoming))
            decision.conflictNote = conflictNoteOf(incomingIsNewer ? own : incoming);
    }
    decision.takesLook = incomingVersion.lookStamp > ownVersion.lookStamp;

    decision.version.stamp = std::max(ownVersion.stamp, incomingVersion.stamp);
    decision.version.textStamp
        = decision.takesText ? incomingVersion.textStamp : ownVersion.textStamp;
    decision.version.lookStamp = std::max(ownVersion.lookStamp, incomingVersion.lookStamp);
    decision.version.textEdits = SNNoteVersion::joinedTextEdits(ownVersion, incomingVersion);
    return decision;
}

std::shared_ptr<SNStickyNote> SNNoteMerger::conflictNoteOf(const SNStickyNote &loser)
{
    // A copy through the record form, so that every field comes along as a save writes it.
    const QByteArray form
        = SNJournalRecord::saving(std::const_pointer_cast<SNStickyNote>(loser.shared_from_this()))
              .archivedData();
    const std::optional<SNJournalRecord> copy = SNJournalRecord::fromArchivedData(form);
    if (!copy || !copy->note)
        return nullptr;
    const std::shared_ptr<SNStickyNote> note = copy->note;

    // Named after the text it keeps, not the last save of it: a later save of the same text (a
    // move, a new look) must not make a second conflict note on the computer that reads it.
    const SNNoteVersion version = loser.version();
    const SNNoteStamp &edit = version.textStamp.isNull() ? version.stamp : version.textStamp;
    QByteArray name = loser.uuid().toRfc4122();
    name += QByteArray::number(edit.millis) + ' ' + QByteArray::number(edit.counter) + ' '
        + edit.device.toUtf8();
    note->setUuid(QUuid::createUuidV5(SNNoteIdentity::idNamespace, name));

    const QWAttributedString text = note->attributedString().value_or(QWAttributedString());
    qsizetype endOfTitle = text.string().indexOf(QLatin1Char('\n'));
    if (endOfTitle < 0)
        endOfTitle = text.length();
    QWMutableAttributedString titled(text);
    titled.replaceCharactersInRangeWithString(endOfTitle, 0, conflictTitleSuffix);
    note->setAttributedString(titled.attributedString());
    // The same version as the text it keeps, so that the copies made on two computers are one.
    note->setVersion(version);
    return note;
}
