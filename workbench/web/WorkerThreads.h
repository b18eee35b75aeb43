// Threads for what takes long and touches no page: reading, writing and releasing documents.
// Posting is [any-thread].
#pragma once

#include "services/UiThreadLoop.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Workbench {

class WorkerThreads {
public:
    // Known to `loop`, which outlives them, as threads of the host.
    explicit WorkerThreads(UiThreadLoop& loop);
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    // Jobs begin in the order in which they came, two at a time. What one throws is lost. Never
    // run, and released at once, after Stop.
    void Post(std::function<void()> job);

    // Returns when the jobs that have begun are done; the others are released. May be called twice.
    void Stop();

private:
    void Serve();

    UiThreadLoop& loop_;
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> jobs_;
    bool ends_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace Workbench
