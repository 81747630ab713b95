#pragma once

#include "app/SNLaunchRequest.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <functional>

// The program's command line: files and URLs to open, one option per action, help and version.
//
//   vellumo [FILE | vellumo://lal | -]... [--new-note] [--show-all-notes] [--toggle-tags]
//           [--note-from-selection] [--quit] [--help] [--version]
//
// "-" makes a note of what standard input holds.
class SNCommandLine final
{
    Q_DISABLE_COPY_MOVE(SNCommandLine)

public:
    SNCommandLine();

    // False when the arguments (the program name first) are not understood; errorText() says why.
    bool parse(const QStringList &arguments);
    QString errorText() const { return m_parser.errorText(); }
    bool isHelpRequested() const;
    bool isVersionRequested() const { return m_parser.isSet(m_versionOption); }
    // Print to standard output and end the process with status 0.
    [[noreturn]] void showHelp() { m_parser.showHelp(0); }
    [[noreturn]] void showVersion() { m_parser.showVersion(); }

    // What the arguments ask for. Paths are made absolute against `workingDirectory`;
    // `readStandardInput` is called only when "-" was given.
    SNLaunchRequest request(
        const QString &workingDirectory, const std::function<QString()> &readStandardInput) const;

private:
    QCommandLineParser m_parser;
    QCommandLineOption m_helpOption;
    QCommandLineOption m_versionOption;
    QList<QCommandLineOption> m_actionOptions; // in SNLaunchRequest::actionNames() order
};
