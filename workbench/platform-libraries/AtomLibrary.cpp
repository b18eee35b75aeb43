#include "platform-libraries/AtomLibraryHost.h"
#include "platform/LibraryExport.h"
#include "service-common/Atom.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

std::uint32_t HashBytes(const void* data, std::size_t length) noexcept
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::uint32_t hash = 2166136261u;
    for (std::size_t i = 0; i < length; ++i) {
        hash = (hash ^ bytes[i]) * 16777619u;
    }
    // The plain product spreads the last bytes badly over the upper bits.
    hash ^= hash >> 16;
    hash *= 0x85EBCA6Bu;
    hash ^= hash >> 13;
    hash *= 0xC2B2AE35u;
    hash ^= hash >> 16;
    // 0 marks an object without an interface and must not be an identifier.
    return hash == 0 ? 1 : hash;
}

// Every name that was ever asked for. Entries are never removed, so finding one takes no lock:
// buckets and segments only ever grow at their ends.
class AtomTable {
public:
    Atom Resolve(std::string_view name)
    {
        const std::uint32_t hash = HashBytes(name.data(), name.size());
        std::atomic<Entry*>& bucket = buckets_[hash % kBucketCount];
        Entry* entry = FindIn(bucket, hash, name);
        if (entry == nullptr) {
            const std::lock_guard lock(mutex_);
            entry = FindIn(bucket, hash, name);
            if (entry == nullptr) {
                entry = Add(bucket, hash, name);
            }
        }
        entry->requests.fetch_add(1, std::memory_order_relaxed);
        return entry->atom;
    }

    // Null for an atom that was never made.
    const char* NameOf(Atom atom) const noexcept
    {
        const std::uint32_t index = atom - kFirstAtom;
        if (atom < kFirstAtom || index >= kLargestCount) {
            return nullptr;
        }
        const Segment* segment = segments_[index / kSegmentSize].load(std::memory_order_acquire);
        const Entry* entry = segment == nullptr
                                 ? nullptr
                                 : (*segment)[index % kSegmentSize].load(std::memory_order_acquire);
        return entry == nullptr ? nullptr : entry->name.c_str();
    }

    std::uint64_t CountRequests(std::string_view name) const noexcept
    {
        const std::uint32_t hash = HashBytes(name.data(), name.size());
        const Entry* entry = FindIn(buckets_[hash % kBucketCount], hash, name);
        return entry == nullptr ? 0 : entry->requests.load(std::memory_order_relaxed);
    }

private:
    struct Entry {
        Entry* next;
        std::uint32_t hash;
        Atom atom;
        std::string name;
        std::atomic<std::uint64_t> requests;
    };

    static constexpr Atom kFirstAtom = 0x1000;  // small numbers are none: they turn up by mistake
    static constexpr std::uint32_t kBucketCount = 4096;
    static constexpr std::uint32_t kSegmentSize = 1024;
    static constexpr std::uint32_t kSegmentCount = 4096;
    static constexpr std::uint32_t kLargestCount = kSegmentSize * kSegmentCount;
    using Segment = std::array<std::atomic<Entry*>, kSegmentSize>;

    static Entry* FindIn(const std::atomic<Entry*>& bucket, std::uint32_t hash,
                         std::string_view name) noexcept
    {
        Entry* entry = bucket.load(std::memory_order_acquire);
        while (entry != nullptr && (entry->hash != hash || entry->name != name)) {
            entry = entry->next;
        }
        return entry;
    }

    Entry* Add(std::atomic<Entry*>& bucket, std::uint32_t hash, std::string_view name)
    {
        if (entries_.size() == kLargestCount) {
            throw std::bad_alloc();
        }
        const auto index = static_cast<std::uint32_t>(entries_.size());
        if (index % kSegmentSize == 0) {
            ownedSegments_.push_back(std::make_unique<Segment>());
            segments_[index / kSegmentSize].store(ownedSegments_.back().get(),
                                                  std::memory_order_release);
        }
        auto& entry = entries_.emplace_back();
        try {
            entry.name = name;
        } catch (...) {
            entries_.pop_back();
            throw;
        }
        entry.next = bucket.load(std::memory_order_relaxed);
        entry.hash = hash;
        entry.atom = kFirstAtom + index;
        (*ownedSegments_.back())[index % kSegmentSize].store(&entry, std::memory_order_release);
        bucket.store(&entry, std::memory_order_release);
        return &entry;
    }

    std::array<std::atomic<Entry*>, kBucketCount> buckets_{};
    std::array<std::atomic<Segment*>, kSegmentCount> segments_{};
    std::mutex mutex_;  // guards everything below
    std::deque<Entry> entries_;
    std::vector<std::unique_ptr<Segment>> ownedSegments_;
};

std::atomic<std::uint64_t> g_requestsToRefusal = 0;  // 0: none is refused
std::atomic<std::uint64_t> g_refusedRequests = 0;

bool IsRequestRefused() noexcept
{
    if (g_requestsToRefusal == 0 || --g_requestsToRefusal != 0) {
        return false;
    }
    ++g_refusedRequests;
    return true;
}

