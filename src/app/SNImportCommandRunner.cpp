#include "app/SNImportCommandRunner.h"

#include "import/SNImportCatalog.h"
#include "import/SNImportFinder.h"
#include "import/SNImportLedger.h"
#include "import/SNImportReader.h"
#include "import/SNMarkdownExporter.h"
#include "notes/SNStickyNoteManager.h"

#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace {

QString knownPrograms()
{
    QStringList ids;
    for (const std::unique_ptr<SNImportReader> &reader : SNImportCatalog::allReaders())
        ids.append(reader->programId());
    return ids.join(u", "_s);
}

} // namespace

SNImportCommandRunner::SNImportCommandRunner(SNStickyNoteManager &store, SNThemeManager &themes,
    SNTagManager &tags, SNNoteImporter::AddNote addNote)
    : m_store(store),
      m_themes(themes),
      m_tags(tags),
      m_addNote(std::move(addNote)),
      m_environment(SNImportEnvironment::current())
{
    if (!m_addNote)
        m_addNote = [this](const std::shared_ptr<SNStickyNote> &note) { m_store.addNote(note); };
}

SNImportCommand::Result SNImportCommandRunner::run(const SNImportCommand &command)
{
    switch (command.kind) {
    case SNImportCommand::Kind::ListPrograms:
        return listPrograms();
    case SNImportCommand::Kind::Import:
        return import(command.program, command.path);
    case SNImportCommand::Kind::ExportMarkdown:
        return exportMarkdown(command.path);
    }
    return {};
}

SNImportCommand::Result SNImportCommandRunner::listPrograms() const
{
    const SNImportLedger ledger(m_store.baseDatabasePath());
    QString output;
    for (const SNImportSource &source : SNImportFinder::findSources(m_environment)) {
        const qsizetype before = ledger.countImported(source.programId, source.result.notes);
        QString line = u"%1\t%2\t%3"_s.arg(source.programId, source.programName,
            SNNoteImporter::noteCount(source.result.notes.size()));
        if (before > 0)
            line += tr(", %1 imported before").arg(before);
        if (!source.result.problems.isEmpty())
            line += tr(", %1 unreadable").arg(source.result.problems.size());
        output += line + u'\t' + source.path + u'\n';
    }
    if (output.isEmpty())
        output = tr("No notes of other programs were found. Known programs: %1\n")
                     .arg(knownPrograms());
    return { output, QString() };
}

SNImportCommand::Result SNImportCommandRunner::import(const QString &program, const QString &path)
{
    const std::optional<SNImportSource> source
        = SNImportFinder::readSource(program, path, m_environment);
    if (!source)
        return { QString(),
            tr("Vellumo cannot import from \"%1\". Known programs: %2")
                .arg(program, knownPrograms()) };
    if (source->result.notes.isEmpty() && source->result.problems.isEmpty())
        return { QString(),
            tr("No notes of %1 were found at %2.").arg(source->programName, source->path) };
    const std::unique_ptr<SNImportReader> reader = SNImportCatalog::readerWithId(program);
    SNImportLedger ledger(m_store.baseDatabasePath());
    SNNoteImporter importer(m_store, m_themes, m_tags, ledger, m_addNote);
    const SNImportReport report = importer.importNotes(*reader, source->path, source->result);
    m_store.save();
    return { report.text() + u'\n', QString() };
}

SNImportCommand::Result SNImportCommandRunner::exportMarkdown(const QString &folder) const
{
    const SNMarkdownExportResult result
        = SNMarkdownExporter::exportNotes(m_store.notesArray(), folder);
    if (!result.problems.isEmpty())
        return { QString(), result.text() };
    return { result.text() + u'\n', QString() };
}
