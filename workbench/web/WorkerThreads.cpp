#include "web/WorkerThreads.h"

#include "platform/Threads.h"
#include "services/UiThreadLoop.h"

#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

#include <cstdint>
#include <exception>
#include <utility>

namespace Workbench {

namespace {

constexpr std::size_t kThreadCount = 2;

// Registers the calling thread with the loop as a host thread while the object lives.
class HostThread {
public:
    explicit HostThread(UiThreadLoop& loop) : loop_(loop) { loop_.AddHostThread(self_); }
    ~HostThread() { loop_.RemoveHostThread(self_); }
    HostThread(const HostThread&) = delete;
    HostThread& operator=(const HostThread&) = delete;

private:
    UiThreadLoop& loop_;
    const std::uint32_t self_ = Platform::CurrentThreadId();
};

}  // namespace

WorkerThreads::WorkerThreads(UiThreadLoop& loop)
    : loop_(loop), pool_(std::make_unique<boost::asio::thread_pool>(kThreadCount))
{
}

WorkerThreads::~WorkerThreads()
{
    Stop();
}

void WorkerThreads::Post(std::function<void()> job)
{
    const std::lock_guard lock(mutex_);
    if (pool_ == nullptr) {
        return;
    }
    boost::asio::post(*pool_, [this, job = std::move(job)] {
        const HostThread known(loop_);
        ++runningJobs_;
        try {
            job();
        } catch (const std::exception&) {
            // Jobs report their own failures; what remains is a lack of memory.
        }
        --runningJobs_;
    });
}

// The pool's destructor releases waiting jobs; a running job may still post.
void WorkerThreads::Stop(const std::function<void()>& tellSlow)
{
    std::unique_ptr<boost::asio::thread_pool> ended;
    {
        const std::lock_guard lock(mutex_);
        ended = std::move(pool_);
    }
    if (ended != nullptr) {
        ended->stop();
        for (int hundredths = 0; runningJobs_ != 0 && hundredths < 100; ++hundredths) {
            Platform::SleepMilliseconds(10);
        }
        if (runningJobs_ != 0) {
            tellSlow();
        }
        ended->join();
    }
}

}  // namespace Workbench
