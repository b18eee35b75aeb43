// What a class needs to be a service object: the method table at its start, and the concrete class
// that ends it with reference count, weak-reference record and end tag. Used by the module's
// interface adapters and by any host that implements interfaces of the catalogue.
#pragma once

#include "service-common/Atom.h"
#include "service-common/ErrorRecord.h"
#include "service-common/NamedMethods.h"
#include "service-common/ServiceMethod.h"
#include "service-common/ServiceObject.h"
#include "service-common/ServiceObjectPtr.h"
#include "service-common/WeakReferenceRecord.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace SODetails {

// Header, method entries, end-of-table tag and type id, as they lie in memory.
template <class I>
struct ServiceObjectTable {
    I header;
    MethodEntry methods[I::Catalogue::kMethodCount];
    char endOfTable[4];
    std::uint32_t typeId;
};

// Id of interface `I`, computed on first use and kept for the life of the module.
template <class I>
std::uint32_t InterfaceId()
{
    static const std::uint32_t id = HashInterfaceName(I::kName);
    return id;
}

// The name of a class as run-time type information records it.
template <class T>
const char* TypeName() noexcept
{
    return typeid(T).name();
}

// Type id of a concrete class: the hash of its type name, of which 8,192 characters are read.
template <class T>
std::uint32_t TypeId()
{
    static const std::uint32_t id = [] {
        constexpr std::size_t kLongestName = 8192;
        const char* name = TypeName<T>();
        const void* end = std::memchr(name, 0, kLongestName);
        const std::size_t length =
            end == nullptr ? kLongestName
                           : static_cast<std::size_t>(static_cast<const char*>(end) - name);
        return CalculateSequenceHash(name, length);
    }();
    return id;
}

// First base of a class that implements interface `I`: the object's table. A class with it must
// have no virtual function, which ServiceObjectCppTheConcrete verifies.
template <class I>
class ServiceObjectBase {
public:
    using InterfaceType = I;

    ServiceObjectBase(const ServiceObjectBase&) = delete;
    ServiceObjectBase& operator=(const ServiceObjectBase&) = delete;

    // The object as the other side sees it. Borrowed.
    I* AsInterface() noexcept { return &table_.header; }

protected:
    ServiceObjectBase()
    {
        RequireCompleteCatalogue<I>();
        static_assert(std::is_standard_layout_v<ServiceObjectTable<I>>);
        constexpr std::size_t kTableSize = I::Catalogue::kMethodCount * kMethodEntrySize;
        static_assert(offsetof(ServiceObjectTable<I>, methods) == kMethodTableOffset);
        static_assert(offsetof(ServiceObjectTable<I>, endOfTable) ==
                      kMethodTableOffset + kTableSize);
        static_assert(offsetof(ServiceObjectTable<I>, typeId) ==
                      kMethodTableOffset + kTableSize + 4);
        static_assert(sizeof(ServiceObjectTable<I>) == kMethodTableOffset + kTableSize + 8);
        table_.header.interfaceId = InterfaceId<I>();
        table_.header.methodTableSize = static_cast<std::uint32_t>(kTableSize);
        table_.header.interfaceName = I::kName;
        std::memcpy(table_.endOfTable, kEndOfTableTag, sizeof kEndOfTableTag);
    }
    ~ServiceObjectBase() = default;

    // Puts the entry of method `M` into its slot.
    template <class M>
    void SetMethod(typename M::Function entry) noexcept
    {
        static_assert(std::is_same_v<typename M::Interface, I>,
                      "the method belongs to another interface than the object implements");
        table_.methods[M::kSlot] = reinterpret_cast<MethodEntry>(entry);
    }

    void SetEntry(unsigned slot, MethodEntry entry) noexcept { table_.methods[slot] = entry; }

    // The base of an object given by its header.
    static ServiceObjectBase* FromHeader(ServiceObject* header) noexcept
    {
        static_assert(std::is_standard_layout_v<ServiceObjectBase>);
        return reinterpret_cast<ServiceObjectBase*>(header);
    }

private:
    template <class T>
    friend class ServiceObjectCppTheConcrete;

    ServiceObjectTable<I> table_{};
};

// The object itself: class `T`, which implements one interface, followed by the reference count, 1
// at first, the weak-reference record and the end-of-object tag.
template <class T>
class ServiceObjectCppTheConcrete final : public T {
    static_assert(!std::is_polymorphic_v<T>,
                  "a service object begins with its table and must have no virtual function");
    static_assert(std::is_base_of_v<ServiceObjectBase<typename T::InterfaceType>, T>,
                  "a service object derives from the adapter of the interface it implements");

public:
    // Makes an object; the handle owns its one reference. Passes on what T's constructor throws.
    template <class... Args>
    static BasicServiceObjectPtr<T> Create(Args&&... arguments)
    {
        auto object = std::unique_ptr<ServiceObjectCppTheConcrete>(
            new ServiceObjectCppTheConcrete(std::forward<Args>(arguments)...));
        return BasicServiceObjectPtr<T>::Adopt(object.release());
    }

private:
    friend std::default_delete<ServiceObjectCppTheConcrete>;

    template <class... Args>
    explicit ServiceObjectCppTheConcrete(Args&&... arguments) : T(std::forward<Args>(arguments)...)
    {
        auto& table = this->table_;
        table.header.AddRef = &AddRefEntry;
        table.header.Release = &ReleaseEntry;
        table.header.GetRefCount = &GetRefCountEntry;
        table.header.GetWeakReference = &GetWeakReferenceEntry;
        table.header.GetLastErrorInfo = &GetLastErrorInfoEntry;
        table.header.CallMethodByName = &CallMethodByNameEntry;
        table.typeId = TypeId<T>();
        std::memcpy(endOfObject_, kEndOfObjectTag, sizeof kEndOfObjectTag);
    }
    ~ServiceObjectCppTheConcrete() = default;

    static ServiceObjectCppTheConcrete* Self(ServiceObject* header) noexcept
    {
        return static_cast<ServiceObjectCppTheConcrete*>(T::FromInterface(header));
    }

    ReferenceCounted Counted() noexcept
    {
        return {this->AsInterface(), referenceCount_, weakReference_, [](ServiceObject* header) {
                    std::default_delete<ServiceObjectCppTheConcrete>()(Self(header));
                }};
    }

    static std::uint32_t AddRefEntry(ServiceObject* self)
    {
        return Self(self)->referenceCount_.fetch_add(1) + 1;
    }
    static std::uint32_t ReleaseEntry(ServiceObject* self)
    {
        return ReleaseReference(Self(self)->Counted());
    }
    static std::uint32_t GetRefCountEntry(ServiceObject* self)
    {
        return Self(self)->referenceCount_.load();
    }
    static ResultCode GetWeakReferenceEntry(ServiceObject* self, WeakReferenceRecord** record)
    {
        return HandOutWeakReference(Self(self)->Counted(), record);
    }
    static ResultCode GetLastErrorInfoEntry(ServiceObject*, ErrorInfo* record,
                                            ServiceObject** errorObject)
    {
        return ReadThreadLastError(record, errorObject);
    }
    static ResultCode CallMethodByNameEntry(ServiceObject* self, const char* name, ...)
    {
        std::va_list list;
        va_start(list, name);
        ArgumentReader arguments(list);
        va_end(list);
        return CallNamedMethod(self, TypeId<T>(), name, arguments);
    }

    std::atomic<std::uint32_t> referenceCount_ = 1;
    std::atomic<WeakReferenceRecord*> weakReference_ = nullptr;
    char endOfObject_[4];
};

}  // namespace SODetails
