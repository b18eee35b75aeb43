#include "platform/Threads.h"

#include <windows.h>

namespace Platform {

std::uint32_t CurrentThreadId() noexcept
{
    return GetCurrentThreadId();
}

void ProcessorPause() noexcept
{
    YieldProcessor();
}

void SleepMilliseconds(std::uint32_t milliseconds) noexcept
{
    Sleep(milliseconds);
}

}  // namespace Platform
