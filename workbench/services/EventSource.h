// The host's end of an event: who subscribed, and firing. Subscribing, unsubscribing and firing may
// happen on any thread, several at once, and inside a call of the event itself. [any-thread]
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

// What the subscribers of an event threw, in order; usually nothing.
using FireFailures = std::vector<std::exception_ptr>;

// The part of an event source that does not depend on the event's arguments.
class EventSourceBase {
public:
    using ReleaseCallable = void (*)(void* callable);

    EventSourceBase();
    // Frees the callables that are still subscribed.
    ~EventSourceBase();
    EventSourceBase(const EventSourceBase&) = delete;
    EventSourceBase& operator=(const EventSourceBase&) = delete;

    // Ends a subscription and frees its callable. Returns when no call of it is running on another
    // thread; calls of it that run on the calling thread are those that it was called from.
    // False for a cookie that is none, or ended already.
    bool Unsubscribe(std::uint64_t cookie);

    std::size_t SubscriberCount() const;

protected:
    // Takes the callable over in any case. The cookie, 0 when memory is short.
    std::uint64_t Subscribe(MethodEntry forwarder, ReleaseCallable release,
                            void* callable) noexcept;

    // Calls every subscriber in order of subscription. One that unsubscribes meanwhile is not
    // called any more, one that subscribes meanwhile not yet.
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
