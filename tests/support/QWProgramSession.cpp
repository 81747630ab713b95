#include "support/QWProgramSession.h"

#include "settings/GVUserDefaults.h"
#include "settings/SNApplicationInfo.h"
#include "support/QWProgramDriver.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>
#include <QSettings>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>

QWProgramSession::QWProgramSession(Bus bus) : m_ownBus(bus == Bus::Own)
{
    setSetting(QStringLiteral("QWWelcomeWindowWasShown"), true);
    if (!m_ownBus)
        return;
    // Gone with the test even when the test itself dies.
    m_bus.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_bus.start(QStringLiteral("dbus-daemon"),
        { QStringLiteral("--session"), QStringLiteral("--nofork"),
            QStringLiteral("--print-address=1") });
    if (m_bus.waitForStarted() && QTest::qWaitFor([this] { return m_bus.canReadLine(); }, 20000))
        m_busAddress = QString::fromUtf8(m_bus.readLine().trimmed());
}

QWProgramSession::~QWProgramSession()
{
    if (m_program.state() != QProcess::NotRunning) {
        m_program.kill();
        m_program.waitForFinished();
    }
    if (!m_busAddress.isEmpty())
        QDBusConnection::disconnectFromBus(m_busAddress);
    if (m_bus.state() != QProcess::NotRunning) {
        m_bus.kill();
        m_bus.waitForFinished();
    }
}

void QWProgramSession::setSetting(const QString &key, const QVariant &value)
{
    // The store's path follows XDG_CONFIG_HOME, which is this test's own for the moment.
    const QByteArray previous = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(homePath(QStringLiteral("config"))));
    {
        QSettings settings(GVUserDefaults::standardStorePath(), QSettings::IniFormat);
        settings.setValue(key, value);
    }
    qputenv("XDG_CONFIG_HOME", previous);
}

bool QWProgramSession::isServing()
{
    return QDBusConnection::sessionBus()
        .interface()
        ->isServiceRegistered(SNApplicationInfo::applicationIdentifier())
        .value();
}

bool QWProgramSession::serves() const
{
    if (!m_ownBus)
        return isServing();
    if (m_busAddress.isEmpty())
        return false;
    // Named by its address, so that each bus is connected once.
    const QDBusConnectionInterface *bus
        = QDBusConnection::connectToBus(m_busAddress, m_busAddress).interface();
    return bus && bus->isServiceRegistered(SNApplicationInfo::applicationIdentifier()).value();
}

QProcessEnvironment QWProgramSession::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!m_busAddress.isEmpty())
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_busAddress);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), homePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), homePath(QStringLiteral("data")));
    return environment;
}

bool QWProgramSession::start(const QStringList &arguments)
{
    m_program.setProcessEnvironment(environment());
    m_program.setProcessChannelMode(QProcess::ForwardedChannels);
    m_program.start(QWProgramDriver::programPath(), arguments);
    return m_program.waitForStarted() && QTest::qWaitFor([this] { return serves(); }, 20000);
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
