#pragma once

#include "app/SNHistoryCommand.h"
#include "app/SNImportCommand.h"
#include "app/SNLaunchRequest.h"
#include "app/SNSyncCommand.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// The program's command line: files and URLs to open, one option per action, help and version.
//
//   vellumo [FILE | vellumo://lal | -]... [--new-note] [--show-all-notes] [--toggle-tags]
//           [--note-from-selection] [--quit] [--help] [--version]
//   vellumo --list-deleted | --restore-deleted ID | --backup-now
//   vellumo --sync-folder PATH | --sync-status
//   vellumo --import PROGRAM [PATH] | --import-list | --export-markdown DIR
//
// "-" makes a note of what standard input holds. The history, sync and import commands stand alone:
// each answers on standard output, so none mixes with the others or with files and actions.
class SNCommandLine final
{
    Q_DISABLE_COPY_MOVE(SNCommandLine)

public:
    SNCommandLine();

    // False when the arguments (the program name first) are not understood; errorText() says why.
    bool parse(const QStringList &arguments);
    QString errorText() const { return m_errorText; }
    bool isHelpRequested() const;
    bool isVersionRequested() const { return m_parser.isSet(m_versionOption); }
    // Print to standard output and end the process with status 0.
    [[noreturn]] void showHelp() { m_parser.showHelp(0); }
    [[noreturn]] void showVersion() { m_parser.showVersion(); }

    // What the arguments ask for. Paths are made absolute against `workingDirectory`;
    // `readStandardInput` is called only when "-" was given.
    SNLaunchRequest request(
        const QString &workingDirectory, const std::function<QString()> &readStandardInput) const;
    // The history command asked for, if any; then request() is empty.
    std::optional<SNHistoryCommand> historyCommand() const { return m_historyCommand; }
    // The sync command asked for, if any, its folder made absolute against `workingDirectory`
    // (an empty folder stays empty: it stops syncing); then request() is empty too.
    std::optional<SNSyncCommand> syncCommand(const QString &workingDirectory) const;
    // The import or Markdown command asked for, if any, its path made absolute; then request()
    // is empty too.
    std::optional<SNImportCommand> importCommand(const QString &workingDirectory) const;

private:
    QCommandLineParser m_parser;
    QCommandLineOption m_helpOption;
    QCommandLineOption m_versionOption;
    QList<QCommandLineOption> m_actionOptions; // in SNLaunchRequest::actionNames() order
    QCommandLineOption m_listDeletedOption;
    QCommandLineOption m_restoreDeletedOption;
    QCommandLineOption m_backUpNowOption;
    QCommandLineOption m_syncFolderOption;
    QCommandLineOption m_syncStatusOption;
    QCommandLineOption m_importOption;
    QCommandLineOption m_importListOption;
    QCommandLineOption m_exportMarkdownOption;
    std::optional<SNHistoryCommand> m_historyCommand;
    std::optional<SNSyncCommand> m_syncCommand;
    std::optional<SNImportCommand> m_importCommand;
    QString m_errorText;
};
