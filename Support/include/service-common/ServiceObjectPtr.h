// Owning and weak handles to service objects. [any-thread]
#pragma once

#include "service-common/ServiceObject.h"
#include "service-common/WeakReferenceRecord.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace SODetails {

// The header of an object given by its interface, or by the class that implements it.
template <class T>
ServiceObject* HeaderOf(T* object) noexcept
{
    if constexpr (std::is_base_of_v<ServiceObject, T>) {
        return object;
    } else {
        return object == nullptr ? nullptr : object->AsInterface();
    }
}

// The reverse.
template <class T>
T* FromHeader(ServiceObject* header) noexcept
{
    if constexpr (std::is_base_of_v<ServiceObject, T>) {
        return static_cast<T*>(header);
    } else {
        return header == nullptr ? nullptr : T::FromInterface(header);
    }
}

}  // namespace SODetails

// Owns one reference to a service object, or is empty. `T` is an interface struct or a class that
// implements one (SODetails::ServiceObjectBase). Copying adds a reference, destruction releases
// it. Never fails.
template <class T>
class BasicServiceObjectPtr {
public:
    BasicServiceObjectPtr() noexcept = default;
    BasicServiceObjectPtr(std::nullptr_t) noexcept {}  // NOLINT: an empty handle
    BasicServiceObjectPtr(const BasicServiceObjectPtr& other) noexcept
        : BasicServiceObjectPtr(Retain(other.object_))
    {
    }
    BasicServiceObjectPtr(BasicServiceObjectPtr&& other) noexcept
        : object_(std::exchange(other.object_, nullptr))
    {
    }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    // NOLINTNEXTLINE: as pointers convert
    BasicServiceObjectPtr(const BasicServiceObjectPtr<U>& other) noexcept
        : BasicServiceObjectPtr(Retain(other.Get()))
    {
    }
    ~BasicServiceObjectPtr() { Reset(); }

    BasicServiceObjectPtr& operator=(BasicServiceObjectPtr other) noexcept
    {
        std::swap(object_, other.object_);
        return *this;
    }

    // Takes over the caller's reference.
    static BasicServiceObjectPtr Adopt(T* object) noexcept
    {
        BasicServiceObjectPtr result;
        result.object_ = object;
        return result;
    }

    // Adds a reference of its own.
    static BasicServiceObjectPtr Retain(T* object) noexcept
    {
        ServiceObject* header = SODetails::HeaderOf(object);
        if (header != nullptr && header->AddRef != nullptr) {
            header->AddRef(header);
        }
        return Adopt(object);
    }

    T* Get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Releases the reference held; the handle is empty before the object's Release is called.
    void Reset() noexcept
    {
        ServiceObject* header = SODetails::HeaderOf(std::exchange(object_, nullptr));
        if (header != nullptr && header->Release != nullptr) {
            header->Release(header);
        }
    }

    // Gives the reference to the caller and leaves the handle empty.
    [[nodiscard]] T* Detach() noexcept { return std::exchange(object_, nullptr); }

    // Empties the handle and gives the address that a call stores an owned object at.
    [[nodiscard]] T** Receive() noexcept
    {
        Reset();
        return &object_;
    }

    friend bool operator==(const BasicServiceObjectPtr& left,
                           const BasicServiceObjectPtr& right) noexcept
    {
        return left.object_ == right.object_;
    }

private:
    T* object_ = nullptr;
};

// Weak handle to a service object through its weak-reference record: does not keep the object
// alive and may outlive it. The record pointer is read and written with sequential consistency,
// so that a handle may be destroyed on another thread than the one that made it.
template <class T = ServiceObject>
class WeakServiceObjectPtr {
public:
    WeakServiceObjectPtr() noexcept = default;

    // Empty when `object` is null, lacks the entry or hands out no record.
    explicit WeakServiceObjectPtr(T* object) noexcept
    {
        ServiceObject* header = SODetails::HeaderOf(object);
        WeakReferenceRecord* record = nullptr;
        if (header != nullptr && header->GetWeakReference != nullptr) {
            header->GetWeakReference(header, &record);
        }
        record_.store(record);
    }
    // As the constructor, where an empty handle would be taken for a dead object. Throws
    // std::bad_alloc when the object has weak references and does not hand one out.
    static WeakServiceObjectPtr Require(T* object)
    {
        WeakServiceObjectPtr made(object);
        ServiceObject* header = SODetails::HeaderOf(object);
        if (made.IsEmpty() && header != nullptr && header->GetWeakReference != nullptr) {
            throw std::bad_alloc();
        }
        return made;
    }
    // A copy of a handle whose object died is empty.
    WeakServiceObjectPtr(const WeakServiceObjectPtr& other) noexcept
        : WeakServiceObjectPtr(other.Lock().Get())
    {
    }
    WeakServiceObjectPtr(WeakServiceObjectPtr&& other) noexcept
        : record_(other.record_.exchange(nullptr))
    {
    }
    ~WeakServiceObjectPtr() { Reset(); }

    WeakServiceObjectPtr& operator=(WeakServiceObjectPtr other) noexcept
    {
        other.record_.store(record_.exchange(other.record_.load()));
        return *this;
    }

    // The object, or an empty handle when there is none or it died.
    BasicServiceObjectPtr<T> Lock() const noexcept
    {
        WeakReferenceRecord* record = record_.load();
        if (record == nullptr || !record->functions.IsAlive(record)) {
            return nullptr;
        }
        return BasicServiceObjectPtr<T>::Adopt(
            SODetails::FromHeader<T>(record->functions.Lock(record)));
    }

    // Drops the hold on the record; the handle is empty afterwards.
    void Reset() noexcept
    {
        WeakReferenceRecord* record = record_.exchange(nullptr);
        if (record != nullptr) {
            record->functions.ReleaseHolder(record);
        }
    }

    bool IsEmpty() const noexcept { return record_.load() == nullptr; }

private:
    std::atomic<WeakReferenceRecord*> record_ = nullptr;
};
static_assert(sizeof(WeakServiceObjectPtr<>) == sizeof(void*));
