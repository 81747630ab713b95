#include "app/AppDelegate.h"
#include "app/QWTerminationSignalWatcher.h"
#include "app/SNApplicationInstance.h"
#include "app/SNCommandLine.h"
#include "app/SNHistoryCommandRunner.h"
#include "app/SNImportCommandRunner.h"
#include "app/SNLaunchRequest.h"
#include "app/SNPlatformSelection.h"
#include "app/SNSyncCommandRunner.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNStoreLock.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "tags/SNTagManager.h"
#include "themes/SNThemeManager.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QMessageBox>
#include <QSessionManager>
#include <QUrl>

#include <cstdio>
#include <memory>

namespace {

// Long enough for a running Vellumo to save a large archive.
constexpr int quitTimeout = 30000;

QString readStandardInput()
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(input.readAll());
}

void printError(const QString &text)
{
    std::fprintf(stderr, "vellumo: %s\n", qUtf8Printable(text));
}

void setApplicationNames()
{
    QCoreApplication::setApplicationName(SNApplicationInfo::applicationName());
    QCoreApplication::setApplicationVersion(SNApplicationInfo::applicationVersion());
}

// Help and version are printed without a display, so that they work in any terminal.
bool asksOnlyForText(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "-h" || argument == "--help" || argument == "-?" || argument == "--help-all"
            || argument == "-v" || argument == "--version")
            return true;
    }
    return false;
}

int printText(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    setApplicationNames();
    SNCommandLine commandLine;
    if (!commandLine.parse(QCoreApplication::arguments())) {
        printError(commandLine.errorText());
        return 2;
    }
    if (commandLine.isHelpRequested())
        commandLine.showHelp();
    commandLine.showVersion();
}

// Whether one of the options is given, alone or with its value joined by "=".
bool asksForOneOf(int argc, char *argv[], const QStringList &options)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        for (const QString &option : options) {
            const QByteArray name = "--" + option.toLatin1();
            if (argument == name || argument.startsWith(name + '='))
                return true;
        }
    }
    return false;
}

const QStringList importOptions { SNImportCommand::importOption(),
    SNImportCommand::listProgramsOption(), SNImportCommand::exportMarkdownOption() };

// The history, sync and import commands answer in a terminal and need no display either.
bool asksForCommand(int argc, char *argv[])
{
    return asksForOneOf(argc, argv,
        QStringList { SNHistoryCommand::listDeletedOption(),
            SNHistoryCommand::restoreDeletedOption(), SNHistoryCommand::backUpNowOption(),
            SNSyncCommand::setFolderOption(), SNSyncCommand::showStatusOption() }
            + importOptions);
}

// Runs in the Vellumo that holds the notes, else on the store itself; nothing else may run
// on the store meanwhile, as the name on the session bus is held until the end.
int runCommand(int argc, char *argv[])
{
    // Rich text of other programs (KNotes' HTML) is laid out by Qt's text document, which needs
    // a GUI application; the offscreen platform gives one without a display.
    std::unique_ptr<QCoreApplication> application;
    if (asksForOneOf(argc, argv, importOptions)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    setApplicationNames();
    SNCommandLine commandLine;
    const bool understood = commandLine.parse(QCoreApplication::arguments());
    const std::optional<SNHistoryCommand> history = commandLine.historyCommand();
    const std::optional<SNSyncCommand> sync = commandLine.syncCommand(QDir::currentPath());
    const std::optional<SNImportCommand> import = commandLine.importCommand(QDir::currentPath());
    if (!understood || (!history && !sync && !import)) {
        printError(commandLine.errorText());
        return 2;
    }
    SNHistoryCommand::Result result;
    SNApplicationInstance instance;
    if (instance.claim() == SNApplicationInstance::Claim::Secondary) {
        result = history ? instance.forward(*history)
            : sync       ? instance.forward(*sync)
                         : instance.forward(*import);
    } else {
        SNStoreLock lock(SNStickyNoteManager::standardBaseDatabasePath());
        if (!lock.acquire()) {
            printError(lock.refusalText());
            return 1;
        }
        SNStickyNoteManager store;
        if (history)
            result = SNHistoryCommandRunner(store).run(*history);
        else if (sync)
            result = SNSyncCommandRunner(SNUserDefaults::standardUserDefaults(), store).run(*sync);
        else
            result = SNImportCommandRunner(
                store, SNThemeManager::sharedManager(), SNTagManager::sharedManager())
                         .run(*import);
    }
    std::fputs(qUtf8Printable(result.output), stdout);
    if (result.succeeded())
        return 0;
    printError(result.error);
    return 1;
}

// The program's icon at the sizes taskbars and window switchers draw. Every window hands
// its icon to the X server as pixels of each size it has; a scalable icon would go as five
// renderings up to 128 pixels, about 90 KB for each note window.
QIcon applicationIcon()
{
    const QIcon scalable(QStringLiteral(":/Vellumo/icons/org.vellumo.Vellumo.svg"));
    QIcon icon;
    for (const int size : { 16, 32, 48 })
        icon.addPixmap(scalable.pixmap(QSize(size, size)));
    return icon;
}

} // namespace

