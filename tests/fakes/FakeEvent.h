// The host's side of one event of a fake: takes subscriptions as a host does, frees the callables,
// and can refuse, fire late or free early.
#pragma once

#include "FakeServiceObject.h"

#include "platform/Threads.h"
#include "ui-engine/SOEvent.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Fakes {

template <class E>
class FakeEvent {
public:
    using Interface = typename E::Interface;

    // Offers the event at `host`.
    explicit FakeEvent(const Fake<Interface>& host) : state_(std::make_shared<State>())
    {
        host->Bind(E::kSlot, state_, reinterpret_cast<MethodEntry>(&SubscribeEntry));
        host->Bind(E::kUnsubscribeSlot, state_, reinterpret_cast<MethodEntry>(&UnsubscribeEntry));
    }
    FakeEvent(const FakeEvent&) = delete;
    FakeEvent& operator=(const FakeEvent&) = delete;
    ~FakeEvent() { FreeAll(); }

    // What the subscribe entry answers; 0 refuses, and keeps the callable.
    void AnswerCookie(std::uint64_t cookie) { state_->cookie = cookie; }
    // Runs inside the subscribe entry, when the callable is the host's already.
    void OnSubscribe(std::function<void()> action) { state_->onSubscribe = std::move(action); }

    // Calls every callable that is not freed, in the order of their subscriptions.
    template <class... Args>
    void Fire(Args... arguments)
    {
        const auto subscribers = state_->subscribers;
        for (const Subscriber& subscriber : subscribers) {
            subscriber.forward(arguments..., subscriber.callable);
        }
    }
    void FreeAll()
    {
        state_->Free([](const Subscriber&) { return true; });
    }

    std::size_t Callables() const { return state_->subscribers.size(); }
    const std::vector<std::uint64_t>& Unsubscribed() const { return state_->unsubscribed; }
    std::uint32_t UnsubscribingThread() const { return state_->unsubscribingThread; }

private:
    struct Subscriber {
        std::uint64_t cookie;
        typename E::Forwarder forward;
        typename E::ReleaseCallable release;
        void* callable;
    };
    struct State {
        std::uint64_t cookie = 1;
        std::function<void()> onSubscribe;
        std::vector<Subscriber> subscribers;
        std::vector<std::uint64_t> unsubscribed;
        std::uint32_t unsubscribingThread = 0;

        template <class Predicate>
        void Free(Predicate chosen)
        {
            const auto before = std::exchange(subscribers, {});
            for (const Subscriber& subscriber : before) {
                if (chosen(subscriber)) {
                    subscriber.release(subscriber.callable);
                } else {
                    subscribers.push_back(subscriber);
                }
            }
        }
    };

    static std::uint64_t SubscribeEntry(Interface* self, typename E::Forwarder forward,
                                        typename E::ReleaseCallable release, void* callable)
    {
        FakeObject::Of(self).CountCall(E::kSlot);
        const auto state = FakeObject::Of(self).template Bound<State>(E::kSlot);
        state->subscribers.push_back({state->cookie, forward, release, callable});
        if (state->onSubscribe) {
            state->onSubscribe();
        }
        return state->cookie == 0 ? 0 : state->cookie++;
    }
    static ResultCode UnsubscribeEntry(Interface* self, std::uint64_t cookie)
    {
        FakeObject::Of(self).CountCall(E::kUnsubscribeSlot);
        const auto state = FakeObject::Of(self).template Bound<State>(E::kUnsubscribeSlot);
        state->unsubscribed.push_back(cookie);
        state->unsubscribingThread = Platform::CurrentThreadId();
        state->Free([cookie](const Subscriber& entry) { return entry.cookie == cookie; });
        return kResultNotFound;  // ignored by whoever unsubscribes
    }

    std::shared_ptr<State> state_;
};

}  // namespace Fakes