// Never destroyed: modules ask for names, and hold them, until the process is gone.
AtomTable& Atoms()
{
    static AtomTable& table = *std::make_unique<AtomTable>().release();
    return table;
}

class SingletonStorage {
public:
    // `size` nothing: find only.
    ResultCode Open(std::string_view name, std::uint32_t dataId, const std::size_t* size,
                    void (*destroy)(void* data), void** data)
    {
        const std::lock_guard lock(mutex_);
        if (!available_) {
            return kResultStorageDestroyed;
        }
        for (const Slot& slot : slots_) {
            if (slot.name == name) {
                if (slot.dataId != dataId || (size != nullptr && *size > slot.size)) {
                    return kResultStaticDataIdMismatch;
                }
                *data = slot.bytes.get();
                return kResultOk;
            }
        }
        if (size == nullptr) {
            return kResultNotFound;
        }
        // An array of bytes is aligned for whatever a module keeps in its slot, and one of no
        // bytes has an address too.
        slots_.push_back(
            {std::string(name), dataId, *size, destroy, std::make_unique<std::byte[]>(*size)});
        *data = slots_.back().bytes.get();
        return kResultOk;
    }

    bool IsAvailable()
    {
        const std::lock_guard lock(mutex_);
        return available_;
    }

    void TearDown()
    {
        std::vector<Slot> slots;
        {
            const std::lock_guard lock(mutex_);
            available_ = false;
            slots = std::exchange(slots_, {});
        }
        // Without the lock: what a slot holds may ask for the storage while it goes.
        while (!slots.empty()) {
            const Slot& youngest = slots.back();
            if (youngest.destroy != nullptr) {
                youngest.destroy(youngest.bytes.get());
            }
            slots.pop_back();
        }
    }

    void Restart()
    {
        TearDown();
        const std::lock_guard lock(mutex_);
        available_ = true;
    }

private:
    struct Slot {
        std::string name;
        std::uint32_t dataId;
        std::size_t size;
        void (*destroy)(void* data);
        std::unique_ptr<std::byte[]> bytes;
    };

    std::mutex mutex_;
    bool available_ = true;
    std::vector<Slot> slots_;
};

SingletonStorage& Storage()
{
    static SingletonStorage& storage = *std::make_unique<SingletonStorage>().release();
    return storage;
}

}  // namespace

extern "C" {

LIBRARY_EXPORT std::uint32_t CalculateSequenceHash(const void* data, std::size_t length)
{
    return HashBytes(data, data == nullptr ? 0 : length);
}

LIBRARY_EXPORT ResultCode VxGetAtomFromString(const char* name, Atom* atom)
{
    if (atom == nullptr) {
        return kResultNullArgument;
    }
    *atom = kAtomNone;
    if (name == nullptr) {
        return kResultNullArgument;
    }
    if (*name == 0) {
        return kResultNotFound;
    }
    if (IsRequestRefused()) {
        return kResultUnexpected;
    }
    try {
        *atom = Atoms().Resolve(name);
        return kResultOk;
    } catch (const std::exception&) {
        return kResultUnexpected;
    }
}

LIBRARY_EXPORT ResultCode VxGetStringFromAtom(Atom atom, const char** name)
{
    if (name == nullptr) {
        return kResultNullArgument;
    }
    *name = Atoms().NameOf(atom);
    return *name == nullptr ? kResultNotFound : kResultOk;
}

LIBRARY_EXPORT ResultCode CreateSingletonStaticData(const char* name, std::uint32_t dataId,
                                                    std::size_t size, void (*destroy)(void* data),
                                                    void** data)
{
    if (data == nullptr) {
        return kResultNullArgument;
    }
    *data = nullptr;
    if (name == nullptr) {
        return kResultNullArgument;
    }
    try {
        return Storage().Open(name, dataId, &size, destroy, data);
    } catch (const std::exception&) {
        return kResultUnexpected;
    }
}

LIBRARY_EXPORT ResultCode GetSingletonStaticData(const char* name, std::uint32_t dataId,
                                                 void** data)
{
    if (data == nullptr) {
        return kResultNullArgument;
    }
    *data = nullptr;
    if (name == nullptr) {
        return kResultNullArgument;
    }
    return Storage().Open(name, dataId, nullptr, nullptr, data);
}

LIBRARY_EXPORT bool IsSingletonStaticDataStorageAvailable()
{
    return Storage().IsAvailable();
}

LIBRARY_EXPORT void VxHostTearDownSingletonStorage()
{
    Storage().TearDown();
}

LIBRARY_EXPORT void VxHostRestartSingletonStorage()
{
    Storage().Restart();
}

LIBRARY_EXPORT std::uint64_t VxHostCountAtomRequests(const char* name)
{
    return name == nullptr ? 0 : Atoms().CountRequests(name);
}

LIBRARY_EXPORT std::uint64_t VxHostRefuseAtomRequest(std::uint64_t number)
{
    g_requestsToRefusal = number;
    return g_refusedRequests.exchange(0);
}

}  // extern "C"