int main(int argc, char *argv[])
{
    if (asksOnlyForText(argc, argv))
        return printText(argc, argv);
    if (asksForCommand(argc, argv))
        return runCommand(argc, argv);
    SNPlatformSelection::apply(argc, argv);
    QApplication application(argc, argv);
    setApplicationNames();
    QApplication::setDesktopFileName(SNApplicationInfo::applicationIdentifier());
    QApplication::setWindowIcon(applicationIcon());
    // Notes come and go; the program lives in the tray until it is told to quit.
    QApplication::setQuitOnLastWindowClosed(false);

    SNCommandLine commandLine;
    if (!commandLine.parse(QApplication::arguments())) {
        printError(commandLine.errorText());
        return 2;
    }
    const SNLaunchRequest request = commandLine.request(QDir::currentPath(), readStandardInput);

    SNApplicationInstance instance;
    if (instance.claim() == SNApplicationInstance::Claim::Secondary) {
        QString error;
        if (!instance.forward(request, &error)) {
            printError(error);
            return 1;
        }
        // Returns once every note is saved, so that scripts can rely on it.
        if (request.actions.contains(SNLaunchRequest::quitAction()))
            instance.waitUntilNameIsReleased(quitTimeout);
        return 0;
    }
    // Nothing runs that could be told to quit.
    if (request.uris.isEmpty() && request.actions == QStringList { SNLaunchRequest::quitAction() })
        return 0;
    // Static, so that it outlives the store, which a static holds too.
    static SNStoreLock storeLock(SNStickyNoteManager::standardBaseDatabasePath());
    if (!storeLock.acquire()) {
        printError(storeLock.refusalText());
        QMessageBox::critical(
            nullptr, SNApplicationInfo::applicationName(), storeLock.refusalText());
        return 1;
    }

    AppDelegate delegate;
    instance.setRequestHandler([&delegate](const SNLaunchRequest &received) {
        return delegate.handleLaunchRequest(received);
    });
    instance.setHistoryHandler([&delegate](const SNHistoryCommand &received) {
        return delegate.handleHistoryCommand(received);
    });
    instance.setSyncHandler([&delegate](const SNSyncCommand &received) {
        return delegate.handleSyncCommand(received);
    });
    instance.setImportHandler([&delegate](const SNImportCommand &received) {
        return delegate.handleImportCommand(received);
    });

    // A shutdown, a kill, a closed terminal and the end of the session all end the program the
    // way Quit does: every note saved.
    QWTerminationSignalWatcher terminationSignals;
    QObject::connect(&terminationSignals, &QWTerminationSignalWatcher::terminationRequested,
        &delegate, &AppDelegate::applicationMustTerminate);
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &delegate,
        &AppDelegate::commitDataRequest);
    // Autostart starts the program at login; the session must not start a second one.
    QObject::connect(&application, &QGuiApplication::saveStateRequest, &application,
        [](QSessionManager &manager) { manager.setRestartHint(QSessionManager::RestartNever); });

    delegate.applicationWillFinishLaunching();
    // A start at login must be known before the notes are first shown.
    for (const QString &uri : request.uris) {
        if (QUrl(uri).scheme() == QLatin1String("vellumo"))
            delegate.handleOpenURLWithReplyEvent(uri);
    }
    delegate.applicationDidFinishLaunching();
    if (!request.isEmpty()) {
        const QString error = delegate.handleLaunchRequest(request);
        if (!error.isEmpty())
            printError(error);
    }
    return application.exec();
}
