#include "settings/QWLoginItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

QString quotedArgument(const QString &argument)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    bool needsQuotes = argument.isEmpty();
    for (QChar c : argument) {
        if (reserved.contains(c)) {
            needsQuotes = true;
            break;
        }
    }
    if (!needsQuotes)
        return argument;
    QString quoted = QStringLiteral("\"");
    for (QChar c : argument) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        quoted += c;
    }
    return quoted + u'"';
}

// Escapes of the key file's string type, applied after quoting: a quoted backslash ends up as
// four characters in the file, which is what launchers expect.
QString escapedStringValue(const QString &value)
{
    QString escaped;
    escaped.reserve(value.size());
    for (QChar c : value) {
        if (c == u'\\')
            escaped += QLatin1String("\\\\");
        else if (c == u'\n')
            escaped += QLatin1String("\\n");
        else if (c == u'\t')
            escaped += QLatin1String("\\t");
        else if (c == u'\r')
            escaped += QLatin1String("\\r");
        else
            escaped += c;
    }
    return escaped;
}

} // namespace

QString QWLoginItem::autostartFilePath(const QString &identifier)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/autostart/") + identifier + QStringLiteral(".desktop");
}

QString QWLoginItem::programPath()
{
    if (QCoreApplication::instance()) {
        const QString path = QCoreApplication::applicationFilePath();
        if (!path.isEmpty() && QFileInfo::exists(path))
            return path;
    }
    return QStringLiteral("vellumo");
}

QString QWLoginItem::execLine(const QString &program, const QStringList &arguments)
{
    QStringList words { quotedArgument(program) };
    for (const QString &argument : arguments)
        words.append(quotedArgument(argument));
    QString line = words.join(u' ');
    line.replace(u'%', QLatin1String("%%"));
    return escapedStringValue(line);
}

bool QWLoginItem::setEnabled(const QString &identifier, bool enabled, const QStringList &arguments)
{
    const QString path = autostartFilePath(identifier);
    if (!enabled)
        return !QFileInfo::exists(path) || QFile::remove(path);

    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    const QString name = QCoreApplication::applicationName().isEmpty()
        ? identifier
        : QCoreApplication::applicationName();
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=%1\n"
                                         "Exec=%2\n"
                                         "NoDisplay=true\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(escapedStringValue(name), execLine(programPath(), arguments));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(entry.toUtf8());
    return file.commit();
}
