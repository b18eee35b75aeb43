// Host interfaces as catalogues, and the one path by which a method of a service object is called.
// An interface header declares each method once, with SO_METHOD, and each event once, with SO_EVENT
// (SOEvent.h), then lists all of them as its `Catalogue`. Nothing else casts a slot, computes an
// offset or knows a table size.
#pragma once

#include "service-common/ServiceObject.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace SODetails {

// No interface has that many slots.
inline constexpr unsigned kSlotLimit = 256;

// How an interface's declarations are found by their slots: each entry `E` declares a static
// `E* DeclaredEntry(SlotTag<slot of E>)`, which is never defined.
template <unsigned Slot>
struct SlotTag {
    static_assert(Slot < kSlotLimit);
};

// Base of a catalogue entry that takes one slot.
template <class I, unsigned Slot, class Signature>
struct MethodDeclaration;

template <class I, unsigned Slot, class... Args>
struct MethodDeclaration<I, Slot, void(Args...)> {
    using Interface = I;
    using Function = ResultCode (*)(I* self, Args... arguments);
    static constexpr unsigned kSlot = Slot;
    static constexpr unsigned kSlotCount = 1;
};

// The entries of one interface. Rejects two that claim the same slot.
template <class... Entries>
struct MethodCatalogue {
    static constexpr std::size_t kEntryCount = sizeof...(Entries);
    static constexpr unsigned kMethodCount = [] {
        unsigned count = 0;
        ((count = Entries::kSlot + Entries::kSlotCount > count
                      ? Entries::kSlot + Entries::kSlotCount
                      : count),
         ...);
        return count;
    }();
    static constexpr bool kSlotsAreDistinct = [] {
        std::array<bool, kMethodCount + 1> taken{};
        bool distinct = true;
        auto claim = [&](unsigned slot, unsigned slotCount) {
            for (unsigned i = slot; i < slot + slotCount; ++i) {
                distinct = distinct && !taken[i];
                taken[i] = true;
            }
        };
        (claim(Entries::kSlot, Entries::kSlotCount), ...);
        return distinct;
    }();
    static_assert(kSlotsAreDistinct, "two entries of this interface stand on the same slot");

    // Calls visitor.template operator()<Entry>() for each entry, in the order of the list.
    template <class Visitor>
    static constexpr void ForEach(Visitor&& visitor)
    {
        (visitor.template operator()<Entries>(), ...);
    }
};

template <class I, unsigned Slot, class = void>
inline constexpr bool kDeclaresEntry = false;
template <class I, unsigned Slot>
inline constexpr bool
    kDeclaresEntry<I, Slot, std::void_t<decltype(I::DeclaredEntry(SlotTag<Slot>()))>> = true;

template <class I, unsigned... Slots>
constexpr std::size_t CountDeclarations(std::integer_sequence<unsigned, Slots...>) noexcept
{
    return (std::size_t{kDeclaresEntry<I, Slots>} + ...);
}

// Whether the catalogue of interface `I` lists everything that `I` declares. Asserted wherever an
// interface is called or implemented.
template <class I>
inline constexpr bool kCatalogueIsComplete =
    CountDeclarations<I>(
        std::make_integer_sequence<unsigned, kSlotLimit>()) == I::Catalogue::kEntryCount;

// Fails to compile for an interface whose catalogue lacks one of its declarations.
template <class I>
constexpr void RequireCompleteCatalogue() noexcept
{
    static_assert(kCatalogueIsComplete<I>,
                  "the interface declares a method or an event that its catalogue does not list");
}

// The entry at `slot` whether the table holds it or not; null object excluded by the caller.
inline MethodEntry RawMethodEntry(const ServiceObject* object, unsigned slot) noexcept
{
    const auto* table = reinterpret_cast<const MethodEntry*>(
        reinterpret_cast<const std::byte*>(object) + kMethodTableOffset);
    return table[slot];
}

// Whether the method table is large enough for `slot`: more than 8 x slot bytes.
inline bool TableHoldsSlot(const ServiceObject* object, unsigned slot) noexcept
{
    return object->methodTableSize > slot * kMethodEntrySize;
}

}  // namespace SODetails

// Declares method `name` of `interface` at `slot`; the remaining arguments are the parameters
// after the object, or `void` where there are none. Inside the interface's struct.
#define SO_METHOD(interface, name, slot, ...)                                                      \
    struct name : SODetails::MethodDeclaration<interface, slot, void(__VA_ARGS__)> {               \
        static constexpr const char* kName = #name;                                                \
        static constexpr unsigned kLine = __LINE__;                                                \
    };                                                                                             \
    static name* DeclaredEntry(SODetails::SlotTag<slot>)

// Outcome of a call that the check rule let pass.
struct CallResult {
    bool called = false;          // false: no object, beyond the table, or a null entry
    ResultCode code = kResultOk;  // as the method returned it

    bool Succeeded() const noexcept { return called && code == kResultOk; }
};

// The check rule: expected codes pass. For another code the object's error record is fetched and
// thrown as ServiceObjectException; an object without that entry, or without a record, is let pass.
void CheckServiceCall(ServiceObject* object, ResultCode code);

// Number of failed calls that were counted on this thread. Its growth tells that a series of calls
// did not get all that it asked for, whether or not that became an exception. CheckServiceCall
// counts, unless the code says that something is not there (IsAbsence); callers of
// CallMethodUnchecked count what matters to them.
std::uint64_t FailedCallCount() noexcept;
void CountFailedCall() noexcept;

// Calls method `M` when the object has it, without looking at the result code.
template <class M, class... Args>
CallResult CallMethodUnchecked(typename M::Interface* object, Args&&... arguments)
{
    SODetails::RequireCompleteCatalogue<typename M::Interface>();
    if (object == nullptr || !SODetails::TableHoldsSlot(object, M::kSlot)) {
        return {};
    }
    const auto method =
        reinterpret_cast<typename M::Function>(SODetails::RawMethodEntry(object, M::kSlot));
    if (method == nullptr) {
        return {};
    }
    return {true, method(object, std::forward<Args>(arguments)...)};
}

// Calls method `M` when the object has it, and applies the check rule to the result.
template <class M, class... Args>
CallResult CallMethod(typename M::Interface* object, Args&&... arguments)
{
    const CallResult result = CallMethodUnchecked<M>(object, std::forward<Args>(arguments)...);
    if (result.called) {
        CheckServiceCall(object, result.code);
    }
    return result;
}

// Whether the object offers method `M`.
template <class M>
bool HasMethod(typename M::Interface* object) noexcept
{
    return object != nullptr && SODetails::TableHoldsSlot(object, M::kSlot) &&
           SODetails::RawMethodEntry(object, M::kSlot) != nullptr;
}
