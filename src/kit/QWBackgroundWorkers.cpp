#include "kit/QWBackgroundWorkers.h"

#include <algorithm>
#include <iterator>

QWBackgroundWorkers::~QWBackgroundWorkers()
{
    waitForAll();
}

void QWBackgroundWorkers::run(std::function<void()> job)
{
    joinFinished();
    auto finished = std::make_shared<std::atomic<bool>>(false);
    std::lock_guard lock(m_mutex);
    m_workers.push_back(Worker { std::thread([job = std::move(job), finished] {
                                    job();
                                    finished->store(true);
                                }),
        finished });
}

void QWBackgroundWorkers::joinFinished()
{
    std::vector<Worker> done;
    {
        std::lock_guard lock(m_mutex);
        auto split = std::partition(m_workers.begin(), m_workers.end(),
            [](const Worker &worker) { return !worker.finished->load(); });
        std::move(split, m_workers.end(), std::back_inserter(done));
        m_workers.erase(split, m_workers.end());
    }
    for (Worker &worker : done)
        worker.thread.join();
}

void QWBackgroundWorkers::waitForAll()
{
    std::vector<Worker> running;
    {
        std::lock_guard lock(m_mutex);
        running.swap(m_workers);
    }
    for (Worker &worker : running)
        worker.thread.join();
}
