// A thread of the host that is not the UI thread. The host fires events on it where its state says
// so, in the order in which they happened.
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
    // Known to `loop` as a thread of the host. The thread is started with the first piece of work.
    explicit ForeignThread(UiThreadLoop& loop, FailureLog& failures);
    ~ForeignThread();
    ForeignThread(const ForeignThread&) = delete;
    ForeignThread& operator=(const ForeignThread&) = delete;

    // Runs `work` after the work given before; never, once the thread was stopped. [any-thread]
    void Run(std::function<void()> work);

    // Nothing waits and nothing is running. [any-thread]
    bool IsIdle() const;

    // Returns when all the work given before is done and the thread has ended. May be called twice.
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
