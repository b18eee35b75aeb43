// A thread of the host other than the UI thread. The host fires document events on it, in order,
// when its state selects it.
#pragma once

#include "services/UiThreadLoop.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace Workbench {

class ForeignThread {
public:
    // Registers the thread with `loop` as a thread of the host. It is started with the first work.
    explicit ForeignThread(UiThreadLoop& loop, FailureLog& failures);
    ~ForeignThread();
    ForeignThread(const ForeignThread&) = delete;
    ForeignThread& operator=(const ForeignThread&) = delete;

    // Queues `work`; no effect after Stop. [any-thread]
    void Run(std::function<void()> work);

    // Whether the queue is empty and nothing is running. [any-thread]
    bool IsIdle() const;

    // Completes the queued work and ends the thread. May be called twice.
    void Stop();

private:
    void Serve();

    UiThreadLoop& loop_;
    FailureLog& failures_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> work_;
    bool busy_ = false;
    bool ends_ = false;
    std::thread thread_;
};

}  // namespace Workbench
