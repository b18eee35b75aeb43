#include "HostObject.h"

#include "PlatformLibraries.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace Conformance {

namespace {

constexpr std::uint64_t kFirstCookie = 0xC0000000'00000001u;

std::uint32_t AddRef(HostObject* self)
{
    const std::uint32_t count = ++self->references;
    if (count == 1) {
        self->witness->Violation(std::string(self->interfaceName) + " got a reference when dead");
    }
    return count;
}

std::uint32_t Release(HostObject* self)
{
    const std::uint32_t before = self->references.fetch_sub(1);
    if (before == 0) {
        self->references = 0;
        self->witness->Violation(std::string(self->interfaceName) + " was released when dead");
    } else if (before == 1) {
        self->weak.object = nullptr;
    }
    return before == 0 ? 0 : before - 1;
}

std::uint32_t GetRefCount(HostObject* self)
{
    return self->references;
}

std::uint32_t GetWeakReference(HostObject* self, WeakRecordImage** record)
{
    if (record == nullptr) {
        return kResultNullArgument;
    }
    ++self->weak.holders;
    *record = &self->weak;
    return kResultOk;
}

std::uint32_t GetLastErrorInfo(HostObject* self, ErrorWords* words, HostObject** errorObject)
{
    ++self->errorsAsked;
    *words = self->error == nullptr ? ErrorWords{} : *self->error;
    if (errorObject != nullptr) {
        *errorObject = self->errorObject == nullptr ? nullptr : self->errorObject->Retained();
    }
    return self->error == nullptr ? kResultNotFound : kResultOk;
}

std::uint32_t CallMethodByName(HostObject* self, const char* name, ...)
{
    self->witness->Violation(std::string(self->interfaceName) + " was called by name: " + name);
    return kResultNotFound;
}

// Entries of a weak-reference record; the first and the third are not the module's to call.
void FillWeakRecord(WeakRecordImage& record, HostObject& object)
{
    record.entries[1] =
        Erased(+[](WeakRecordImage* self) -> std::uint32_t { return --self->holders; });
    record.entries[3] =
        Erased(+[](WeakRecordImage* self) { return self->object.load() != nullptr; });
    record.entries[4] = Erased(+[](WeakRecordImage* self) {
        HostObject* const living = self->object;
        return living == nullptr ? nullptr : living->Retained();
    });
    record.holders = 1;
    record.object = &object;
}

template <unsigned Slot>
std::uint32_t Meaningless(HostObject* self)
{
    self->witness->Violation(std::string(self->interfaceName) + " slot " + std::to_string(Slot) +
                             " was called, which has no meaning");
    return kResultDeclined;
}

template <unsigned... Slots>
void FillMeaningless(HostObject& object, std::integer_sequence<unsigned, Slots...>)
{
    ((object.entries[Slots] = Erased(Meaningless<Slots>)), ...);
}

}  // namespace

void Witness::Violation(const std::string& text)
{
    const std::lock_guard lock(mutex_);
    violations_.push_back(text);
}

std::vector<std::string> Witness::Violations() const
{
    const std::lock_guard lock(mutex_);
    return violations_;
}

std::uint64_t Witness::Subscribe(const Subscription& subscription)
{
    if (refuses) {
        subscription.release(subscription.callable);
        return 0;
    }
    const std::lock_guard lock(mutex_);
    subscriptions_.push_back(subscription);
    return kFirstCookie + subscriptions_.size() - 1;
}

void Witness::Unsubscribe(HostObject* source, unsigned slot, std::uint64_t cookie)
{
    Subscription ended{};
    {
        const std::lock_guard lock(mutex_);
        const std::uint64_t index = cookie - kFirstCookie;
        if (index < subscriptions_.size() && !subscriptions_[index].ended) {
            subscriptions_[index].ended = true;
            ended = subscriptions_[index];
        }
    }
    if (ended.source != source || ended.slot != slot) {
        Violation(std::string(source->interfaceName) + " slot " + std::to_string(slot + 1) +
                  " was given the cookie of no subscription of its own");
    }
    if (ended.release != nullptr) {
        ended.release(ended.callable);
    }
}

void Witness::FreeCallablesOf(const HostObject* source)
{
    for (const Subscription& each : Subscriptions()) {
        if (each.source == source && !each.ended) {
            each.release(each.callable);
        }
    }
}

std::vector<Witness::Subscription> Witness::Subscriptions() const
{
    const std::lock_guard lock(mutex_);
    return subscriptions_;
}

void HostObject::Init(Host& itsHost, Witness& itsWitness, const char* name, unsigned methods)
{
    interfaceId = HashOf(name);
    tableSize = 8 * methods;
    interfaceName = name;
    const AnyFunction entriesOfAll[] = {
        Erased(Conformance::AddRef),           Erased(Conformance::Release),
        Erased(Conformance::GetRefCount),      Erased(Conformance::GetWeakReference),
        Erased(Conformance::GetLastErrorInfo), Erased(Conformance::CallMethodByName)};
    std::copy(std::begin(entriesOfAll), std::end(entriesOfAll), common);
    FillMeaningless(*this, std::make_integer_sequence<unsigned, kMostMethods>());
    std::memcpy(&entries[methods], kEndOfTable, 4);
    host = &itsHost;
    witness = &itsWitness;
    references = 1;
    ownReferences = 1;
    FillWeakRecord(weak, *this);
}

HostObject* HostObject::Retained()
{
    Conformance::AddRef(this);
    return this;
}

void HostObject::Release()
{
    Conformance::Release(this);
}

bool HostObject::Enter(unsigned slot)
{
    EnterEvent(slot);
    if (8 * slot >= tableSize) {
        witness->Violation(std::string(interfaceName) + " slot " + std::to_string(slot) +
                           " was called beyond a table of " + std::to_string(tableSize) + " bytes");
    }
    return failure != kResultOk && failingSlot == slot;
}

void HostObject::EnterEvent(unsigned slot)
{
    ++calls[slot];
    if (references == 0) {
        witness->Violation(std::string(interfaceName) + " slot " + std::to_string(slot) +
                           " was called when dead");
    }
}

}  // namespace Conformance
