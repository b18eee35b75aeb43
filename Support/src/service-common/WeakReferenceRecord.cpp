#include "service-common/WeakReferenceRecord.h"

#include "platform/Threads.h"

#include <new>

namespace SODetails {
namespace {

constexpr unsigned kImmediateTries = 4;
constexpr unsigned kPausedTries = 16;
constexpr unsigned kYieldingTries = 32;

std::uint32_t AddHolder(WeakReferenceRecord* record)
{
    return record->holderCount.fetch_add(1) + 1;
}

std::uint32_t ReleaseHolder(WeakReferenceRecord* record)
{
    const std::uint32_t remaining = record->holderCount.fetch_sub(1) - 1;
    if (remaining == 0) {
        delete record;
    }
    return remaining;
}

std::uint32_t GetHolderCount(WeakReferenceRecord* record)
{
    return record->holderCount.load();
}

bool IsAlive(WeakReferenceRecord* record)
{
    return record->object.load() != nullptr;
}

ServiceObject* Lock(WeakReferenceRecord* record)
{
    const SpinLockGuard guard(record->spinLock);
    ServiceObject* object = record->object.load();
    if (object != nullptr) {
        object->AddRef(object);
    }
    return object;
}

constexpr WeakReferenceFunctions kFunctions = {&AddHolder, &ReleaseHolder, &GetHolderCount,
                                               &IsAlive, &Lock};

// The record of objects that die without one of their own: a weak reference that is asked for
// while its object dies is that of a dead object. Never freed; its own hold is never given up.
constinit WeakReferenceRecord g_deadRecord{kFunctions, 1, nullptr, 0};

}  // namespace

SpinLockGuard::SpinLockGuard(std::atomic<std::uint32_t>& flag) noexcept : flag_(flag)
{
    for (unsigned tries = 0; flag_.exchange(1) != 0; ++tries) {
        if (tries < kImmediateTries) {
            continue;
        }
        if (tries < kPausedTries) {
            Platform::ProcessorPause();
        } else {
            Platform::SleepMilliseconds(tries < kYieldingTries ? 0 : 1);
        }
    }
}

SpinLockGuard::~SpinLockGuard()
{
    flag_.store(0);
}

std::uint32_t ReleaseReference(const ReferenceCounted& counted)
{
    std::uint32_t count = counted.referenceCount.load();
    while (count > 1) {
        if (counted.referenceCount.compare_exchange_weak(count, count - 1)) {
            return count - 1;
        }
    }
    // The caller's reference is the last one known. Without a record nobody can come by another
    // one, and none is made from here on: an event that still runs on another thread may ask for
    // it.
    WeakReferenceRecord* record = nullptr;
    if (counted.weakReference.compare_exchange_strong(record, &g_deadRecord)) {
        record = &g_deadRecord;
    }
    if (record == &g_deadRecord) {
        const std::uint32_t left = counted.referenceCount.fetch_sub(1) - 1;
        if (left == 0) {
            counted.destroy(counted.object);
        }
        return left;
    }
    // Once the reference is given up, a weak holder may revive the object and drop it for good on
    // another thread: from here on the object may be gone, and only the record, which is held
    // meanwhile, tells.
    AddHolder(record);
    std::uint32_t remaining = counted.referenceCount.fetch_sub(1) - 1;
    if (remaining == 0) {
        bool dead = false;
        {
            const SpinLockGuard guard(record->spinLock);
            if (record->object.load() != nullptr) {
                remaining = counted.referenceCount.load();
                dead = remaining == 0;
                if (dead) {
                    record->object.store(nullptr);
                }
            }
        }
        if (dead) {
            ReleaseHolder(record);  // the object's own hold
            counted.destroy(counted.object);
        }
    }
    ReleaseHolder(record);
    return remaining;
}

ResultCode HandOutWeakReference(const ReferenceCounted& counted, WeakReferenceRecord** record)
{
    if (record == nullptr) {
        return kResultNullArgument;
    }
    *record = nullptr;
    WeakReferenceRecord* current = counted.weakReference.load();
    if (current == nullptr) {
        auto* made = new (std::nothrow) WeakReferenceRecord{kFunctions, 1, counted.object, 0};
        if (made == nullptr) {
            return kResultUnexpected;
        }
        if (counted.weakReference.compare_exchange_strong(current, made)) {
            current = made;
        } else {
            delete made;
        }
    }
    AddHolder(current);
    *record = current;
    return kResultOk;
}

}  // namespace SODetails
