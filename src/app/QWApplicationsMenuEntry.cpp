#include "app/QWApplicationsMenuEntry.h"

#include "kit/QWFileReplacer.h"
#include "settings/QWLoginItem.h"

#include <QDir>
#include <QFileInfo>
#include <QList>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

bool writeFile(const QString &path, const QByteArray &contents)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    return QWFileReplacer::replace(file, contents);
}

} // namespace

QString QWApplicationsMenuEntry::desktopEntryPath(const QString &identifier)
{
    return QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation) + QLatin1Char('/')
        + identifier + QStringLiteral(".desktop");
}

QString QWApplicationsMenuEntry::iconPath(const QString &identifier)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/icons/hicolor/scalable/apps/") + identifier + QStringLiteral(".svg");
}

bool QWApplicationsMenuEntry::isInstalled(const QString &identifier)
{
    return !QStandardPaths::locate(
        QStandardPaths::ApplicationsLocation, identifier + QStringLiteral(".desktop"))
                .isEmpty();
}

bool QWApplicationsMenuEntry::isRunningFromBuildTree(const QString &programPath)
{
    QDir folder = QFileInfo(programPath).absoluteDir();
    for (int level = 0; level < 2; ++level) {
        if (folder.exists(QStringLiteral("CMakeCache.txt")))
            return true;
        if (!folder.cdUp())
            break;
    }
    return false;
}

QByteArray QWApplicationsMenuEntry::entryForProgram(const QByteArray &entry, const QString &program)
{
    QList<QByteArray> lines = entry.split('\n');
    for (QByteArray &line : lines) {
        if (line.startsWith("TryExec=")) {
            line = "TryExec=" + program.toUtf8();
        } else if (line.startsWith("Exec=")) {
            const qsizetype space = line.indexOf(' ');
            const QByteArray rest = space < 0 ? QByteArray() : line.mid(space);
            line = "Exec=" + QWLoginItem::execLine(program, {}).toUtf8() + rest;
        }
    }
    return lines.join('\n');
}

bool QWApplicationsMenuEntry::install(const QString &identifier, const QByteArray &entry,
    const QByteArray &icon, const QString &program)
{
    if (!writeFile(iconPath(identifier), icon))
        return false;
    if (!writeFile(desktopEntryPath(identifier), entryForProgram(entry, program)))
        return false;
    // Desktops find the entry on their own; the cache is what lets files open with it. It takes
    // a moment, once, on the user's click: waited for, so that nothing writes there afterwards.
    const QString updater
        = QStandardPaths::findExecutable(QStringLiteral("update-desktop-database"));
    if (!updater.isEmpty())
        QProcess::execute(updater, { QFileInfo(desktopEntryPath(identifier)).absolutePath() });
    return true;
}
