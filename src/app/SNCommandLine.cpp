#include "app/SNCommandLine.h"

#include <QCoreApplication>
#include <QDir>
#include <QUrl>

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
    : m_helpOption(m_parser.addHelpOption()), m_versionOption(m_parser.addVersionOption())
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
}

bool SNCommandLine::isHelpRequested() const
{
    return m_parser.isSet(m_helpOption) || m_parser.isSet(QStringLiteral("help-all"));
}

bool SNCommandLine::parse(const QStringList &arguments)
{
    return m_parser.parse(arguments);
}

SNLaunchRequest SNCommandLine::request(
    const QString &workingDirectory, const std::function<QString()> &readStandardInput) const
{
    SNLaunchRequest request;
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
