#pragma once

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

// Drives the built program from an integration test: finds it, runs commands to their end and
// reads its windows back with xdotool, an X client that is not the program's own.
namespace QWProgramDriver {

// The program built beside the test, unless VELLUMO_PROGRAM names another.
QString programPath();
// Runs the command to its end (at most 10 s) and returns what it printed.
QString run(const QString &program, const QStringList &arguments);
void xdotool(const QStringList &arguments);
// The ids of the process's windows that are mapped.
QStringList visibleWindows(qint64 pid);
QRect windowGeometry(const QString &window);
// The frames of the process's mapped windows, left to right.
QList<QRect> visibleGeometries(qint64 pid);

} // namespace QWProgramDriver
