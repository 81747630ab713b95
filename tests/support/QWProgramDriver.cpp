#include "support/QWProgramDriver.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

#include <algorithm>

namespace QWProgramDriver {

QString programPath()
{
    const QString chosen = qEnvironmentVariable("VELLUMO_PROGRAM");
    return chosen.isEmpty()
        ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../src/vellumo"))
        : chosen;
}

QString run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(10000))
        qFatal("%s did not finish", qUtf8Printable(program));
    return QString::fromUtf8(process.readAllStandardOutput());
}

void xdotool(const QStringList &arguments)
{
    run(QStringLiteral("xdotool"), arguments);
}

QStringList visibleWindows(qint64 pid)
{
    return run(QStringLiteral("xdotool"),
        { QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--pid"),
            QString::number(pid) })
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QRect windowGeometry(const QString &window)
{
    QRect geometry;
    const QString shell = run(QStringLiteral("xdotool"),
        { QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window });
    for (const QString &line : shell.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const int value = line.section(QLatin1Char('='), 1).toInt();
        if (line.startsWith(QLatin1String("X=")))
            geometry.moveLeft(value);
        else if (line.startsWith(QLatin1String("Y=")))
            geometry.moveTop(value);
        else if (line.startsWith(QLatin1String("WIDTH=")))
            geometry.setWidth(value);
        else if (line.startsWith(QLatin1String("HEIGHT=")))
            geometry.setHeight(value);
    }
    return geometry;
}

QList<QRect> visibleGeometries(qint64 pid)
{
    QList<QRect> geometries;
    for (const QString &window : visibleWindows(pid))
        geometries.append(windowGeometry(window));
    std::sort(geometries.begin(), geometries.end(),
        [](const QRect &a, const QRect &b) { return a.x() < b.x(); });
    return geometries;
}

} // namespace QWProgramDriver
