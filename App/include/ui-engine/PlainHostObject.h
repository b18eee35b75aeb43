// Service objects of a host made of functions, for hosts that begin small: methods are lambdas, all
// events are there. Included by hosts.
//
//     const auto document = PlainHostObject<BLDocument>::Make();
//     document->Offer<BLDocument::GetPageCount>([](std::int32_t* count) { *count = 1; });
//     document->Fire<BLDocument::OnAnnotChanged>(operation, pageIndex, annotation);
//
// Methods are called on the threads that the interface names; events are subscribed to, ended and
// fired on the UI thread alone, so that ending a subscription has no call to wait for.
#pragma once

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectImplementation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

template <class I>
class PlainHostObject : public SODetails::ServiceObjectBase<I> {
public:
    // A new object without methods; the handle owns its one reference.
    static BasicServiceObjectPtr<PlainHostObject> Make()
    {
        return SODetails::ServiceObjectCppTheConcrete<PlainHostObject>::Create();
    }
    static PlainHostObject* FromInterface(ServiceObject* header) noexcept
    {
        return static_cast<PlainHostObject*>(PlainHostObject::FromHeader(header));
    }

    // The object as the module sees it. Borrowed.
    I* Get() noexcept { return this->AsInterface(); }

    // Stores the object in an out parameter, as its interface or as a plain ServiceObject, with a
    // reference for the caller. Never fails. [any-thread]
    template <class Out>
    void HandOut(Out** out) noexcept
    {
        *out = BasicServiceObjectPtr<I>::Retain(Get()).Detach();
    }

    // Makes `function` the method `M`, before the object is handed out. It takes the arguments that
    // follow the object and returns a result code, or nothing for success; an exception becomes
    // kResultUnexpected. A failure is the thread's last error, which the module reads as that of
    // the object (GetLastErrorInfo).
    template <class M, class Function>
    void Offer(Function function)
    {
        functions_[M::kSlot] = std::make_shared<Function>(std::move(function));
        this->template SetMethod<M>(&Entry<M, Function, typename M::Function>::Call);
    }

    // Makes `object`, which lives as long as this one, what method `M` hands out by its last
    // argument.
    template <class M, class T>
    void OfferObject(PlainHostObject<T>& object)
    {
        Offer<M>([&object](auto... arguments) {
            object.HandOut(std::get<sizeof...(arguments) - 1>(std::make_tuple(arguments...)));
        });
    }

    // Calls the listeners of event `E` in the order of their subscriptions. A subscription that is
    // made or ended meanwhile has no part in it. [ui-thread]
    template <class E, class... Args>
    void Fire(Args... arguments)
    {
        for (const Listener& each : std::vector<Listener>(listeners_)) {
            if (each.slot == E::kSlot && Find(each.cookie) != listeners_.end()) {
                const auto forward = reinterpret_cast<typename E::Forwarder>(each.forwarder);
                forward(arguments..., each.callable);
            }
        }
    }

    // Number of subscriptions to events of the object. [ui-thread]
    std::size_t ListenerCount() const noexcept { return listeners_.size(); }

protected:
    PlainHostObject() { I::Catalogue::ForEach(EventOffer{*this}); }
    ~PlainHostObject()
    {
        for (const Listener& each : listeners_) {
            each.release(each.callable);
        }
    }

private:
    struct Listener {
        std::uint64_t cookie;
        unsigned slot;
        MethodEntry forwarder;
        void (*release)(void* callable);
        void* callable;
    };

    template <class M, class Function, class Signature>
    struct Entry;

    template <class M, class Function, class... Args>
    struct Entry<M, Function, ResultCode (*)(I*, Args...)> {
        static ResultCode Call(I* self, Args... arguments)
        {
            auto& function =
                *static_cast<Function*>(FromInterface(self)->functions_[M::kSlot].get());
            ResultCode code = kResultOk;
            try {
                if constexpr (std::is_void_v<std::invoke_result_t<Function&, Args...>>) {
                    function(arguments...);
                } else {
                    code = function(arguments...);
                }
            } catch (...) {
                code = kResultUnexpected;
            }
            return ReportMethodResult(code, I::kName, M::kName, "", I::kHeader, M::kLine);
        }
    };

    struct EventOffer {
        PlainHostObject& object;

        template <class E>
        void operator()() const noexcept
        {
            if constexpr (E::kSlotCount == 2) {
                object.SetEntry(E::kSlot, reinterpret_cast<MethodEntry>(&Subscribe<E>));
                object.SetEntry(E::kUnsubscribeSlot, reinterpret_cast<MethodEntry>(&Unsubscribe));
            }
        }
    };

    template <class E>
    static std::uint64_t Subscribe(I* self, typename E::Forwarder forwarder,
                                   typename E::ReleaseCallable release, void* callable)
    {
        PlainHostObject& object = *FromInterface(self);
        try {
            object.listeners_.push_back({object.lastCookie_ + 1, E::kSlot,
                                         reinterpret_cast<MethodEntry>(forwarder), release,
                                         callable});
            return ++object.lastCookie_;
        } catch (const std::bad_alloc&) {
            release(callable);
            return 0;
        }
    }
    static ResultCode Unsubscribe(I* self, std::uint64_t cookie)
    {
        auto& listeners = FromInterface(self)->listeners_;
        const auto found = FromInterface(self)->Find(cookie);
        if (found == listeners.end()) {
            return kResultNotFound;
        }
        const Listener ended = *found;
        listeners.erase(found);
        ended.release(ended.callable);
        return kResultOk;
    }

    typename std::vector<Listener>::iterator Find(std::uint64_t cookie)
    {
        return std::find_if(listeners_.begin(), listeners_.end(),
                            [cookie](const Listener& each) { return each.cookie == cookie; });
    }

    std::array<std::shared_ptr<void>, I::Catalogue::kMethodCount> functions_;
    std::vector<Listener> listeners_;
    std::uint64_t lastCookie_ = 0;  // of all events, since subscriptions are ended by cookie alone
};
