#include "import/SNNoteImporter.h"

#include "import/SNImportLedger.h"
#include "import/SNImportReader.h"
#include "kit/QWAttributedString.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNWindowFrameString.h"
#include "tags/SNHashtagScanner.h"

#include <QRegularExpression>
#include <QSet>

using namespace Qt::Literals::StringLiterals;

namespace {

const QUuid importNamespace = QUuid::fromString(u"{6b1c5c1e-4a0d-5e8f-9a57-0c1f3b2d7e41}"_s);

// A corner this far off is a program's "not placed yet" (KNotes writes -10000, -10000): the
// note is placed like one without a position.
bool isPlausiblePosition(const QPoint &corner)
{
    return corner.x() > -2000 && corner.y() > -2000 && corner.x() < 100000 && corner.y() < 100000;
}

} // namespace

QString SNImportReport::text() const
{
    QStringList lines;
    lines.append(SNNoteImporter::tr("%1: %2 imported")
                     .arg(programName, SNNoteImporter::noteCount(notes.size())));
    if (alreadyImported > 0)
        lines.append(SNNoteImporter::tr("  %1 imported before and left out")
                         .arg(SNNoteImporter::noteCount(alreadyImported)));
    for (const QString &theme : themesMade)
        lines.append(SNNoteImporter::tr("  New theme for their colour: %1").arg(theme));
    for (const QString &remark : remarks)
        lines.append(u"  "_s + remark);
    for (const SNImportProblem &problem : problems)
        lines.append(
            SNNoteImporter::tr("  Not imported: %1 — %2").arg(problem.item, problem.reason));
    return lines.join(u'\n');
}

SNNoteImporter::SNNoteImporter(SNStickyNoteManager &store, SNThemeManager &themes,
    SNTagManager &tags, SNImportLedger &ledger, AddNote addNote)
    : m_store(store),
      m_tags(tags),
      m_ledger(ledger),
      m_themeMatcher(themes),
      m_addNote(std::move(addNote))
{ }

QString SNNoteImporter::noteCount(qsizetype count)
{
    return count == 1 ? tr("1 note") : tr("%1 notes").arg(count);
}

QUuid SNNoteImporter::noteIdFor(const QString &programId, const QString &sourceId)
{
    return QUuid::createUuidV5(importNamespace, programId + u'/' + sourceId);
}

QString SNNoteImporter::hashtagFor(const QString &group)
{
    static const QRegularExpression nonWord(
        u"\\W+"_s, QRegularExpression::UseUnicodePropertiesOption);
    QString words = group;
    words.replace(nonWord, u"_"_s);
    while (words.startsWith(u'_'))
        words.remove(0, 1);
    while (words.endsWith(u'_'))
        words.chop(1);
    return words.isEmpty() ? QString() : u'#' + words;
}

SNImportReport SNNoteImporter::importFrom(const SNImportReader &reader, const QString &path)
{
    return importNotes(reader, path, reader.read(path));
}

SNImportReport SNNoteImporter::importNotes(
    const SNImportReader &reader, const QString &path, const SNImportReadResult &result)
{
    SNImportReport report;
    report.programName = reader.programName();
    report.path = path;
    report.problems = result.problems;
    report.remarks = result.remarks;

    const qsizetype themesMadeBefore = m_themeMatcher.themesMade().size();
    QSet<QUuid> present;
    for (const std::shared_ptr<SNStickyNote> &note : m_store.notesArray())
        present.insert(note->uuid());
    QSet<QString> seen;
    for (const SNImportedNote &imported : result.notes) {
        if (imported.sourceId.isEmpty() || seen.contains(imported.sourceId)) {
            report.problems.append({ imported.text.string().section(u'\n', 0, 0).left(60),
                tr("The note has no id of its own, or the same id as another.") });
            continue;
        }
        seen.insert(imported.sourceId);
        const QUuid id = noteIdFor(reader.programId(), imported.sourceId);
        // A note deleted since it came in stays deleted: the ledger remembers it.
        if (m_ledger.contains(reader.programId(), imported.sourceId) || present.contains(id)
            || m_store.deletedNote(id)) {
            ++report.alreadyImported;
            continue;
        }
        if (imported.text.string().trimmed().isEmpty() && imported.tags.isEmpty()) {
            report.problems.append({ imported.sourceId, tr("The note is empty.") });
            continue;
        }
        const QString themeName = m_themeMatcher.themeNameFor(
            imported.backgroundColor, imported.textColor, imported.colorName, reader.programName());
        std::shared_ptr<SNStickyNote> note = noteFor(imported, themeName);
        note->setUuid(id);
        m_addNote(note);
        m_ledger.add(reader.programId(), imported.sourceId, id);
        report.notes.append(note);
    }
    report.themesMade = m_themeMatcher.themesMade().mid(themesMadeBefore);
    QString error;
    if (!report.notes.isEmpty() && !m_ledger.save(&error))
        report.problems.append({ SNImportLedger::fileName,
            tr("Vellumo could not note what was imported (%1): importing again would bring "
               "these notes in twice.")
                .arg(error) });
    return report;
}

std::shared_ptr<SNStickyNote> SNNoteImporter::noteFor(
    const SNImportedNote &imported, const QString &themeName)
{
    QWMutableAttributedString text(imported.text);
    // Groups become hashtags on a line of their own at the end, unless the text has them.
    QStringList hashtags;
    QSet<QString> written;
    for (const SNHashtagScanner::Occurrence &tag :
        SNHashtagScanner::occurrencesInString(imported.text.string()))
        written.insert(tag.name.toCaseFolded());
    for (const QString &group : imported.tags) {
        const QString hashtag = hashtagFor(group);
        if (!hashtag.isEmpty() && !written.contains(hashtag.toCaseFolded())) {
            written.insert(hashtag.toCaseFolded());
            hashtags.append(hashtag);
        }
    }
    if (!hashtags.isEmpty()) {
        QString ending = text.string().endsWith(u'\n') ? u"\n"_s : u"\n\n"_s;
        if (text.string().trimmed().isEmpty())
            ending.clear();
        text.appendString(ending + hashtags.join(u' '));
    }
    const QWAttributedString stored = SNHashtagScanner::taggedString(text.attributedString());

    std::shared_ptr<SNStickyNote> note = SNStickyNote::note();
    note->setAttributedString(stored);
    note->setTags(SNHashtagScanner::tokenizeTags(stored.string(), m_tags));
    if (!themeName.isNull())
        note->setThemeName(themeName);
    const QDateTime modified = imported.dateModified.value_or(QDateTime());
    const QDateTime created = imported.dateCreated.value_or(modified);
    if (created.isValid())
        note->setDateCreated(created);
    if (modified.isValid())
        note->setDateModified(modified);

    const QSize size = imported.size && imported.size->width() > 0 && imported.size->height() > 0
        ? imported.size->boundedTo(QSize(4000, 4000)).expandedTo(QSize(80, 40))
        : defaultSize;
    QPoint position;
    if (imported.position && isPlausiblePosition(*imported.position)) {
        position = *imported.position;
    } else {
        const int step = cascadeStep * (m_cascadeIndex++ % cascadeLength);
        position = QPoint(cascadeStart + step, cascadeStart + step);
    }
    note->setWindowFrame(SNWindowFrameString::stringFromRect(QRect(position, size)));
    if (imported.isFloating)
        note->setPinState(SNStickyNote::PinStateFloating);
    note->setIsCollapsed(imported.isHidden);
    return note;
}
