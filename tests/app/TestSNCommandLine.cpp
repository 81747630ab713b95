#include "app/SNCommandLine.h"
#include "app/SNLaunchRequest.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// The items of a list written as one string, separated by '|'.
QStringList items(const char *joined)
{
    return QString::fromUtf8(joined).split(QLatin1Char('|'), Qt::SkipEmptyParts);
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
        QTest::addColumn<std::optional<QString>>("input"); // what standard input gave, when read
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
            return QStringLiteral("piped\n");
        });
        QCOMPARE(reads, input ? 1 : 0);
        QCOMPARE(request.uris, uris);
        QCOMPARE(request.actions, actions);
        QCOMPARE(request.selectionText, input);
        QCOMPARE(request.isEmpty(), arguments.isEmpty());
    }

    void helpVersionAndMistakes()
    {
        SNCommandLine help;
        QVERIFY(help.parse(items("vellumo|--help")));
        QVERIFY(help.isHelpRequested() && !help.isVersionRequested());
        SNCommandLine version;
        QVERIFY(version.parse(items("vellumo|--version")));
        QVERIFY(version.isVersionRequested());
        SNCommandLine mistake;
        QVERIFY(!mistake.parse(items("vellumo|--new-notes")));
        QVERIFY(mistake.errorText().contains(QStringLiteral("new-notes")));
        // Empty input is still input: the note is refused rather than made of the selection.
        SNCommandLine emptyInput;
        QVERIFY(emptyInput.parse(items("vellumo|-")));
        QCOMPARE(emptyInput.request(QStringLiteral("/"), [] { return QString(); }).selectionText,
            std::optional(QString()));
    }

    void historyCommandsStandAlone_data()
    {
        using Kind = SNHistoryCommand::Kind;
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<std::optional<SNHistoryCommand>>("command"); // nothing: refused
        const std::optional<SNHistoryCommand> refused;
        QTest::newRow("list") << items("--list-deleted")
                              << std::optional(SNHistoryCommand { Kind::ListDeleted, {} });
        QTest::newRow("restore, id apart")
            << items("--restore-deleted|6f9619ff-8b86-d011-b42d-00cf4fc964ff")
            << std::optional(SNHistoryCommand {
                   Kind::RestoreDeleted, QStringLiteral("6f9619ff-8b86-d011-b42d-00cf4fc964ff") });
        QTest::newRow("restore, id joined")
            << items("--restore-deleted={6f9619ff-8b86-d011-b42d-00cf4fc964ff}")
            << std::optional(SNHistoryCommand { Kind::RestoreDeleted,
                   QStringLiteral("{6f9619ff-8b86-d011-b42d-00cf4fc964ff}") });
        QTest::newRow("backup") << items("--backup-now")
                                << std::optional(SNHistoryCommand { Kind::BackUpNow, {} });
        QTest::newRow("restore without an id") << items("--restore-deleted") << refused;
        QTest::newRow("two commands") << items("--list-deleted|--backup-now") << refused;
        QTest::newRow("two ids") << items("--restore-deleted|a|--restore-deleted|b") << refused;
        QTest::newRow("with an action") << items("--backup-now|--quit") << refused;
        QTest::newRow("with a file") << items("--list-deleted|notes.rtf") << refused;
    }

    void historyCommandsStandAlone()
    {
        QFETCH(QStringList, arguments);
        QFETCH(std::optional<SNHistoryCommand>, command);
        SNCommandLine commandLine;
        QCOMPARE(commandLine.parse(QStringList { QStringLiteral("vellumo") } + arguments),
            command.has_value());
        QCOMPARE(commandLine.historyCommand(), command);
        if (!command) {
            QVERIFY(!commandLine.errorText().isEmpty());
            return;
        }
        // Nothing else runs: no notes are brought forward.
        QVERIFY(commandLine.request(QStringLiteral("/"), {}).isEmpty());
    }

    void syncCommandsStandAlone_data()
    {
        using Kind = SNSyncCommand::Kind;
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<std::optional<SNSyncCommand>>("command"); // nothing: refused
        const std::optional<SNSyncCommand> refused;
        QTest::newRow("folder, relative to the working folder")
            << items("--sync-folder|Sync/../Notes")
            << std::optional(SNSyncCommand { Kind::SetFolder, QStringLiteral("/home/anna/Notes") });
        QTest::newRow("folder joined, absolute")
            << items("--sync-folder=/media/usb/Shared notes/")
            << std::optional(
                   SNSyncCommand { Kind::SetFolder, QStringLiteral("/media/usb/Shared notes") });
        QTest::newRow("empty folder stops syncing")
            << QStringList { QStringLiteral("--sync-folder"), QString() }
            << std::optional(SNSyncCommand { Kind::SetFolder, QString() });
        QTest::newRow("status") << items("--sync-status")
                                << std::optional(SNSyncCommand { Kind::ShowStatus, {} });
        QTest::newRow("folder without a path") << items("--sync-folder") << refused;
        QTest::newRow("two folders") << items("--sync-folder|a|--sync-folder|b") << refused;
        QTest::newRow("with a history command") << items("--sync-status|--list-deleted") << refused;
        QTest::newRow("with an action") << items("--sync-folder|a|--new-note") << refused;
    }

    void syncCommandsStandAlone()
    {
        QFETCH(QStringList, arguments);
        QFETCH(std::optional<SNSyncCommand>, command);
        SNCommandLine commandLine;
        QCOMPARE(commandLine.parse(QStringList { QStringLiteral("vellumo") } + arguments),
            command.has_value());
        QCOMPARE(commandLine.syncCommand(QStringLiteral("/home/anna")), command);
        if (!command) {
            QVERIFY(!commandLine.errorText().isEmpty());
            return;
        }
        QVERIFY(!commandLine.historyCommand());
        QVERIFY(commandLine.request(QStringLiteral("/"), {}).isEmpty());
    }

    void importCommandsStandAlone_data()
    {
        using Kind = SNImportCommand::Kind;
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<std::optional<SNImportCommand>>("command"); // nothing: refused
        const std::optional<SNImportCommand> refused;
        QTest::newRow("program from its own places") << items(
            "--import|gnote") << std::optional(SNImportCommand { Kind::Import, u"gnote"_s, {} });
        QTest::newRow("program from a path after it")
            << items("--import|xpad|old/../backup/xpad")
            << std::optional(
                   SNImportCommand { Kind::Import, u"xpad"_s, u"/home/anna/backup/xpad"_s });
        QTest::newRow("list") << items("--import-list")
                              << std::optional(SNImportCommand { Kind::ListPrograms, {}, {} });
        QTest::newRow("markdown") << items("--export-markdown|Notes")
                                  << std::optional(SNImportCommand {
                                         Kind::ExportMarkdown, {}, u"/home/anna/Notes"_s });
        QTest::newRow("import without a program") << items("--import") << refused;
        QTest::newRow("two paths") << items("--import|xpad|a|b") << refused;
        QTest::newRow("list with a path") << items("--import-list|a") << refused;
        QTest::newRow("with a sync command") << items("--import-list|--sync-status") << refused;
        QTest::newRow("with an action") << items("--export-markdown|a|--new-note") << refused;
    }

    void importCommandsStandAlone()
    {
        QFETCH(QStringList, arguments);
        QFETCH(std::optional<SNImportCommand>, command);
        SNCommandLine commandLine;
        QCOMPARE(commandLine.parse(QStringList { QStringLiteral("vellumo") } + arguments),
            command.has_value());
        QCOMPARE(commandLine.importCommand(QStringLiteral("/home/anna")), command);
        if (!command)
            return;
        QVERIFY(!commandLine.historyCommand() && !commandLine.syncCommand(u"/"_s));
        // The path belongs to the import: no note is made of it.
        QVERIFY(commandLine.request(QStringLiteral("/"), {}).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSNCommandLine)
#include "TestSNCommandLine.moc"
