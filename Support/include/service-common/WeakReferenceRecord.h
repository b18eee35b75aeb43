// The weak-reference record: what stays of a service object after it died, for as long as anybody
// holds the record. Used by implementations of service objects; others go through
// WeakServiceObjectPtr, which needs the function table only. [any-thread]
#pragma once

#include "service-common/ServiceObject.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// Function table of a record, at its start. A holder that was handed the record calls
// `ReleaseHolder` once.
struct WeakReferenceFunctions {
    // Adds a holder; the new count.
    std::uint32_t (*AddHolder)(WeakReferenceRecord* record);
    // Drops a holder; the remaining count. The record is freed at 0.
    std::uint32_t (*ReleaseHolder)(WeakReferenceRecord* record);
    // The number of holders, which may have changed since.
    std::uint32_t (*GetHolderCount)(WeakReferenceRecord* record);
    // Whether the object lives still.
    bool (*IsAlive)(WeakReferenceRecord* record);
    // The object with one reference added for the caller, or null when it died.
    ServiceObject* (*Lock)(WeakReferenceRecord* record);
};
static_assert(sizeof(WeakReferenceFunctions) == 40);

// A record as this SDK makes it. Only the function table is for the other side.
struct WeakReferenceRecord {
    WeakReferenceFunctions functions;        // the first five entries
    std::atomic<std::uint32_t> holderCount;  // starts at 1, the object's own hold
    std::atomic<ServiceObject*> object;      // null once the object died
    std::atomic<std::uint32_t> spinLock;     // 0 free, 1 taken
};
static_assert(sizeof(WeakReferenceRecord) == 64);
static_assert(offsetof(WeakReferenceRecord, holderCount) == 40);
static_assert(offsetof(WeakReferenceRecord, object) == 48);
static_assert(offsetof(WeakReferenceRecord, spinLock) == 56);
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
static_assert(std::atomic<ServiceObject*>::is_always_lock_free);

namespace SODetails {

// The reference count and weak-reference rules of a service object, kept apart from its type:
// `object`, its count and its weak-reference pointer, and how it is destroyed.
struct ReferenceCounted {
    ServiceObject* object;
    std::atomic<std::uint32_t>& referenceCount;
    std::atomic<WeakReferenceRecord*>& weakReference;
    void (*destroy)(ServiceObject* object);
};

// Decrements; destroys the object unless it was revived in between. The remaining count.
std::uint32_t ReleaseReference(const ReferenceCounted& counted);

// See ServiceObject::GetWeakReference. May be called while the object is being destroyed; the
// record is then that of a dead object. Fails with 3 for a null argument, and with
// kResultUnexpected when memory is short.
ResultCode HandOutWeakReference(const ReferenceCounted& counted, WeakReferenceRecord** record);

// Guards a record's spin lock: retries at once four times, then pauses the processor, then yields
// the time slice, then sleeps a millisecond each time.
class SpinLockGuard {
public:
    explicit SpinLockGuard(std::atomic<std::uint32_t>& flag) noexcept;
    ~SpinLockGuard();
    SpinLockGuard(const SpinLockGuard&) = delete;
    SpinLockGuard& operator=(const SpinLockGuard&) = delete;

private:
    std::atomic<std::uint32_t>& flag_;
};

}  // namespace SODetails
