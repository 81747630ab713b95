#include "import/SNMarkdownExporter.h"
#include "kit/QWRichTextDump.h"
#include "kit/rtf/QWRtfReader.h"
#include "notes/SNStickyNote.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestImages.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTagManager.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString casesFolder = QStringLiteral(VELLUMO_TEST_DATA_DIR "/markdown");
const bool updating = qEnvironmentVariableIntValue("VELLUMO_UPDATE_GOLDEN") == 1;

// Each .md file of the folder as readers take it: front matter through PyYAML (so that a value
// YAML would misread shows as what it became), the body through pandoc, which also fails on a
// front matter it cannot parse.
const char *const renderScript = R"(
import json, pathlib, re, subprocess, sys, yaml
for path in sorted(pathlib.Path(sys.argv[1]).glob('*.md')):
    text = path.read_text(encoding='utf-8')
    match = re.fullmatch(r'---\n(.*?\n)---\n\n(.*)', text, re.DOTALL)
    print('==', path.name)
    if not match:
        print('(no front matter)')
        continue
    print(json.dumps(yaml.safe_load(match.group(1)), ensure_ascii=False, default=repr, indent=1))
    html = subprocess.run(['pandoc', '-f', 'gfm+yaml_metadata_block', '-t', 'html', '--wrap=none'],
                          input=text, capture_output=True, text=True, check=True).stdout
    print(html.replace('\xa0', '&nbsp;'))
)";

} // namespace

// The Markdown export against folders of cases: data/markdown/<case>/notes holds the notes (an
// RTF or UTF-8 text file each, and an .ini with its theme and dates), existing/ what the folder
// held before, expected/ the whole folder after the export, report.txt what the export said, and
// rendered.txt what real readers make of each file: its front matter as PyYAML reads it, and its
// body as pandoc's GitHub Markdown reader turns it into HTML. VELLUMO_UPDATE_GOLDEN=1 writes the
// expected files anew; read the difference in review.
class TestSNMarkdownExporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_environment = std::make_unique<QWTestEnvironment>(); }
    void cleanup() { m_environment.reset(); }

    void exportsEveryCase_data() { QWRichTextDump::addCaseRows(casesFolder); }

    void exportsEveryCase()
    {
        QFETCH(QString, folder);
        const QList<std::shared_ptr<SNStickyNote>> notes = readNotes(folder + u"/notes"_s);
        QVERIFY(!notes.isEmpty());
        QTemporaryDir target;
        const QString out = target.filePath(u"Exported Notes"_s);
        QVERIFY(QDir().mkpath(out));
        for (const QString &name : filesIn(folder + u"/existing"_s))
            QVERIFY(QFile::copy(folder + u"/existing/"_s + name, out + u'/' + name));

        const SNMarkdownExportResult result = SNMarkdownExporter::exportNotes(notes, out);
        QStringList written;
        for (const QString &path : result.filesWritten)
            written.append(QFileInfo(path).fileName());
        QWRichTextDump::compareWithFile(folder + u"/report.txt"_s,
            (result.text().replace(out, u"<folder>"_s) + u"\nWritten:\n"_s + written.join(u'\n')
                + u'\n')
                .toUtf8());

        // The whole folder, byte for byte: nothing more, nothing less, the existing files
        // untouched.
        const QString expected = folder + u"/expected"_s;
        if (updating) {
            QDir(expected).removeRecursively();
            QVERIFY(QDir().mkpath(expected));
            for (const QString &name : filesIn(out))
                QVERIFY(QFile::copy(out + u'/' + name, expected + u'/' + name));
        }
        QCOMPARE(filesIn(out), filesIn(expected));
        for (const QString &name : filesIn(out)) {
            if (name.endsWith(u".md"_s))
                QWRichTextDump::compareWithFile(
                    expected + u'/' + name, fileBytes(out + u'/' + name));
            else
                QVERIFY2(fileBytes(out + u'/' + name) == fileBytes(expected + u'/' + name),
                    qPrintable(name));
        }

        QProcess render;
        render.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
            { u"-c"_s, QString::fromUtf8(renderScript), out });
        QVERIFY2(render.waitForFinished(60000), "python3 did not finish");
        QVERIFY2(render.exitCode() == 0, render.readAllStandardError().constData());
        QWRichTextDump::compareWithFile(
            folder + u"/rendered.txt"_s, render.readAllStandardOutput());
    }

    void reportsAFolderItCannotWriteInto()
    {
        QTemporaryDir target;
        const QString out = target.filePath(u"Locked"_s);
        QVERIFY(QDir().mkpath(out));
        // Permissions do not hold back root; the immutable flag does.
        const bool root = geteuid() == 0;
        const auto lock = [&](bool locked) {
            if (!root)
                return QFile::setPermissions(out,
                    locked ? QFile::ReadOwner | QFile::ExeOwner
                           : QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            return QProcess::execute(u"chattr"_s, { locked ? u"+i"_s : u"-i"_s, out }) == 0;
        };
        if (!lock(true))
            QSKIP("This file system cannot make a folder unwritable");
        const auto unlock = qScopeGuard([&] { lock(false); });

        QWMutableAttributedString picture;
        picture.appendString(u"Trip\n\uFFFC"_s);
        QWTextAttributes image;
        image.setAttachment(imageFileBytes(Qt::red, QSize(4, 4), "PNG"));
        picture.setAttributesRange(image, 5, 1);
        const SNMarkdownExportResult result
            = SNMarkdownExporter::exportNotes({ noteWithText(picture.attributedString()),
                                                  noteWithText(QWAttributedString(u"Milk"_s)) },
                out);
        QCOMPARE(result.notesWritten, 0);
        QCOMPARE(result.filesWritten, QStringList());
        QCOMPARE(result.problems.size(), 1);
        QVERIFY2(result.problems[0].startsWith(u"“Trip 1.png” could not be written into"_s),
            qPrintable(result.problems[0]));
        QVERIFY2(result.problems[0].endsWith(u"2 notes were not exported."_s),
            qPrintable(result.problems[0]));
        QCOMPARE(filesIn(out), QStringList());

        // A folder that cannot be made at all.
        const SNMarkdownExportResult nowhere = SNMarkdownExporter::exportNotes(
            { noteWithText(QWAttributedString(u"Milk"_s)) }, out + u"/inside"_s);
        QCOMPARE(nowhere.problems,
            QStringList { u"The folder “%1/inside” could not be made."_s.arg(out) });
    }

    void takesBackANoteItCouldNotWriteWhole()
    {
        // A file size limit makes writes fail past it, as a full disk would, for root too.
        QTemporaryDir target;
        const QString out = target.path();
        QWMutableAttributedString big;
        big.appendString(u"Big\n\uFFFC\n"_s + QString(3000, u'x'));
        QWTextAttributes image;
        image.setAttachment(imageFileBytes(Qt::blue, QSize(2, 2), "PNG"));
        big.setAttributesRange(image, 4, 1);
        const QList<std::shared_ptr<SNStickyNote>> notes { noteWithText(
                                                               QWAttributedString(u"Small"_s)),
            noteWithText(big.attributedString()), noteWithText(QWAttributedString(u"Later"_s)) };

        rlimit old {};
        QVERIFY(getrlimit(RLIMIT_FSIZE, &old) == 0);
        rlimit limited = old;
        limited.rlim_cur = 2048;
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        QVERIFY(setrlimit(RLIMIT_FSIZE, &limited) == 0);
        const SNMarkdownExportResult result = SNMarkdownExporter::exportNotes(notes, out);
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);

        QCOMPARE(result.notesWritten, 1);
        QCOMPARE(result.filesWritten, QStringList { out + u"/Small.md"_s });
        QCOMPARE(result.problems.size(), 1);
        QVERIFY2(result.problems[0].contains(u"“Big.md” could not be written"_s),
            qPrintable(result.problems[0]));
        QVERIFY2(result.problems[0].endsWith(u"2 notes were not exported."_s),
            qPrintable(result.problems[0]));
        // Its picture, written before the note failed, is gone again; no temporary file is left.
        QCOMPARE(filesIn(out), QStringList { u"Small.md"_s });
        QVERIFY(fileBytes(out + u"/Small.md"_s).endsWith("\n\nSmall\n"));
    }

