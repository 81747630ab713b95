#include "import/SNImportFinder.h"

#include "import/SNImportCatalog.h"
#include "import/SNImportReader.h"

#include <QFileInfo>

namespace {

SNImportSource sourceAt(const SNImportReader &reader, const QString &path)
{
    return { reader.programId(), reader.programName(), path, reader.read(path) };
}

} // namespace

QList<SNImportSource> SNImportFinder::findSources(const SNImportEnvironment &environment)
{
    QList<SNImportSource> sources;
    for (const std::unique_ptr<SNImportReader> &reader : SNImportCatalog::allReaders()) {
        for (const QString &path : reader->candidatePaths(environment)) {
            if (!QFileInfo::exists(path))
                continue;
            SNImportSource source = sourceAt(*reader, path);
            if (source.result.notes.isEmpty() && source.result.problems.isEmpty())
                continue;
            sources.append(std::move(source));
            break;
        }
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
    for (const QString &candidate : candidates) {
        if (QFileInfo::exists(candidate)) {
            SNImportSource source = sourceAt(*reader, candidate);
            if (!source.result.notes.isEmpty() || !source.result.problems.isEmpty())
                return source;
        }
    }
    return SNImportSource { reader->programId(), reader->programName(), candidates.value(0), {} };
}
