#include "import/SNMarkdownExporter.h"

#include "import/SNMarkdownFrontMatter.h"
#include "import/SNMarkdownWriter.h"
#include "kit/QWFileReplacer.h"
#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNote.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace {

// Names differ on a case-insensitive file system (a USB stick, a shared folder) only when they
// differ in more than case.
QString nameKey(const QString &name)
{
    return name.toCaseFolded();
}

bool writeFile(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    return QWFileReplacer::replace(file, bytes, error);
}

// The first of "<name>", "<name> 2", "<name> 3"... under which the note and its pictures all
// take free names; empty when there is none.
QString freeBaseName(const QString &name, const QStringList &pictureSuffixes,
    const std::function<bool(const QString &)> &isFree)
{
    for (int number = 1; number <= 100000; ++number) {
        const QString candidate = number == 1 ? name : u"%1 %2"_s.arg(name).arg(number);
        bool free = isFree(candidate + u".md"_s);
        for (qsizetype i = 0; i < pictureSuffixes.size() && free; ++i)
            free = isFree(
                SNMarkdownWriter::pictureFileName(candidate, int(i) + 1, pictureSuffixes[i]));
        if (free)
            return candidate;
    }
    return QString();
}

} // namespace

QString SNMarkdownExportResult::text() const
{
    const QString where = QDir::toNativeSeparators(folder);
    QStringList lines { notesWritten == 1
            ? SNMarkdownExporter::tr("1 note exported as Markdown into “%1”.").arg(where)
            : SNMarkdownExporter::tr("%1 notes exported as Markdown into “%2”.")
                  .arg(QString::number(notesWritten), where) };
    for (const QString &problem : problems)
        lines.append(u"  "_s + problem);
    return lines.join(u'\n');
}

QString SNMarkdownExporter::fileNameForTitle(const QString &title)
{
    QString name;
    for (const QChar c : title) {
        if (u"/\\:|<>"_s.contains(c))
            name += u'-';
        else if (c.isSpace())
            name += u' ';
        else if (!u"*?\""_s.contains(c) && c.category() != QChar::Other_Control
            && c.category() != QChar::Other_Format && c != QChar::ObjectReplacementCharacter
            && c != QChar::ReplacementCharacter && !c.isNonCharacter())
            name += c;
    }
    static const QRegularExpression spaces(u" {2,}"_s);
    name.replace(spaces, u" "_s);
    // Hidden on Unix; dropped or refused at the end by Windows.
    const auto trimEnds = [&name] {
        qsizetype start = 0;
        while (start < name.size() && (name[start] == u' ' || name[start] == u'.'))
            ++start;
        qsizetype end = name.size();
        while (end > start && (name[end - 1] == u' ' || name[end - 1] == u'.'))
            --end;
        name = name.sliced(start, end - start);
    };
    trimEnds();
    // Whole characters only, never half of a pair.
    qsizetype characters = 0;
    qsizetype bytes = 0;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const qsizetype width = name[i].isHighSurrogate() && i + 1 < name.size() ? 2 : 1;
        const qsizetype size = name.sliced(i, width).toUtf8().size();
        if (characters + 1 > maximumNameLength || bytes + size > maximumNameBytes) {
            // At a word's end where one is near.
            const qsizetype space = name.lastIndexOf(u' ', i);
            name.truncate(space > i * 2 / 3 ? space : i);
            break;
        }
        ++characters;
        bytes += size;
        i += width - 1;
    }
    trimEnds();
    // Windows keeps these names for devices, whatever follows a dot.
    static const QRegularExpression device(u"^(con|prn|aux|nul|com[0-9]|lpt[0-9])(\\.|$)"_s,
        QRegularExpression::CaseInsensitiveOption);
    if (const QRegularExpressionMatch match = device.match(name); match.hasMatch())
        name.insert(match.capturedLength(1), u'_');
    return name.isEmpty() ? tr("Untitled") : name;
}

SNMarkdownExportResult SNMarkdownExporter::exportNotes(
    const QList<std::shared_ptr<SNStickyNote>> &notes, const QString &folder)
{
    SNMarkdownExportResult result;
    result.folder = folder;
    const QDir dir(folder);
    if (!QDir().mkpath(folder) || !dir.exists()) {
        result.problems.append(
            tr("The folder “%1” could not be made.").arg(QDir::toNativeSeparators(folder)));
        return result;
    }
    QSet<QString> taken;
    for (const QString &name :
        dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        taken.insert(nameKey(name));
    const auto isFree = [&](const QString &name) {
        const QFileInfo file(dir.filePath(name));
        return !taken.contains(nameKey(name)) && !file.exists() && !file.isSymLink();
    };

    QList<std::pair<std::shared_ptr<SNStickyNote>, QWAttributedString>> texts;
    for (const std::shared_ptr<SNStickyNote> &note : notes) {
        if (const std::optional<QWAttributedString> text = note->attributedString();
            text && note->hasContent())
            texts.append({ note, *text });
    }

    for (qsizetype index = 0; index < texts.size(); ++index) {
        const auto &[note, text] = texts[index];
        // A picture in the first line is no part of a name.
        const QString title = SNNoteTitle::titleTextOfString(text.string())
                                  .remove(QChar::ObjectReplacementCharacter)
                                  .trimmed();
        const QString name = fileNameForTitle(title);
        const QString baseName
            = freeBaseName(name, SNMarkdownWriter::pictureSuffixes(text), isFree);
        if (baseName.isEmpty()) {
            result.problems.append(tr("No free file name was left for the note “%1”.").arg(name));
            continue;
        }

        const SNMarkdownWriter::Document document = SNMarkdownWriter::write(text, baseName);
        if (document.unknownPictures > 0)
            result.problems.append(
                tr("A picture in the note “%1” is in a format that Markdown readers do not show, "
                   "and was left out.")
                    .arg(name));
        QList<std::pair<QString, QByteArray>> files;
        for (const SNMarkdownPicture &picture : document.pictures)
            files.append({ picture.fileName, picture.bytes });
        // The note last, so that it never links to a picture that is not there.
        files.append({ baseName + u".md"_s,
            (SNMarkdownFrontMatter::text(*note, title) + document.markdown).toUtf8() });

        QStringList written;
        for (const auto &[fileName, bytes] : files) {
            QString error;
            if (!writeFile(dir.filePath(fileName), bytes, &error)) {
                for (const QString &path : std::as_const(written))
                    QFile::remove(path);
                const int left = int(texts.size() - index);
                result.problems.append(tr("“%1” could not be written into “%2”: %3.")
                                           .arg(fileName, QDir::toNativeSeparators(folder), error)
                    + u' '
                    + (left == 1 ? tr("The export stopped there; 1 note was not exported.")
                                 : tr("The export stopped there; %1 notes were not exported.")
                                       .arg(left)));
                return result;
            }
            written.append(dir.filePath(fileName));
            taken.insert(nameKey(fileName));
        }
        result.filesWritten += written;
        ++result.notesWritten;
    }
    return result;
}
