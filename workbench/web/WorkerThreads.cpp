#include "web/WorkerThreads.h"

#include "platform/Threads.h"

#include <exception>
#include <utility>

namespace Workbench {

namespace {

constexpr int kThreadCount = 2;

}  // namespace

WorkerThreads::WorkerThreads(UiThreadLoop& loop) : loop_(loop)
{
    for (int i = 0; i < kThreadCount; ++i) {
        threads_.emplace_back([this] { Serve(); });
    }
}

WorkerThreads::~WorkerThreads()
{
    Stop();
}

void WorkerThreads::Post(std::function<void()> job)
{
    const std::lock_guard lock(mutex_);
    if (!ends_) {
        jobs_.push_back(std::move(job));
        posted_.notify_one();
    }
}

void WorkerThreads::Serve()
{
    const std::uint32_t self = Platform::CurrentThreadId();
    loop_.AddHostThread(self);
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(mutex_);
            posted_.wait(lock, [this] { return ends_ || !jobs_.empty(); });
            if (ends_) {
                break;
            }
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        try {
            job();
        } catch (const std::exception&) {
            // A job tells of its failures itself; what is left is that memory was short.
        }
    }
    loop_.RemoveHostThread(self);
}

void WorkerThreads::Stop()
{
    std::deque<std::function<void()>> dropped;
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
        std::swap(dropped, jobs_);
    }
    posted_.notify_all();
    for (std::thread& thread : threads_) {
        if (thread.joinable()) {
            thread.join();
        }
    }
}

}  // namespace Workbench
