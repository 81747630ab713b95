#include "import/SNKNotesReader.h"

#include "import/SNImportFile.h"
#include "import/SNKNotesCalendar.h"
#include "import/SNKNotesConfig.h"
#include "import/SNKNotesMessage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNKNotesReader", text);
}

SNKNotesConfig configAt(const QString &path)
{
    return SNKNotesConfig(SNImportFile::read(path, nullptr, 1024 * 1024).value_or(QByteArray()));
}

// The configuration folder of the home a path lies in: "~/.local/share/notes/…" has its
// KNotes settings in "~/.config", "~/.kde/share/apps/knotes/…" in "~/.kde/share/config".
QString configFolderFor(const QString &path)
{
    const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    for (const QString &kde : { u"/.kde/share/"_s, u"/.kde4/share/"_s }) {
        const qsizetype at = clean.indexOf(kde);
        if (at >= 0)
            return clean.left(at + kde.size()) + u"config"_s;
    }
    const qsizetype at = clean.indexOf(u"/.local/share/"_s);
    if (at >= 0)
        return clean.left(at) + u"/.config"_s;
    return SNImportEnvironment::current().configHome;
}

bool isMaildir(const QDir &folder)
{
    return folder.exists(u"cur"_s) || folder.exists(u"new"_s);
}

struct NoteFolder
{
    QString path;
    QString tag; // empty for a resource's root
};

// The folders Akonadi's notes resources keep their notes in, as their settings name them.
QSet<QString> resourceRoots(const QString &configFolder)
{
    const QString home = QFileInfo(configFolder).absolutePath();
    QSet<QString> roots;
    const QDir config(configFolder);
    for (const QString &name : config.entryList(
             { u"akonadi_akonotes_resource_*rc"_s }, QDir::Files | QDir::Hidden, QDir::Name)) {
        const std::optional<QString> path
            = configAt(config.filePath(name)).expandedValue(u"General"_s, u"Path"_s, home);
        if (path && !path->isEmpty())
            roots.insert(QDir::cleanPath(*path));
    }
    return roots;
}

// A resource's root is never a folder of the user's: its name is the resource's id.
bool isResourceRoot(const QString &path, const QSet<QString> &roots)
{
    static const QRegularExpression instance(u"^akonadi_akonotes_resource_\\d+$"_s);
    return roots.contains(QDir::cleanPath(path))
        || instance.match(QFileInfo(path).fileName()).hasMatch();
}

// Every maildir below `root`: a maildir root's sub-folders are folders of notes, named by the
// user; a folder that is no maildir holds resources' roots ("akonadi_akonotes_resource_0").
void collectFolders(const QString &path, const QString &tag, bool isRoot, int depth,
    const QSet<QString> &roots, QList<NoteFolder> &folders)
{
    const QDir folder(path);
    const bool maildir = isMaildir(folder);
    if (maildir)
        folders.append({ path, tag });
    if (depth >= SNKNotesReader::maximumFolderDepth)
        return;
    const QStringList children = folder.entryList(
        QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name);
    for (const QString &child : children) {
        if (child == u"cur"_s || child == u"new"_s || child == u"tmp"_s)
            continue;
        // Sub-folders of a folder that is not a root live in ".Name.directory".
        QString name = child;
        if (name.startsWith(u'.') && name.endsWith(u".directory"_s))
            name = name.mid(1, name.size() - 11);
        const QString childPath = folder.filePath(child);
        const bool childIsRoot = (!maildir && isRoot) || isResourceRoot(childPath, roots);
        collectFolders(
            childPath, childIsRoot ? QString() : name, childIsRoot, depth + 1, roots, folders);
    }
}

