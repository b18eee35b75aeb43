// A service object of the tool's host. Its memory is laid out by numbers, its entries watch how
// they are called: beyond the table, without a meaning, after the object's death.
#pragma once

#include "Contract.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace Conformance {

class Host;
struct HostObject;

using AnyFunction = void (*)();

// What the host saw the module do, of all its objects. [any-thread]
class Witness {
public:
    struct Subscription {
        HostObject* source;
        unsigned slot;
        AnyFunction forwarder;
        void (*release)(void* callable);
        void* callable;
        bool ended = false;
    };

    // Something that the contract forbids.
    void Violation(const std::string& text);
    std::vector<std::string> Violations() const;

    // The cookie fills 64 bits.
    std::uint64_t Subscribe(const Subscription& subscription);
    void Unsubscribe(HostObject* source, unsigned slot, std::uint64_t cookie);
    std::vector<Subscription> Subscriptions() const;
    // What the death of a source entails: frees the callables of its subscriptions.
    void FreeCallablesOf(const HostObject* source);

    // Whether subscriptions are refused: the callable is freed, the cookie is 0.
    bool refuses = false;

private:
    mutable std::mutex mutex_;
    std::vector<std::string> violations_;
    std::vector<Subscription> subscriptions_;
};

struct WeakRecordImage {
    AnyFunction entries[5];
    std::atomic<std::uint32_t> holders;
    std::atomic<HostObject*> object;
    std::uint64_t lock;
};
static_assert(offsetof(WeakRecordImage, holders) == kHolderCountAt);
static_assert(offsetof(WeakRecordImage, object) == kBackPointerAt);

struct HostObject {
    static constexpr unsigned kMostMethods = 208;

    // As the module sees it. The end-of-table tag stands in the place of the entry behind the last.
    std::uint32_t interfaceId;
    std::uint32_t tableSize;
    const char* interfaceName;
    AnyFunction common[6];
    AnyFunction entries[kMostMethods];

    // The tool's own.
    Host* host;
    Witness* witness;
    std::atomic<std::uint32_t> references;
    std::uint32_t ownReferences;  // that the host holds, and that are left at the end
    WeakRecordImage weak;
    std::atomic<std::uint32_t> calls[kMostMethods];
    // Answer of one slot instead of its own, and the record that GetLastErrorInfo has then.
    unsigned failingSlot;
    std::uint32_t failure;
    const ErrorWords* error;
    HostObject* errorObject;
    std::atomic<std::uint32_t> errorsAsked;

    // Makes an object of a table of `methods` whose entries are all without a meaning.
    void Init(Host& itsHost, Witness& itsWitness, const char* name, unsigned methods);

    // Gives a slot its entry: notes the call, then answers what the function does, or 0.
    template <unsigned Slot, class Function>
    void Method(Function);
    // Gives the subscribe and unsubscribe entries of events their meaning. Both are called whatever
    // the table's size.
    template <unsigned... Slots>
    void Events()
    {
        (Event<Slots>(), ...);
    }

    HostObject* Retained();
    void Release();

    // Notes a call of a method; true when the slot is told to fail.
    bool Enter(unsigned slot);
    void EnterEvent(unsigned slot);

private:
    template <unsigned Slot>
    void Event();
};
static_assert(offsetof(HostObject, common) == kAddRefAt);
static_assert(offsetof(HostObject, entries) == kMethodsAt);

template <class Function>
AnyFunction Erased(Function* function)
{
    return reinterpret_cast<AnyFunction>(function);
}

template <unsigned Slot, class Function, class Signature>
struct HostMethod;

template <unsigned Slot, class Function, class R, class... Args>
struct HostMethod<Slot, Function, R (Function::*)(HostObject&, Args...) const> {
    static std::uint32_t Call(HostObject* self, Args... arguments)
    {
        if (self->Enter(Slot)) {
            return self->failure;
        }
        if constexpr (std::is_void_v<R>) {
            Function{}(*self, arguments...);
            return kResultOk;
        } else {
            return Function{}(*self, arguments...);
        }
    }
};

template <unsigned Slot, class Function>
void HostObject::Method(Function)
{
    entries[Slot] = Erased(&HostMethod<Slot, Function, decltype(&Function::operator())>::Call);
}

template <unsigned Slot>
void HostObject::Event()
{
    entries[Slot] = Erased(
        +[](HostObject* self, AnyFunction forwarder, void (*release)(void*), void* callable) {
            self->EnterEvent(Slot);
            return self->witness->Subscribe({self, Slot, forwarder, release, callable});
        });
    entries[Slot + 1] = Erased(+[](HostObject* self, std::uint64_t cookie) {
        self->EnterEvent(Slot + 1);
        self->witness->Unsubscribe(self, Slot, cookie);
        return std::uint32_t{0};
    });
}

}  // namespace Conformance
