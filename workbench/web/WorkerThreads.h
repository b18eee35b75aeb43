// Threads for what takes long and touches neither documents' views nor the panel: reading, writing
// and releasing files. Posting is [any-thread].
#pragma once

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
    // Known to `loop`, which outlives them, as threads of the host.
    explicit WorkerThreads(UiThreadLoop& loop);
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    // Jobs begin in the order in which they came, two at a time. What one throws is lost. Never
    // run, and released at once, after Stop.
    void Post(std::function<void()> job);

    // Returns when the jobs that have begun are done; the others are released. May be called twice,
    // on the thread that made this.
    void Stop();

private:
    UiThreadLoop& loop_;
    std::mutex mutex_;
    std::unique_ptr<boost::asio::thread_pool> pool_;  // null once stopped
};

}  // namespace Workbench
