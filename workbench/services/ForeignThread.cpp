#include "services/ForeignThread.h"

#include "platform/Threads.h"
#include "services/ModuleBoundary.h"

#include <exception>
#include <utility>

namespace Workbench {

ForeignThread::ForeignThread(UiThreadLoop& loop, FailureLog& failures)
    : loop_(loop), failures_(failures)
{
}

ForeignThread::~ForeignThread()
{
    Stop();
}

void ForeignThread::Stop()
{
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
        changed_.notify_one();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void ForeignThread::Run(std::function<void()> work)
{
    const std::lock_guard lock(mutex_);
    if (ends_) {
        return;
    }
    work_.push_back(std::move(work));
    if (!thread_.joinable()) {
        thread_ = std::thread([this] { Serve(); });
    }
    changed_.notify_one();
}

bool ForeignThread::IsIdle() const
{
    const std::lock_guard lock(mutex_);
    return work_.empty() && !busy_;
}

void ForeignThread::Serve()
{
    const OnSide host(Side::kHost);
    loop_.AddHostThread(Platform::CurrentThreadId());
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ends_ || !work_.empty(); });
        if (work_.empty()) {
            break;
        }
        std::function<void()> work = std::move(work_.front());
        work_.pop_front();
        busy_ = true;
        lock.unlock();
        try {
            work();
        } catch (...) {
            failures_.Add("foreign thread", std::current_exception());
        }
        work = nullptr;  // what it holds is released before the thread counts as idle
        lock.lock();
        busy_ = false;
    }
    loop_.RemoveHostThread(Platform::CurrentThreadId());
}

}  // namespace Workbench
