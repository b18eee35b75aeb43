// Threads as the two systems have them. [any-thread]
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Platform {

// Identifier of the calling thread, never 0 and unique among the living threads of the process.
std::uint32_t CurrentThreadId() noexcept;

// Tells the processor that the caller waits for another one.
void ProcessorPause() noexcept;

// Gives up the time slice (0) or sleeps at least that long.
void SleepMilliseconds(std::uint32_t milliseconds) noexcept;

// An event that stays signalled until one waiter takes it.
class AutoResetEvent {
public:
    void Signal();
    void Wait();
    // The same, but no longer than that.
    void WaitFor(std::chrono::milliseconds limit);

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool signalled_ = false;
};

}  // namespace Platform