private:
    std::shared_ptr<SNStickyNote> noteWithText(const QWAttributedString &text)
    {
        // As the store keeps a note: its hashtags marked and known as its tags.
        auto note = SNStickyNote::note();
        const QWAttributedString stored = SNHashtagScanner::taggedString(text);
        note->setAttributedString(stored);
        note->setTags(SNHashtagScanner::tokenizeTags(stored.string(), m_tags));
        const QDateTime fixed = QDateTime::fromString(u"2024-01-02T03:04:05Z"_s, Qt::ISODate);
        note->setDateCreated(fixed);
        note->setDateModified(fixed);
        return note;
    }

    // The notes of a case, as the store keeps them: dates and theme from each note's .ini.
    QList<std::shared_ptr<SNStickyNote>> readNotes(const QString &folder)
    {
        QList<std::shared_ptr<SNStickyNote>> notes;
        const QDir dir(folder);
        for (const QString &name :
            dir.entryList({ u"*.rtf"_s, u"*.txt"_s }, QDir::Files, QDir::Name)) {
            const QByteArray bytes = fileBytes(dir.filePath(name));
            auto note = noteWithText(name.endsWith(u".rtf"_s)
                    ? QWRtfReader().read(bytes).text
                    : QWAttributedString(QString::fromUtf8(bytes)));
            const QSettings ini(
                dir.filePath(QFileInfo(name).completeBaseName() + u".ini"_s), QSettings::IniFormat);
            note->setThemeName(ini.value(u"theme"_s, note->themeName()).toString());
            note->setDateCreated(ini.value(u"created"_s, *note->dateCreated()).toDateTime());
            note->setDateModified(ini.value(u"updated"_s, *note->dateModified()).toDateTime());
            notes.append(note);
        }
        return notes;
    }

    static QStringList filesIn(const QString &folder)
    {
        return QDir(folder).entryList(
            QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    std::unique_ptr<QWTestEnvironment> m_environment;
    SNTagManager m_tags;
};

QTEST_GUILESS_MAIN(TestSNMarkdownExporter)
#include "TestSNMarkdownExporter.moc"
