// The host's side of an event: its subscribers, and firing. Subscribing, unsubscribing and firing
// may happen on several threads at once, and inside a call of the event itself. [any-thread]
#pragma once

#include "service-common/ServiceMethod.h"

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Workbench {

// Exceptions of an event's subscribers, in order; usually empty.
using FireFailures = std::vector<std::exception_ptr>;

// The part of an event source that is independent of the event's arguments.
class EventSourceBase {
public:
    using ReleaseCallable = void (*)(void* callable);

    EventSourceBase();
    // Frees the remaining callables.
    ~EventSourceBase();
    EventSourceBase(const EventSourceBase&) = delete;
    EventSourceBase& operator=(const EventSourceBase&) = delete;

    // Ends a subscription and frees its callable. Waits until no call of it is running on another
    // thread; calls on the calling thread, which this was called from, may still be running.
    // False for an unknown cookie and for a subscription that has ended.
    bool Unsubscribe(std::uint64_t cookie);

    std::size_t SubscriberCount() const;

protected:
    // Takes ownership of the callable in any case. Returns the cookie; 0 when memory is exhausted.
    std::uint64_t Subscribe(MethodEntry forwarder, ReleaseCallable release,
                            void* callable) noexcept;

    // Calls every subscriber in order of subscription. A subscriber removed during the call is no
    // longer called; one added during it is not called yet.
    using Call = void (*)(void* context, MethodEntry forwarder, void* callable);
    FireFailures CallEach(Call call, void* context);

private:
    struct Subscriber;
    class RunningCall;
    using Subscribers = std::vector<std::shared_ptr<Subscriber>>;

    mutable std::mutex mutex_;
    std::condition_variable callEnded_;
    std::shared_ptr<const Subscribers> subscribers_;  // replaced as a whole; never null
};

template <class E, class Callable = typename E::Callable>
class EventSource;

template <class E, class... Args>
class EventSource<E, std::function<void(Args...)>> : public EventSourceBase {
public:
    std::uint64_t Subscribe(typename E::Forwarder forwarder, ReleaseCallable release,
                            void* callable) noexcept
    {
        return EventSourceBase::Subscribe(reinterpret_cast<MethodEntry>(forwarder), release,
                                          callable);
    }

    FireFailures Fire(Args... arguments)
    {
        auto call = [&](MethodEntry forwarder, void* callable) {
            reinterpret_cast<typename E::Forwarder>(forwarder)(arguments..., callable);
        };
        return CallEach(
            [](void* context, MethodEntry forwarder, void* callable) {
                (*static_cast<decltype(call)*>(context))(forwarder, callable);
            },
            &call);
    }
};

}  // namespace Workbench
