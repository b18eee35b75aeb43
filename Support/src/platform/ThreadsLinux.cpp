#include "platform/Threads.h"

#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <cwchar>
#include <thread>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace Platform {

std::uint32_t CurrentThreadId() noexcept
{
    static thread_local const auto id = static_cast<std::uint32_t>(gettid());
    return id;
}

void ProcessorPause() noexcept
{
#if defined(__x86_64__)
    _mm_pause();
#endif
}

void SleepMilliseconds(std::uint32_t milliseconds) noexcept
{
    if (milliseconds == 0) {
        std::this_thread::yield();
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
}

}  // namespace Platform
