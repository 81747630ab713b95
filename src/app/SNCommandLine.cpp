#include "app/SNCommandLine.h"

#include <QCoreApplication>
#include <QDir>
#include <QUrl>

#include <algorithm>

namespace {

QString actionDescription(const QString &action)
{
    if (action == SNLaunchRequest::newNoteAction())
        return QCoreApplication::translate("SNCommandLine", "Create a new note.");
    if (action == SNLaunchRequest::showAllNotesAction())
        return QCoreApplication::translate("SNCommandLine", "Bring every note to the front.");
    if (action == SNLaunchRequest::toggleTagsAction())
        return QCoreApplication::translate("SNCommandLine", "Open or close the tag browser.");
    if (action == SNLaunchRequest::noteFromSelectionAction())
        return QCoreApplication::translate(
            "SNCommandLine", "Make a new note of the selected text (else the clipboard).");
    return QCoreApplication::translate(
        "SNCommandLine", "Save every note and quit the running Vellumo.");
}

bool hasScheme(const QString &argument, QLatin1StringView scheme)
{
    return argument.size() > scheme.size() && argument.at(scheme.size()) == QLatin1Char(':')
        && argument.startsWith(scheme, Qt::CaseInsensitive);
}

} // namespace

SNCommandLine::SNCommandLine()
    : m_helpOption(m_parser.addHelpOption()),
      m_versionOption(m_parser.addVersionOption()),
      m_listDeletedOption(SNHistoryCommand::listDeletedOption(),
          QCoreApplication::translate("SNCommandLine",
              "List the notes in Recently Deleted, one a line: id, when it was deleted, title.")),
      m_restoreDeletedOption(SNHistoryCommand::restoreDeletedOption(),
          QCoreApplication::translate(
              "SNCommandLine", "Bring back the deleted note with this id, as it was."),
          QStringLiteral("ID")),
      m_backUpNowOption(SNHistoryCommand::backUpNowOption(),
          QCoreApplication::translate("SNCommandLine", "Back up every note now.")),
      m_syncFolderOption(SNSyncCommand::setFolderOption(),
          QCoreApplication::translate("SNCommandLine",
              "Share the notes with other computers through this folder, which a sync tool "
              "(Syncthing, Nextcloud) keeps in step; \"\" stops sharing."),
          QStringLiteral("PATH")),
      m_syncStatusOption(SNSyncCommand::showStatusOption(),
          QCoreApplication::translate("SNCommandLine",
              "Show the sync folder, the computers that share it and what the last merge did.")),
      m_importOption(SNImportCommand::importOption(),
          QCoreApplication::translate("SNCommandLine",
              "Import the notes of another notes program (see --import-list), from its own "
              "folder or from the PATH given after it; notes imported before are left out."),
          QStringLiteral("PROGRAM")),
      m_importListOption(SNImportCommand::listProgramsOption(),
          QCoreApplication::translate("SNCommandLine",
              "List the notes programs whose notes are found, with how many and where.")),
      m_exportMarkdownOption(SNImportCommand::exportMarkdownOption(),
          QCoreApplication::translate(
              "SNCommandLine", "Write every note as a Markdown file into this folder."),
          QStringLiteral("DIR"))
{
    m_parser.setApplicationDescription(
        QCoreApplication::translate("SNCommandLine", "Sticky notes for the Linux desktop."));
    m_parser.addPositionalArgument(QStringLiteral("FILE"),
        QCoreApplication::translate("SNCommandLine",
            "RTF or text files, or RTFD folders, to open as new notes; \"-\" makes a note of "
            "standard input."),
        QStringLiteral("[FILE...]"));
    for (const QString &action : SNLaunchRequest::actionNames()) {
        QCommandLineOption option(action, actionDescription(action));
        m_parser.addOption(option);
        m_actionOptions.append(option);
    }
    for (const QCommandLineOption &option :
        { m_listDeletedOption, m_restoreDeletedOption, m_backUpNowOption, m_syncFolderOption,
            m_syncStatusOption, m_importOption, m_importListOption, m_exportMarkdownOption })
        m_parser.addOption(option);
}

bool SNCommandLine::isHelpRequested() const
{
    return m_parser.isSet(m_helpOption) || m_parser.isSet(QStringLiteral("help-all"));
}

