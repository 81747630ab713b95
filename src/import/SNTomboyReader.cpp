#include "import/SNTomboyReader.h"

#include "import/SNImportFile.h"
#include "import/SNImportTitledText.h"
#include "import/SNTomboyNoteParser.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SNTomboyReader", text);
}

const QString systemPrefix = u"system:"_s;
const QString notebookPrefix = u"system:notebook:"_s;
const QString templateTag = u"system:template"_s;

// tomboy-ng keeps its folder where the user chose it, in the [BasicSettings] group of its INI
// file; nothing when the file names none.
QString tomboyNgNotesPath(const QString &configFile)
{
    const std::optional<QByteArray> bytes = SNImportFile::read(configFile, nullptr, 1024 * 1024);
    if (!bytes)
        return {};
    bool inGroup = false;
    for (const QString &rawLine : SNImportFile::decodeText(*bytes).split(u'\n')) {
        const QString line = rawLine.trimmed();
        if (line.startsWith(u'[')) {
            inGroup = line == u"[BasicSettings]"_s;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (inGroup && equals > 0 && line.left(equals).trimmed() == u"NotesPath"_s) {
            const QString path = line.mid(equals + 1).trimmed();
            return QDir::isAbsolutePath(path) ? QDir::cleanPath(path) : QString();
        }
    }
    return {};
}

} // namespace

SNTomboyReader::SNTomboyReader(Program program, int maximumNotes)
    : m_program(program), m_maximumNotes(maximumNotes)
{ }

QString SNTomboyReader::programId() const
{
    // "tomboy", "gnote", "tomboy-ng"
    return programName().toLower();
}

QString SNTomboyReader::programName() const
{
    switch (m_program) {
    case Program::Tomboy:
        return u"Tomboy"_s;
    case Program::Gnote:
        return u"Gnote"_s;
    case Program::TomboyNg:
        break;
    }
    return u"tomboy-ng"_s;
}

QStringList SNTomboyReader::candidatePaths(const SNImportEnvironment &environment) const
{
    switch (m_program) {
    case Program::Tomboy:
        // Before 1.0 Tomboy kept its notes in the home folder.
        return { environment.dataHome + u"/tomboy"_s, environment.home + u"/.tomboy"_s };
    case Program::Gnote:
        return { environment.dataHome + u"/gnote"_s, environment.home + u"/.gnote"_s };
    case Program::TomboyNg:
        break;
    }
    QStringList paths;
    const QString configured
        = tomboyNgNotesPath(environment.configHome + u"/tomboy-ng/tomboy-ng.cfg"_s);
    if (!configured.isEmpty())
        paths.append(configured);
    const QString standard = environment.dataHome + u"/tomboy-ng"_s;
    if (!paths.contains(standard))
        paths.append(standard);
    return paths;
}

SNImportReadResult SNTomboyReader::read(const QString &path) const
{
    SNImportReadResult result;
    QStringList files;
    if (QFileInfo(path).isFile()) {
        files.append(path);
    } else {
        // Only the folder's own notes: Backup/ holds deleted ones, and the programs' temporary
        // and backup copies end in .tmp and ~.
        QDirIterator it(path, { u"*.note"_s }, QDir::Files | QDir::Hidden);
        while (it.hasNext()) {
            const QString file = it.next();
            if (files.size() == m_maximumNotes) {
                result.problems.append({ QDir::toNativeSeparators(path),
                    tr("The folder holds more than %1 notes; the rest were left.")
                        .arg(m_maximumNotes) });
                break;
            }
            files.append(file);
        }
        files.sort();
    }
    for (const QString &file : files) {
        QString reason;
        const std::optional<QByteArray> bytes = SNImportFile::read(file, &reason);
        if (!bytes) {
            result.problems.append({ QFileInfo(file).fileName(), reason });
            continue;
        }
        const SNImportReadResult one = readNote(*bytes, QFileInfo(file).fileName(),
            SNImportFile::modificationTime(file).value_or(QDateTime()));
        result.notes.append(one.notes);
        result.problems.append(one.problems);
    }
    return result;
}

SNImportReadResult SNTomboyReader::readNote(
    const QByteArray &bytes, const QString &fileName, const QDateTime &fileTime)
{
    SNImportReadResult result;
    QString error;
    std::optional<SNTomboyNoteParser::Note> parsed = SNTomboyNoteParser::parse(bytes, &error);
    if (!parsed) {
        result.problems.append({ fileName, error });
        return result;
    }
    SNImportedNote note;
    for (const QString &tag : std::as_const(parsed->tags)) {
        // Templates are the programs' blueprints for new notes, not notes of the user.
        if (tag == templateTag || tag.startsWith(templateTag + u':'))
            return result;
        if (tag.startsWith(notebookPrefix)) {
            const QString notebook = tag.mid(notebookPrefix.size());
            if (!notebook.isEmpty() && !note.tags.contains(notebook))
                note.tags.append(notebook);
        } else if (!tag.startsWith(systemPrefix) && !note.tags.contains(tag)) {
            note.tags.append(tag);
        }
    }

    note.sourceId = fileName.endsWith(u".note"_s) ? fileName.chopped(5) : fileName;
    // The first line of the text is the title; a file whose text lost it gets it back.
    // tomboy-ng ends every text with a newline and the indentation of its closing tag.
    note.text = SNImportTitledText::make(parsed->title, parsed->text);

    const QDateTime modified = parsed->modified.isValid() ? parsed->modified
        : parsed->metadataModified.isValid()              ? parsed->metadataModified
                                                          : fileTime;
    note.dateModified = modified;
    note.dateCreated = parsed->created.isValid() ? parsed->created : modified;
    note.position = parsed->position;
    note.size = parsed->size;
    // The programs open only the notes marked so on start; the others wait in their lists.
    note.isHidden = !parsed->openOnStartup;
    result.notes.append(note);
    return result;
}
