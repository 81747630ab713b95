#include "app/SNApplicationInfo.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(SNApplicationInfo::applicationName());
    QApplication::setApplicationVersion(SNApplicationInfo::applicationVersion());
    QApplication::setDesktopFileName(SNApplicationInfo::applicationIdentifier());

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QApplication::translate("main", "Sticky notes for the Linux desktop."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);

    // Nothing to show yet: start the event loop and leave it at once, cleanly.
    QTimer::singleShot(0, &application, &QApplication::quit);
    return application.exec();
}
