#include "app/SNCommandLine.h"
#include "app/SNLaunchRequest.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// The items of a list written as one string, separated by '|'.
QStringList items(const char *joined)
{
    return QString::fromUtf8(joined).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

// The one command a command line gives besides notes.
struct Command
{
    std::optional<SNHistoryCommand> history = {};
    std::optional<SNSyncCommand> sync = {};
    std::optional<SNImportCommand> import = {};
};

std::optional<Command> history(SNHistoryCommand::Kind kind, const QString &id = {})
{
    return Command { .history = SNHistoryCommand { kind, id } };
}

std::optional<Command> sync(SNSyncCommand::Kind kind, const QString &folder = {})
{
    return Command { .sync = SNSyncCommand { kind, folder } };
}

std::optional<Command> import(
    SNImportCommand::Kind kind, const QString &program = {}, const QString &path = {})
{
    return Command { .import = SNImportCommand { kind, program, path } };
}

} // namespace

class TestSNCommandLine final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void argumentsBecomeARequest_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("uris");
        QTest::addColumn<QStringList>("actions");
        QTest::addColumn<std::optional<QString>>("input"); // what standard input gives, when read
        const std::optional<QString> unread;
        QTest::newRow("files, relative to the folder")
            << items("notes/a.rtf|../b c.rtf|/tmp/100%.rtf|vellumo-notes.rtf")
            << items("file:///home/anna/docs/notes/a.rtf|file:///home/anna/b%20c.rtf|"
                     "file:///tmp/100%25.rtf|file:///home/anna/docs/vellumo-notes.rtf")
            << QStringList() << unread;
        QTest::newRow("urls as they are")
            << items("vellumo://lal|VELLUMO://lal|file:///tmp/x.rtf")
            << items("vellumo://lal|VELLUMO://lal|file:///tmp/x.rtf") << QStringList() << unread;
        // The selection is read where the action runs, unless "-" gives standard input.
        QTest::newRow("actions in their order, quit last")
            << items("--quit|--toggle-tags|--new-note|--show-all-notes|--note-from-selection")
            << QStringList() << SNLaunchRequest::actionNames() << unread;
        QTest::newRow("dash reads standard input")
            << items("-|--quit") << QStringList() << items("note-from-selection|quit")
            << std::optional(QStringLiteral("piped\n"));
        // Empty input is still input: the note is refused rather than made of the selection.
        QTest::newRow("empty standard input")
            << items("-") << QStringList() << items("note-from-selection")
            << std::optional(QString());
        QTest::newRow("nothing") << QStringList() << QStringList() << QStringList() << unread;
    }

    void argumentsBecomeARequest()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, uris);
        QFETCH(QStringList, actions);
        QFETCH(std::optional<QString>, input);
        SNCommandLine commandLine;
        QVERIFY(commandLine.parse(QStringList { QStringLiteral("vellumo") } + arguments));
        int reads = 0;
        const SNLaunchRequest request = commandLine.request(QStringLiteral("/home/anna/docs"), [&] {
            ++reads;
            return input.value_or(QString());
        });
        QCOMPARE(reads, input ? 1 : 0);
        QCOMPARE(request.uris, uris);
        QCOMPARE(request.actions, actions);
        QCOMPARE(request.selectionText, input);
        QCOMPARE(request.isEmpty(), arguments.isEmpty());
    }

    // The history, sync and import commands each go alone, paths taken from /home/anna.
    void commandsStandAlone_data()
    {
        using History = SNHistoryCommand::Kind;
        using Sync = SNSyncCommand::Kind;
        using Import = SNImportCommand::Kind;
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<std::optional<Command>>("command"); // nothing: refused
        const std::optional<Command> refused;
        const QString id = u"6f9619ff-8b86-d011-b42d-00cf4fc964ff"_s;
        QTest::newRow("list deleted") << items("--list-deleted") << history(History::ListDeleted);
        QTest::newRow("restore, id apart")
            << QStringList { u"--restore-deleted"_s, id } << history(History::RestoreDeleted, id);
        QTest::newRow("restore, id joined") << QStringList { u"--restore-deleted={%1}"_s.arg(id) }
                                            << history(History::RestoreDeleted, u"{%1}"_s.arg(id));
        QTest::newRow("backup") << items("--backup-now") << history(History::BackUpNow);
        QTest::newRow("sync folder, relative")
            << items("--sync-folder|Sync/../Notes") << sync(Sync::SetFolder, u"/home/anna/Notes"_s);
        QTest::newRow("sync folder joined, absolute")
            << items("--sync-folder=/media/usb/Shared notes/")
            << sync(Sync::SetFolder, u"/media/usb/Shared notes"_s);
        QTest::newRow("empty sync folder stops syncing")
            << QStringList { u"--sync-folder"_s, QString() } << sync(Sync::SetFolder);
        QTest::newRow("sync status") << items("--sync-status") << sync(Sync::ShowStatus);
        QTest::newRow("import from the program's own places")
            << items("--import|gnote") << import(Import::Import, u"gnote"_s);
        QTest::newRow("import from a path after it")
            << items("--import|xpad|old/../backup/xpad")
            << import(Import::Import, u"xpad"_s, u"/home/anna/backup/xpad"_s);
        QTest::newRow("import list") << items("--import-list") << import(Import::ListPrograms);
        QTest::newRow("markdown") << items("--export-markdown|Notes")
                                  << import(Import::ExportMarkdown, {}, u"/home/anna/Notes"_s);

        QTest::newRow("unknown option") << items("--new-notes") << refused;
        QTest::newRow("restore without an id") << items("--restore-deleted") << refused;
        QTest::newRow("sync folder without a path") << items("--sync-folder") << refused;
        QTest::newRow("import without a program") << items("--import") << refused;
        QTest::newRow("two history commands") << items("--list-deleted|--backup-now") << refused;
        QTest::newRow("two ids") << items("--restore-deleted|a|--restore-deleted|b") << refused;
        QTest::newRow("two folders") << items("--sync-folder|a|--sync-folder|b") << refused;
        QTest::newRow("two import paths") << items("--import|xpad|a|b") << refused;
        QTest::newRow("sync and history") << items("--sync-status|--list-deleted") << refused;
        QTest::newRow("history and a file") << items("--list-deleted|notes.rtf") << refused;
        QTest::newRow("import list and a path") << items("--import-list|a") << refused;
        QTest::newRow("history and an action") << items("--backup-now|--quit") << refused;
    }

    void commandsStandAlone()
    {
        QFETCH(QStringList, arguments);
        QFETCH(std::optional<Command>, command);
        SNCommandLine commandLine;
        QCOMPARE(commandLine.parse(QStringList { QStringLiteral("vellumo") } + arguments),
            command.has_value());
        if (!command) {
            QVERIFY(!commandLine.errorText().isEmpty());
            return;
        }
        QCOMPARE(commandLine.historyCommand(), command->history);
        QCOMPARE(commandLine.syncCommand(QStringLiteral("/home/anna")), command->sync);
        QCOMPARE(commandLine.importCommand(QStringLiteral("/home/anna")), command->import);
        // Nothing else runs: no notes are brought forward, nor made of a path.
        QVERIFY(commandLine.request(QStringLiteral("/"), {}).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSNCommandLine)
#include "TestSNCommandLine.moc"
