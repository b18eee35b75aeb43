// The event loop of the UI thread: calls that any thread posts, run one after another on the thread
// that made the loop. Posting is [any-thread]; everything else belongs to the UI thread.
#pragma once

#include "services/FailureLog.h"
#include "ui-engine/UIService.SO.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace Workbench {

class UiThreadLoop {
public:
    // The calling thread becomes the UI thread. What posted calls throw goes to `failures`.
    explicit UiThreadLoop(FailureLog& failures);
    UiThreadLoop(const UiThreadLoop&) = delete;
    UiThreadLoop& operator=(const UiThreadLoop&) = delete;

    std::uint32_t ThreadId() const noexcept { return threadId_; }
    bool IsUiThread() const noexcept;

    // Whether a call may be kept back (see Hold).
    enum class Holding { kMayBeHeld, kNeverHeld };

    // Appends a call. False, and nothing is taken over, once the loop has ended. [any-thread]
    bool Post(UIThread::Runner runner, void* record, Holding holding = Holding::kMayBeHeld);

    // Appends work of the host itself, which is never held. [any-thread]
    bool Post(std::function<void()> work);

    // Registers a thread as one of the host's: its calls do not count as work that a module
    // finished on a thread of its own. The UI thread is known from the start. [any-thread]
    void AddHostThread(std::uint32_t threadId);
    void RemoveHostThread(std::uint32_t threadId);

    // While on, calls posted by threads that are not the host's are kept back. Turning it off
    // appends them, in the order in which they came.
    void Hold(bool enabled);
    bool Holds() const;
    std::size_t HeldCount() const;

    // Calls that wait to be run, held ones not counted.
    std::size_t WaitingCount() const;

    // Runs the oldest waiting call. False when none waits.
    bool RunNext();

    // Runs what waits and what that posts, until nothing does. The number of calls run.
    std::size_t RunWaiting();

    // Runs calls as they come until `isDone` is true, which is asked before each call and after
    // each wait. False when the time is over first.
    bool RunUntil(const std::function<bool()>& isDone, std::chrono::steady_clock::time_point end);

    // Refuses further calls. Those that wait can still be run; held ones become waiting ones.
    void End();

private:
    struct Call {
        UIThread::Runner runner = nullptr;
        void* record = nullptr;
        std::function<void()> work;
    };

    bool Append(Call call, Holding holding);
    void ReleaseHeld();

    const std::uint32_t threadId_;
    FailureLog& failures_;

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<Call> waiting_;
    std::deque<Call> held_;
    std::vector<std::uint32_t> hostThreads_;
    bool holds_ = false;
    bool ended_ = false;
};

}  // namespace Workbench
