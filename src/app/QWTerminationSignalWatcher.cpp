#include "app/QWTerminationSignalWatcher.h"

#include <QList>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A signal handler may only write to a descriptor; the event loop reads the other end.
int signalSockets[2] = { -1, -1 };

void writeSignal(int signalNumber)
{
    const int savedErrno = errno;
    const char byte = static_cast<char>(signalNumber);
    [[maybe_unused]] const ssize_t written = ::write(signalSockets[0], &byte, 1);
    errno = savedErrno;
}

} // namespace

QList<int> QWTerminationSignalWatcher::watchedSignals()
{
    return { SIGTERM, SIGINT, SIGHUP };
}

QWTerminationSignalWatcher::QWTerminationSignalWatcher(QObject *parent) : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalSockets) != 0) {
        qWarning("[DEBUG] Could not watch termination signals: %s", strerror(errno));
        return;
    }
    ::fcntl(signalSockets[0], F_SETFL, O_NONBLOCK);
    m_notifier = new QSocketNotifier(signalSockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QWTerminationSignalWatcher::readSignal);

    struct sigaction action = {};
    action.sa_handler = writeSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signalNumber : watchedSignals())
        ::sigaction(signalNumber, &action, nullptr);
}

QWTerminationSignalWatcher::~QWTerminationSignalWatcher()
{
    if (!m_notifier)
        return;
    for (const int signalNumber : watchedSignals())
        std::signal(signalNumber, SIG_DFL);
    delete m_notifier;
    ::close(signalSockets[0]);
    ::close(signalSockets[1]);
    signalSockets[0] = signalSockets[1] = -1;
}

void QWTerminationSignalWatcher::readSignal()
{
    char byte = 0;
    if (::read(signalSockets[1], &byte, 1) == 1)
        Q_EMIT terminationRequested(static_cast<unsigned char>(byte));
}
