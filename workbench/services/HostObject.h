// Common base of the host's service objects: method tables filled from the interface's catalogue,
// with member functions for methods and event sources for events, and failures translated to result
// codes with an error record.
#pragma once

#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceObjectImplementation.h"
#include "services/EventSource.h"
#include "services/LiveObjects.h"
#include "services/ModuleBoundary.h"

#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Workbench {

// Fails the running method with `code`; `message` (UTF-8) goes into the thread's error record.
[[noreturn]] void FailCall(ResultCode code, std::string_view message);

namespace Details {

template <class E>
inline constexpr bool kIsEvent = requires
{
    E::kUnsubscribeSlot;
};

template <class E, bool IsEvent = kIsEvent<E>>
struct SourceTuple {
    using Type = std::tuple<>;
};
template <class E>
struct SourceTuple<E, true> {
    using Type = std::tuple<EventSource<E>>;
};

template <class Catalogue>
struct SourcesOf;
template <class... Entries>
struct SourcesOf<SODetails::MethodCatalogue<Entries...>> {
    using Type = decltype(std::tuple_cat(std::declval<typename SourceTuple<Entries>::Type>()...));
};

// Stores the current exception as the thread's last error and returns its code. To be called inside
// a catch block.
ResultCode RecordCurrentException(const char* interfaceName, const char* methodName,
                                  const char* header, unsigned line) noexcept;

}  // namespace Details

// Base of class `T`, which implements interface `I`. Every event of the catalogue is offered; `T`
// offers its methods in its constructor.
template <class T, class I>
class HostObject : public SODetails::ServiceObjectBase<I> {
public:
    // A new object; the handle owns its one reference.
    template <class... Args>
    static BasicServiceObjectPtr<T> Make(Args&&... arguments)
    {
        return SODetails::ServiceObjectCppTheConcrete<T>::Create(std::forward<Args>(arguments)...);
    }

    static T* FromInterface(ServiceObject* header) noexcept
    {
        return static_cast<T*>(static_cast<HostObject*>(HostObject::FromHeader(header)));
    }

    // The source of an event of the interface.
    template <class E>
    EventSource<E>& Event() noexcept
    {
        return std::get<EventSource<E>>(sources_);
    }

protected:
    HostObject()
    {
        LiveObjectCounterOf<I>().Add(1);
        I::Catalogue::ForEach(EventOffer{*this});
    }
    ~HostObject() { LiveObjectCounterOf<I>().Add(-1); }

    // Installs member function `Member` of `T` as method `M`. It takes the method's arguments and
    // returns a result code, or void for success.
    template <class M, auto Member>
    void Offer() noexcept
    {
        this->template SetMethod<M>(&Entry<M, Member, typename M::Function>::Call);
    }

private:
    template <class M, auto Member, class Function>
    struct Entry;

    template <class M, auto Member, class... Args>
    struct Entry<M, Member, ResultCode (*)(I*, Args...)> {
        static ResultCode Call(I* self, Args... arguments)
        {
            if (self == nullptr) {
                return kResultNullPointer;
            }
            if (const CallOutcome outcome = OutcomeOfCall(I::kName, M::kName);
                outcome != CallOutcome::kPasses) {
                return ResultOfOutcome(outcome);
            }
            const OnSide host(Side::kHost);
            try {
                ResultCode code = kResultOk;
                if constexpr (std::is_void_v<decltype((FromInterface(self)->*Member)(
                                  arguments...))>) {
                    (FromInterface(self)->*Member)(arguments...);
                } else {
                    code = (FromInterface(self)->*Member)(arguments...);
                }
                return IsExpectedResult(code) ? code
                                              : ReportMethodResult(code, I::kName, M::kName,
                                                                   M::kName, I::kHeader, M::kLine);
            } catch (...) {
                return Details::RecordCurrentException(I::kName, M::kName, I::kHeader, M::kLine);
            }
        }
    };

    template <class E, class Callable>
    struct EventEntries;

    template <class E, class... Args>
    struct EventEntries<E, std::function<void(Args...)>> {
        static std::uint64_t Subscribe(I* self, typename E::Forwarder forwarder,
                                       typename E::ReleaseCallable release, void* callable)
        {
            const CallOutcome outcome = OutcomeOfCall(I::kName, E::kName);
            const OnSide host(Side::kHost);
            if (outcome != CallOutcome::kPasses) {
                release(callable);
                ResultOfOutcome(outcome);
                return 0;
            }
            return FromInterface(self)->template Event<E>().Subscribe(forwarder, release, callable);
        }
        static ResultCode Unsubscribe(I* self, std::uint64_t cookie)
        {
            const OnSide host(Side::kHost);
            return FromInterface(self)->template Event<E>().Unsubscribe(cookie) ? kResultOk
                                                                                : kResultNotFound;
        }
    };

    struct EventOffer {
        HostObject& object;

        template <class Declaration>
        void operator()() const noexcept
        {
            if constexpr (Details::kIsEvent<Declaration>) {
                using Entries = EventEntries<Declaration, typename Declaration::Callable>;
                object.SetEntry(Declaration::kSlot,
                                reinterpret_cast<MethodEntry>(&Entries::Subscribe));
                object.SetEntry(Declaration::kUnsubscribeSlot,
                                reinterpret_cast<MethodEntry>(&Entries::Unsubscribe));
            }
        }
    };

    typename Details::SourcesOf<typename I::Catalogue>::Type sources_;
};

// Stores an object in an out parameter, with a reference for the caller.
template <class T, class I>
void HandOut(const BasicServiceObjectPtr<T>& object, I** out) noexcept
{
    BasicServiceObjectPtr<T> reference = object;
    *out = static_cast<I*>(SODetails::HeaderOf(reference.Detach()));
}

}  // namespace Workbench