bool SNCommandLine::parse(const QStringList &arguments)
{
    m_historyCommand.reset();
    m_syncCommand.reset();
    m_importCommand.reset();
    if (!m_parser.parse(arguments)) {
        m_errorText = m_parser.errorText();
        return false;
    }
    QList<SNHistoryCommand> history;
    if (m_parser.isSet(m_listDeletedOption))
        history.append({ SNHistoryCommand::Kind::ListDeleted, QString() });
    // Given twice, an option with a value would quietly drop one of them.
    for (const QString &id : m_parser.values(m_restoreDeletedOption))
        history.append({ SNHistoryCommand::Kind::RestoreDeleted, id });
    if (m_parser.isSet(m_backUpNowOption))
        history.append({ SNHistoryCommand::Kind::BackUpNow, QString() });
    QList<SNSyncCommand> sync;
    for (const QString &folder : m_parser.values(m_syncFolderOption))
        sync.append({ SNSyncCommand::Kind::SetFolder, folder });
    if (m_parser.isSet(m_syncStatusOption))
        sync.append({ SNSyncCommand::Kind::ShowStatus, QString() });
    QList<SNImportCommand> imports;
    // The one path an import may take comes after the program, as a file would.
    const QStringList positional = m_parser.positionalArguments();
    for (const QString &program : m_parser.values(m_importOption))
        imports.append({ SNImportCommand::Kind::Import, program, positional.value(0) });
    if (m_parser.isSet(m_importListOption))
        imports.append({ SNImportCommand::Kind::ListPrograms, QString(), QString() });
    for (const QString &folder : m_parser.values(m_exportMarkdownOption))
        imports.append({ SNImportCommand::Kind::ExportMarkdown, QString(), folder });
    if (history.isEmpty() && sync.isEmpty() && imports.isEmpty())
        return true;
    const bool importTakesPath
        = imports.size() == 1 && imports.constFirst().kind == SNImportCommand::Kind::Import;
    const bool hasOthers = positional.size() > (importTakesPath ? 1 : 0)
        || std::any_of(m_actionOptions.cbegin(), m_actionOptions.cend(),
            [this](const QCommandLineOption &option) { return m_parser.isSet(option); });
    if (history.size() + sync.size() + imports.size() > 1 || hasOthers) {
        m_errorText = QCoreApplication::translate("SNCommandLine",
            "--list-deleted, --restore-deleted, --backup-now, --sync-folder, --sync-status, "
            "--import, --import-list and --export-markdown each go alone.");
        return false;
    }
    if (!history.isEmpty())
        m_historyCommand = history.constFirst();
    else if (!sync.isEmpty())
        m_syncCommand = sync.constFirst();
    else
        m_importCommand = imports.constFirst();
    return true;
}

std::optional<SNSyncCommand> SNCommandLine::syncCommand(const QString &workingDirectory) const
{
    std::optional<SNSyncCommand> command = m_syncCommand;
    if (command && !command->folder.isEmpty())
        command->folder = QDir::cleanPath(QDir(workingDirectory).absoluteFilePath(command->folder));
    return command;
}

std::optional<SNImportCommand> SNCommandLine::importCommand(const QString &workingDirectory) const
{
    std::optional<SNImportCommand> command = m_importCommand;
    if (command && !command->path.isEmpty())
        command->path = QDir::cleanPath(QDir(workingDirectory).absoluteFilePath(command->path));
    return command;
}

SNLaunchRequest SNCommandLine::request(
    const QString &workingDirectory, const std::function<QString()> &readStandardInput) const
{
    SNLaunchRequest request;
    if (m_historyCommand || m_syncCommand || m_importCommand)
        return request;
    bool readsStandardInput = false;
    const QDir directory(workingDirectory);
    for (const QString &argument : m_parser.positionalArguments()) {
        if (argument == QLatin1String("-"))
            readsStandardInput = true;
        else if (hasScheme(argument, QLatin1StringView("vellumo"))
            || hasScheme(argument, QLatin1StringView("file")))
            request.uris.append(argument);
        else
            request.uris.append(
                QUrl::fromLocalFile(QDir::cleanPath(directory.absoluteFilePath(argument)))
                    .toString(QUrl::FullyEncoded));
    }
    for (const QCommandLineOption &option : m_actionOptions) {
        if (m_parser.isSet(option))
            request.actions.append(option.names().constFirst());
    }
    if (readsStandardInput) {
        request.selectionText = readStandardInput ? readStandardInput() : QString();
        if (!request.actions.contains(SNLaunchRequest::noteFromSelectionAction()))
            request.actions.insert(request.actions.contains(SNLaunchRequest::quitAction())
                    ? request.actions.size() - 1
                    : request.actions.size(),
                SNLaunchRequest::noteFromSelectionAction());
    }
    return request;
}
