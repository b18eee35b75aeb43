#include "services/EventSource.h"

#include "platform/Threads.h"
#include "services/ModuleBoundary.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace Workbench {

// Frees the callable with its last owner, which is the source or a firing that still refers to it.
struct EventSourceBase::Subscriber {
    std::uint64_t cookie = 0;
    MethodEntry forwarder = nullptr;
    ReleaseCallable release = nullptr;
    void* callable = nullptr;
    // Guarded by the source's mutex.
    bool ended = false;
    std::vector<std::uint32_t> runningOn;  // a thread's identifier once for each of its calls

    void FreeCallable() noexcept
    {
        const OnSide module(Side::kModule);
        if (release != nullptr) {
            std::exchange(release, nullptr)(callable);
        }
    }
    bool RunsOnOtherThread() const noexcept
    {
        const std::uint32_t self = Platform::CurrentThreadId();
        return std::any_of(runningOn.begin(), runningOn.end(),
                           [self](std::uint32_t thread) { return thread != self; });
    }
};

// Marks a subscriber as being called for as long as it lives, unless it has ended.
class EventSourceBase::RunningCall {
public:
    RunningCall(EventSourceBase& source, Subscriber& subscriber)
        : source_(source), subscriber_(subscriber)
    {
        const std::lock_guard lock(source_.mutex_);
        if (!subscriber_.ended) {
            subscriber_.runningOn.push_back(Platform::CurrentThreadId());
            runs_ = true;
        }
    }
    ~RunningCall()
    {
        if (!runs_) {
            return;
        }
        const std::lock_guard lock(source_.mutex_);
        auto& threads = subscriber_.runningOn;
        threads.erase(std::find(threads.begin(), threads.end(), Platform::CurrentThreadId()));
        if (subscriber_.ended) {
            source_.callEnded_.notify_all();
        }
    }
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;

    bool Runs() const noexcept { return runs_; }

private:
    EventSourceBase& source_;
    Subscriber& subscriber_;
    bool runs_ = false;
};

EventSourceBase::EventSourceBase() : subscribers_(std::make_shared<const Subscribers>()) {}

EventSourceBase::~EventSourceBase()
{
    for (const auto& subscriber : *subscribers_) {
        subscriber->FreeCallable();
    }
}

std::uint64_t EventSourceBase::Subscribe(MethodEntry forwarder, ReleaseCallable release,
                                         void* callable) noexcept
{
    // Cookies of different events differ too, so that one is never good for another event.
    static std::atomic<std::uint64_t> lastCookie = 0;
    try {
        auto subscriber = std::make_shared<Subscriber>();
        subscriber->cookie = ++lastCookie;
        subscriber->forwarder = forwarder;
        subscriber->release = release;
        subscriber->callable = callable;
        const std::lock_guard lock(mutex_);
        auto changed = std::make_shared<Subscribers>(*subscribers_);
        changed->push_back(subscriber);
        subscribers_ = std::move(changed);
        return subscriber->cookie;
    } catch (const std::bad_alloc&) {
        release(callable);
        return 0;
    }
}

bool EventSourceBase::Unsubscribe(std::uint64_t cookie)
{
    std::shared_ptr<Subscriber> subscriber;
    {
        std::unique_lock lock(mutex_);
        auto changed = std::make_shared<Subscribers>(*subscribers_);
        const auto found = std::find_if(changed->begin(), changed->end(),
                                        [cookie](const auto& s) { return s->cookie == cookie; });
        if (found == changed->end()) {
            return false;
        }
        subscriber = *found;
        subscriber->ended = true;
        changed->erase(found);
        subscribers_ = std::move(changed);
        callEnded_.wait(lock, [&] { return !subscriber->RunsOnOtherThread(); });
    }
    subscriber->FreeCallable();
    return true;
}

std::size_t EventSourceBase::SubscriberCount() const
{
    const std::lock_guard lock(mutex_);
    return subscribers_->size();
}

FireFailures EventSourceBase::CallEach(Call call, void* context)
{
    std::shared_ptr<const Subscribers> subscribers;
    {
        const std::lock_guard lock(mutex_);
        subscribers = subscribers_;
    }
    FireFailures failures;
    for (const auto& subscriber : *subscribers) {
        const RunningCall running(*this, *subscriber);
        if (!running.Runs()) {
            continue;
        }
        try {
            const OnSide module(Side::kModule);
            call(context, subscriber->forwarder, subscriber->callable);
        } catch (...) {
            failures.push_back(std::current_exception());
        }
    }
    return failures;
}

}  // namespace Workbench
