#include "platform/Threads.h"

namespace Platform {

void AutoResetEvent::Signal()
{
    {
        const std::lock_guard lock(mutex_);
        signalled_ = true;
    }
    condition_.notify_one();
}

void AutoResetEvent::Wait()
{
    std::unique_lock lock(mutex_);
    condition_.wait(lock, [this] { return signalled_; });
    signalled_ = false;
}

void AutoResetEvent::WaitFor(std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex_);
    condition_.wait_for(lock, limit, [this] { return signalled_; });
    signalled_ = false;
}

}  // namespace Platform
