// Event loop of the UI thread: runs posted calls one after another on the thread that created the
// loop. Posting is [any-thread]; everything else is [ui-thread].
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

class ModuleErrors;

class UiThreadLoop {
public:
    // The calling thread becomes the UI thread. Exceptions of posted calls go to `failures`, and so
    // do the errors that they leave behind, where `moduleErrors` (may be null) watches for them.
    explicit UiThreadLoop(FailureLog& failures, ModuleErrors* moduleErrors = nullptr);
    UiThreadLoop(const UiThreadLoop&) = delete;
    UiThreadLoop& operator=(const UiThreadLoop&) = delete;

    std::uint32_t ThreadId() const noexcept { return threadId_; }
    bool IsUiThread() const noexcept;

    // Whether a call may be held back (see Hold).
    enum class Holding { kMayBeHeld, kNeverHeld };

    // Appends a call. After End, returns false and leaves the record to the caller. [any-thread]
    bool Post(UIThread::Runner runner, void* record, Holding holding = Holding::kMayBeHeld);

    // Appends work of the host itself, which is never held. [any-thread]
    bool Post(std::function<void()> work);

    // Registers a thread of the host, so that its calls do not count as completions of a module's
    // own threads. The UI thread is registered from the start. [any-thread]
    void AddHostThread(std::uint32_t threadId);
    void RemoveHostThread(std::uint32_t threadId);

    // While enabled, holds back calls posted by threads that are not the host's. Disabling appends
    // them in order of arrival.
    void Hold(bool enabled);
    bool Holds() const;
    std::size_t HeldCount() const;

    // Number of waiting calls, without the held ones.
    std::size_t WaitingCount() const;

    // Runs the oldest waiting call. False when there is none.
    bool RunNext();

    // Runs waiting calls, and calls posted by them, until none is left. Returns their number.
    std::size_t RunWaiting();

    // Runs calls on arrival until `isDone` returns true; it is evaluated before each call and after
    // each wait. False when `end` is reached first.
    bool RunUntil(const std::function<bool()>& isDone, std::chrono::steady_clock::time_point end);

    // Refuses further calls. Waiting calls can still be run; held calls become waiting ones.
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
    ModuleErrors* const moduleErrors_;

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<Call> waiting_;
    std::deque<Call> held_;
    std::vector<std::uint32_t> hostThreads_;
    bool holds_ = false;
    bool ended_ = false;
};

}  // namespace Workbench
