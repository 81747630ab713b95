#include "support/QWProgramSession.h"

#include "settings/GVUserDefaults.h"
#include "settings/SNApplicationInfo.h"
#include "support/QWProgramDriver.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>
#include <QSettings>
#include <QTest>

QWProgramSession::QWProgramSession()
{
    // The store's path follows XDG_CONFIG_HOME, which is this test's own for the moment.
    const QByteArray previous = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(homePath(QStringLiteral("config"))));
    {
        QSettings settings(GVUserDefaults::standardStorePath(), QSettings::IniFormat);
        settings.setValue(QStringLiteral("QWWelcomeWindowWasShown"), true);
    }
    qputenv("XDG_CONFIG_HOME", previous);
}

QWProgramSession::~QWProgramSession()
{
    if (m_program.state() != QProcess::NotRunning) {
        m_program.kill();
        m_program.waitForFinished();
    }
}

bool QWProgramSession::isServing()
{
    return QDBusConnection::sessionBus()
        .interface()
        ->isServiceRegistered(SNApplicationInfo::applicationIdentifier())
        .value();
}

QProcessEnvironment QWProgramSession::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), homePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), homePath(QStringLiteral("data")));
    return environment;
}

bool QWProgramSession::start(const QStringList &arguments)
{
    m_program.setProcessEnvironment(environment());
    m_program.setProcessChannelMode(QProcess::ForwardedChannels);
    m_program.start(QWProgramDriver::programPath(), arguments);
    return m_program.waitForStarted() && QTest::qWaitFor(isServing, 20000);
}

int QWProgramSession::runSecond(
    const QStringList &arguments, const QByteArray &input, QString *output) const
{
    QProcess second;
    second.setProcessEnvironment(environment());
    second.setWorkingDirectory(m_home.path());
    second.start(QWProgramDriver::programPath(), arguments);
    if (!second.waitForStarted())
        return -1;
    second.write(input);
    second.closeWriteChannel();
    if (!second.waitForFinished(20000)) {
        second.kill();
        return -1;
    }
    if (output)
        *output = QString::fromUtf8(second.readAllStandardOutput());
    return second.exitStatus() == QProcess::NormalExit ? second.exitCode() : -1;
}
