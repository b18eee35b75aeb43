// Service objects of a host for tests, laid out by hand on the memory contract. A fake counts its
// calls and references, keeps error records of its own, and can be made wrong on purpose: its
// table cut short, entries taken out, the error entry missing.
#pragma once

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceMethod.h"
#include "service-common/ServiceObjectPtr.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Fakes {

class FakeObject {
public:
    static constexpr unsigned kSlotCount = 208;  // no interface has more

    FakeObject(const char* interfaceName, unsigned methodCount);
    FakeObject(const FakeObject&) = delete;
    FakeObject& operator=(const FakeObject&) = delete;
    virtual ~FakeObject();

    static FakeObject& Of(ServiceObject* header) noexcept;
    ServiceObject* Header() noexcept { return &memory_.header; }

    // Makes the method table that many bytes long; the end tag moves with it.
    void CutTable(std::uint32_t bytes) noexcept;
    void SetEntry(unsigned slot, MethodEntry entry) noexcept { memory_.entries[slot] = entry; }
    void Bind(unsigned slot, std::shared_ptr<void> state, MethodEntry entry);
    template <class State>
    std::shared_ptr<State> Bound(unsigned slot) const
    {
        return std::static_pointer_cast<State>(bound_[slot]);
    }

    unsigned Calls(unsigned slot) const noexcept { return calls_[slot].load(); }
    void CountCall(unsigned slot) noexcept { calls_[slot].fetch_add(1); }
    std::uint32_t References() const noexcept { return referenceCount_.load(); }

    // What GetLastErrorInfo finds; it is asked `errorRequests` times.
    std::optional<ErrorRecord> error;
    BasicServiceObjectPtr<ServiceObject> errorObject;
    unsigned errorRequests = 0;

    // Fakes that exist now.
    static int Living() noexcept;

private:
    struct Memory {
        ServiceObject header;
        MethodEntry entries[kSlotCount + 1];  // the last one leaves room for the end tag
        FakeObject* owner;
    };
    static_assert(std::is_standard_layout_v<Memory>);

    static ResultCode GetLastErrorInfoEntry(ServiceObject* self, ErrorInfo* record,
                                            ServiceObject** errorObject);
    SODetails::ReferenceCounted Counted() noexcept;

    Memory memory_{};
    std::optional<unsigned> taggedSlot_;  // where the end tag stands
    std::atomic<std::uint32_t> referenceCount_ = 1;
    std::atomic<WeakReferenceRecord*> weakReference_ = nullptr;
    std::array<std::shared_ptr<void>, kSlotCount> bound_;
    std::array<std::atomic<unsigned>, kSlotCount> calls_{};
    std::u16string errorMessage_;
};

// How a method entry finds what the test bound to it.
template <class Function>
struct MethodBinding;

template <class I, class... Args>
struct MethodBinding<ResultCode (*)(I*, Args...)> {
    using Handler = std::function<ResultCode(Args...)>;

    template <unsigned Slot>
    static ResultCode Call(I* self, Args... arguments)
    {
        FakeObject& object = FakeObject::Of(self);
        object.CountCall(Slot);
        const auto handler = object.Bound<Handler>(Slot);
        return (*handler)(arguments...);
    }
};

// Owns one reference to a fake of interface `I`, whose table has all slots and no entries.
template <class I>
class Fake {
public:
    Fake()
    {
        auto object = std::make_unique<FakeObject>(I::kName, I::Catalogue::kMethodCount);
        object_ = BasicServiceObjectPtr<I>::Adopt(static_cast<I*>(object.release()->Header()));
    }

    I* Get() const noexcept { return object_.Get(); }
    FakeObject* operator->() const noexcept { return &FakeObject::Of(object_.Get()); }
    // Gives up the reference; the fake dies when nobody else holds one.
    void Reset() noexcept { object_.Reset(); }
    // A further reference, for a method that hands the fake out as owned.
    I* HandOut() const noexcept { return BasicServiceObjectPtr<I>(object_).Detach(); }

    // Lets `handler` answer calls of method `M`.
    template <class M>
    void On(typename MethodBinding<typename M::Function>::Handler handler) const
    {
        using Binding = MethodBinding<typename M::Function>;
        (*this)->Bind(M::kSlot, std::make_shared<typename Binding::Handler>(std::move(handler)),
                      reinterpret_cast<MethodEntry>(&Binding::template Call<M::kSlot>));
    }
    template <class M>
    unsigned Calls() const noexcept
    {
        return (*this)->Calls(M::kSlot);
    }

private:
    BasicServiceObjectPtr<I> object_;
};

}  // namespace Fakes
