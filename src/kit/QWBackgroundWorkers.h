#pragma once

#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// Runs jobs each on a thread of its own, so that the interface thread never waits for them,
// and lets its owner wait until all have finished (at quit, and before the owner goes).
// Finished threads are joined as new jobs start.
class QWBackgroundWorkers final
{
public:
    QWBackgroundWorkers() = default;
    // Waits for the jobs still running.
    ~QWBackgroundWorkers();
    Q_DISABLE_COPY_MOVE(QWBackgroundWorkers)

    void run(std::function<void()> job);
    // Returns once every job started so far has finished.
    void waitForAll();

private:
    struct Worker
    {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> finished;
    };
    void joinFinished();

    std::mutex m_mutex;
    std::vector<Worker> m_workers;
};
