#pragma once

#include <QObject>

class QSocketNotifier;

// Turns SIGTERM, SIGINT and SIGHUP into a Qt signal on the main thread, so that a shutdown, a
// kill or a closed terminal end the program the way Quit does instead of cutting it off. One
// per process; the signals get their default handling back when it goes.
class QWTerminationSignalWatcher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWTerminationSignalWatcher)

public:
    explicit QWTerminationSignalWatcher(QObject *parent = nullptr);
    ~QWTerminationSignalWatcher() override;

    static QList<int> watchedSignals();

Q_SIGNALS:
    void terminationRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier *m_notifier = nullptr;
};
