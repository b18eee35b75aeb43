// Thread pool for long work that touches neither views nor the panel: reading, writing and
// releasing files. Posting is [any-thread].
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace boost::asio {
class thread_pool;
}

namespace Workbench {

class UiThreadLoop;

class WorkerThreads {
public:
    // Registers its threads with `loop`, which outlives this, as threads of the host.
    explicit WorkerThreads(UiThreadLoop& loop);
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    // Runs jobs in order of arrival, two at a time. An exception of a job is discarded. After Stop
    // a job is released without being run.
    void Post(std::function<void()> job);

    // Waits for the running jobs and releases the others; calls `tellSlow` when that takes more
    // than a second. May be called twice, on the thread that created this.
    void Stop(const std::function<void()>& tellSlow = [] {});

private:
    UiThreadLoop& loop_;
    std::atomic<int> runningJobs_ = 0;
    std::mutex mutex_;
    std::unique_ptr<boost::asio::thread_pool> pool_;  // null once stopped
};

}  // namespace Workbench