SNImportReadResult readMaildirs(const QString &path)
{
    SNImportReadResult result;
    QList<NoteFolder> folders;
    const QString configFolder = configFolderFor(path);
    collectFolders(path, QString(), true, 0, resourceRoots(configFolder), folders);

    const SNKNotesConfig knotesrc = configAt(configFolder + u"/knotesrc"_s);
    const QColor background
        = knotesrc.color(u"Display"_s, u"bgcolor"_s).value_or(QColor(Qt::yellow));
    const QColor foreground
        = knotesrc.color(u"Display"_s, u"fgcolor"_s).value_or(QColor(Qt::black));
    int count = 0;
    for (const NoteFolder &folder : std::as_const(folders)) {
        for (const QString &sub : { u"cur"_s, u"new"_s }) {
            const QDir dir(folder.path + u'/' + sub);
            for (const QFileInfo &file :
                dir.entryInfoList(QDir::Files | QDir::Hidden, QDir::Name)) {
                const QString name = file.fileName();
                // Trashed notes wait for the resource to expunge them.
                if (name.section(u":2,"_s, 1).contains(u'T'))
                    continue;
                if (count == SNKNotesReader::maximumNotes) {
                    result.problems.append({ QDir::toNativeSeparators(path),
                        tr("There are more than %1 notes; the rest were left.")
                            .arg(SNKNotesReader::maximumNotes) });
                    return result;
                }
                ++count;
                QString reason;
                const std::optional<QByteArray> bytes
                    = SNImportFile::read(file.filePath(), &reason);
                if (!bytes) {
                    result.problems.append({ name, reason });
                    continue;
                }
                SNImportReadResult one = SNKNotesMessage::read(*bytes, name,
                    SNImportFile::modificationTime(file.filePath()).value_or(QDateTime()));
                for (SNImportedNote &note : one.notes) {
                    note.backgroundColor = background;
                    note.textColor = foreground;
                    if (!folder.tag.isEmpty())
                        note.tags.append(folder.tag);
                    result.notes.append(note);
                }
                result.problems.append(one.problems);
            }
        }
    }
    result.remarks.append(tr("KNotes keeps each note's colour, place and size in its Akonadi "
                             "database, which is not read: every note takes KNotes' default "
                             "colour."));
    return result;
}

SNImportReadResult readCalendar(const QString &path)
{
    QString reason;
    const std::optional<QByteArray> bytes = SNImportFile::read(path, &reason);
    if (!bytes)
        return { {}, { { QFileInfo(path).fileName(), reason } }, {} };
    const QString settingsFolder = QFileInfo(path).absolutePath() + u"/notes/"_s;
    const auto settings = [&settingsFolder](const QString &uid) -> std::optional<QByteArray> {
        // A UID is a file name there; one that would leave the folder names no settings file.
        if (uid.contains(u'/') || uid == u".."_s || uid == u"."_s)
            return std::nullopt;
        return SNImportFile::read(settingsFolder + uid, nullptr, 1024 * 1024);
    };
    return SNKNotesCalendar::read(*bytes, settings,
        configAt(configFolderFor(path) + u"/knotesrc"_s),
        SNImportFile::modificationTime(path).value_or(QDateTime()));
}

} // namespace

QString SNKNotesReader::programId() const
{
    return u"knotes"_s;
}

QString SNKNotesReader::programName() const
{
    return u"KNotes"_s;
}

QStringList SNKNotesReader::candidatePaths(const SNImportEnvironment &environment) const
{
    // The folder of all local notes resources first; then the folders of resources whose
    // settings name another place.
    const QString notes = environment.dataHome + u"/notes"_s;
    QStringList paths { notes };
    const QDir config(environment.configHome);
    for (const QString &name : config.entryList(
             { u"akonadi_akonotes_resource_*rc"_s }, QDir::Files | QDir::Hidden, QDir::Name)) {
        const std::optional<QString> path
            = configAt(config.filePath(name))
                  .expandedValue(u"General"_s, u"Path"_s, environment.home);
        if (!path || path->isEmpty())
            continue;
        const QString clean = QDir::cleanPath(*path);
        if (clean != notes && !clean.startsWith(notes + u'/') && !paths.contains(clean))
            paths.append(clean);
    }
    for (const QString &kde : { u"/.kde"_s, u"/.kde4"_s })
        paths.append(environment.home + kde + u"/share/apps/knotes/notes.ics"_s);
    return paths;
}

SNImportReadResult SNKNotesReader::read(const QString &path) const
{
    if (QFileInfo(path).isFile())
        return readCalendar(path);
    return readMaildirs(path);
}
