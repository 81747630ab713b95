#include "support/QWTestEnvironment.h"

#include <QDir>
#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex messagesMutex;
QStringList collected;
QtMessageHandler previousHandler = nullptr;

void collectMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    {
        QMutexLocker locker(&messagesMutex);
        collected.append(message);
    }
    if (previousHandler)
        previousHandler(type, context, message);
}

} // namespace

QWTestEnvironment::QWTestEnvironment()
    : m_oldConfigHome(qgetenv("XDG_CONFIG_HOME")), m_oldDataHome(qgetenv("XDG_DATA_HOME"))
{
    QDir().mkpath(configHome());
    QDir().mkpath(dataHome());
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(configHome()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(dataHome()));
    clearMessages();
    previousHandler = qInstallMessageHandler(collectMessage);
}

QWTestEnvironment::~QWTestEnvironment()
{
    qInstallMessageHandler(previousHandler);
    previousHandler = nullptr;
    qputenv("XDG_CONFIG_HOME", m_oldConfigHome);
    qputenv("XDG_DATA_HOME", m_oldDataHome);
}

QString QWTestEnvironment::configHome() const
{
    return m_folder.filePath(QStringLiteral("config"));
}

QString QWTestEnvironment::dataHome() const
{
    return m_folder.filePath(QStringLiteral("data"));
}

QStringList QWTestEnvironment::messages() const
{
    QMutexLocker locker(&messagesMutex);
    return collected;
}

void QWTestEnvironment::clearMessages()
{
    QMutexLocker locker(&messagesMutex);
    collected.clear();
}
