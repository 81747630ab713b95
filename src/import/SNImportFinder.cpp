#include "import/SNImportFinder.h"

#include "import/SNImportCatalog.h"
#include "import/SNImportReader.h"

#include <QFileInfo>
#include <QSet>

namespace {

SNImportSource sourceAt(const SNImportReader &reader, const QString &path)
{
    return { reader.programId(), reader.programName(), path, reader.read(path) };
}

// A program may keep notes in more than one place at once (KNotes: a notes resource in the data
// folder, another where its settings point, and the old notes.ics): every place is read, and a
// note found twice counts once.
SNImportSource sourceOfAllPlaces(const SNImportReader &reader, const QStringList &paths)
{
    SNImportSource source { reader.programId(), reader.programName(), QString(), {} };
    QSet<QString> ids;
    for (const QString &path : paths) {
        if (!QFileInfo::exists(path))
            continue;
        SNImportReadResult result = reader.read(path);
        if (result.notes.isEmpty() && result.problems.isEmpty())
            continue;
        if (source.path.isEmpty())
            source.path = path;
        for (SNImportedNote &note : result.notes) {
            if (!ids.contains(note.sourceId)) {
                ids.insert(note.sourceId);
                source.result.notes.append(std::move(note));
            }
        }
        source.result.problems += result.problems;
        for (const QString &remark : std::as_const(result.remarks)) {
            if (!source.result.remarks.contains(remark))
                source.result.remarks.append(remark);
        }
    }
    return source;
}

} // namespace

QList<SNImportSource> SNImportFinder::findSources(const SNImportEnvironment &environment)
{
    QList<SNImportSource> sources;
    for (const std::unique_ptr<SNImportReader> &reader : SNImportCatalog::allReaders()) {
        SNImportSource source = sourceOfAllPlaces(*reader, reader->candidatePaths(environment));
        if (!source.path.isEmpty())
            sources.append(std::move(source));
    }
    return sources;
}

std::optional<SNImportSource> SNImportFinder::readSource(
    const QString &programId, const QString &path, const SNImportEnvironment &environment)
{
    const std::unique_ptr<SNImportReader> reader = SNImportCatalog::readerWithId(programId);
    if (!reader)
        return std::nullopt;
    if (!path.isEmpty())
        return sourceAt(*reader, path);
    const QStringList candidates = reader->candidatePaths(environment);
    SNImportSource source = sourceOfAllPlaces(*reader, candidates);
    if (source.path.isEmpty())
        source.path = candidates.value(0);
    return source;
}
