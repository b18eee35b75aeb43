// Events of host objects: subscribing a callable to one event, and the handle that ends the
// subscription. An interface declares each event once, with SO_EVENT. Events are fired on any
// thread; the callable runs on the thread that fires. [any-thread]
#pragma once

#include "service-common/ServiceMethod.h"
#include "service-common/ServiceObjectPtr.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace SOEvent {

// Base of all subscriptions. Destroying it unsubscribes from a living host object.
class SubscriptionBase {
public:
    SubscriptionBase() = default;
    SubscriptionBase(const SubscriptionBase&) = delete;
    SubscriptionBase& operator=(const SubscriptionBase&) = delete;
    virtual ~SubscriptionBase() = default;
};

// Shared handle to a subscription, empty when the host made none. The subscription ends with the
// last handle; it may be released inside its own callback, after its source died, and on another
// thread than the one that subscribed.
using SubscriptionHandle = std::shared_ptr<SubscriptionBase>;

// A handler's subscriptions to one source, in the order in which they were made.
class SubscriptionList {
public:
    // Empty handles are not kept.
    void Append(const SubscriptionHandle& subscription);

    // Releases every handle in order; the list is empty before the first is released, so that a
    // release may lead back here. A second call does nothing.
    void Clear();

    std::size_t Size() const noexcept { return subscriptions_.size(); }

private:
    std::vector<SubscriptionHandle> subscriptions_;
};

}  // namespace SOEvent

namespace SODetails {

// Base of a catalogue entry that takes an event's slot pair: Subscribe at `Slot`, Unsubscribe at
// the next one. The host owns the callable from the Subscribe call on, whatever it returns, and
// frees it with the release function, once. Unsubscribe returns only when no call of the callable
// is running on another thread, and none comes afterwards; both may be called inside the callable.
// A table that holds the interface holds its events: its size is not consulted. A null Subscribe
// entry is skipped; a host that offers Subscribe offers Unsubscribe.
template <class I, unsigned Slot, class Signature>
struct EventDeclaration;

template <class I, unsigned Slot, class... Args>
struct EventDeclaration<I, Slot, void(Args...)> {
    using Interface = I;
    using Callable = std::function<void(Args...)>;
    // What the host calls when it fires: the event's arguments, then the callable that it was
    // given.
    using Forwarder = void (*)(Args... arguments, void* callable);
    // Frees the callable. A null one is ignored. Never fails.
    using ReleaseCallable = void (*)(void* callable);
    // A cookie that ends the subscription; 0: none was made.
    using Subscribe = std::uint64_t (*)(I* self, Forwarder forwarder, ReleaseCallable release,
                                        void* callable);
    // Ends a subscription; the result code is not looked at.
    using Unsubscribe = ResultCode (*)(I* self, std::uint64_t cookie);
    static constexpr unsigned kSlot = Slot;
    static constexpr unsigned kUnsubscribeSlot = Slot + 1;
    static constexpr unsigned kSlotCount = 2;

    // What the host keeps as its user pointer: the callable, which lives until the host has freed
    // it and no call of it is running any more.
    struct HeldCallable {
        const Callable callable;
        std::atomic<unsigned> holders = 1;  // the host, and each running call

        static void Drop(HeldCallable* held) noexcept
        {
            if (held->holders.fetch_sub(1) == 1) {
                std::unique_ptr<HeldCallable>(held).reset();
            }
        }
    };
    static std::unique_ptr<HeldCallable> Hold(Callable callable)
    {
        return std::unique_ptr<HeldCallable>(new HeldCallable{std::move(callable)});
    }

    // Calls the callable, which the host may free meanwhile. An empty one raises
    // std::bad_function_call.
    static void Forward(Args... arguments, void* callable)
    {
        auto* const held = static_cast<HeldCallable*>(callable);
        held->holders.fetch_add(1);
        const std::unique_ptr<HeldCallable, void (*)(HeldCallable*)> running(held,
                                                                             &HeldCallable::Drop);
        held->callable(arguments...);
    }
    static void Release(void* callable) noexcept
    {
        if (callable != nullptr) {
            HeldCallable::Drop(static_cast<HeldCallable*>(callable));
        }
    }
};

}  // namespace SODetails

namespace SOEvent {

// A live subscription to event `E`.
template <class E>
struct EventSubscription : SubscriptionBase {
    bool subscribed = false;
    WeakServiceObjectPtr<typename E::Interface> host;
    std::uint64_t cookie = 0;

    ~EventSubscription() override
    {
        if (!subscribed) {
            return;
        }
        const auto object = host.Lock();
        if (object && cookie != 0) {
            End(object.Get(), cookie);
        }
    }

    // Ends a subscription at the host, whatever comes of it.
    static void End(typename E::Interface* object, std::uint64_t cookie) noexcept
    {
        try {
            reinterpret_cast<typename E::Unsubscribe>(
                SODetails::RawMethodEntry(object, E::kUnsubscribeSlot))(object, cookie);
        } catch (...) {  // NOLINT: nobody could act on it
        }
    }
};

// Subscribes `callable` to event `E` of `host`. Empty when the host has no subscribe entry or
// answers with cookie 0, or hands out no weak reference of itself. Fails with std::bad_alloc; no
// subscription is left at the host then. The table size is not consulted: a host that hands out an
// interface offers its events.
template <class Subscription, class E>
SubscriptionHandle SubscribeTo(typename E::Interface* host, typename E::Callable callable)
{
    SODetails::RequireCompleteCatalogue<typename E::Interface>();
    const auto subscribe =
        host == nullptr
            ? nullptr
            : reinterpret_cast<typename E::Subscribe>(SODetails::RawMethodEntry(host, E::kSlot));
    if (subscribe == nullptr) {
        return nullptr;
    }
    // Everything that can fail for want of memory is made before the host is asked.
    auto subscription = std::make_shared<Subscription>();
    auto copy = E::Hold(std::move(callable));
    const std::uint64_t cookie = subscribe(host, &E::Forward, &E::Release, copy.release());
    if (cookie == 0) {
        return nullptr;
    }
    const auto held = BasicServiceObjectPtr<typename E::Interface>::Retain(host);
    subscription->host = WeakServiceObjectPtr<typename E::Interface>(held.Get());
    if (subscription->host.IsEmpty()) {
        // It could not be ended later, when what the callable is bound to is gone.
        Subscription::End(held.Get(), cookie);
        return nullptr;
    }
    subscription->cookie = cookie;
    subscription->subscribed = true;
    return subscription;
}

}  // namespace SOEvent

// Declares event `name` of `interface` with its subscribe entry at `slot`; the remaining arguments
// are the callback's parameters. Makes the entry `name`, the struct `EventSubscription_<name>` and
// the function `Subscribe_<name>`. Inside the interface's struct.
#define SO_EVENT(interface, name, slot, ...)                                                       \
    struct name : SODetails::EventDeclaration<interface, slot, void(__VA_ARGS__)> {                \
        static constexpr const char* kName = #name;                                                \
        static constexpr unsigned kLine = __LINE__;                                                \
    };                                                                                             \
    static name* DeclaredEntry(SODetails::SlotTag<slot>);                                          \
    struct EventSubscription_##name final : SOEvent::EventSubscription<name> {};                   \
    static SOEvent::SubscriptionHandle Subscribe_##name(interface* host, name::Callable callable)  \
    {                                                                                              \
        return SOEvent::SubscribeTo<EventSubscription_##name, name>(host, std::move(callable));    \
    }                                                                                              \
    static_assert(true)
