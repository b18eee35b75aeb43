// The memory contract of every object that module and host exchange. An object begins with the
// 64-byte header declared here; its interface's method entries follow, 8 bytes each, then the
// end-of-table tag and the type id (SODetails::ServiceObjectTable). Both sides read and write the
// same bytes; nothing virtual, nothing packed. 64-bit pointers, little-endian.
#pragma once

#include "service-common/ResultCodes.h"

#include <cstddef>
#include <cstdint>

struct ServiceObject;
struct WeakReferenceRecord;

// What GetLastErrorInfo hands out: five 64-bit words. The texts are borrowed: they stand until
// the thread's next error in that module.
struct ErrorInfo {
    std::uint64_t code;
    const char16_t* message;  // UTF-16, zero-terminated
    const char* function;     // 8-bit, zero-terminated
    const char* file;
    std::uint64_t line;
};
static_assert(sizeof(ErrorInfo) == 40);

// Any method entry, cast back to its true signature by the one call path (ServiceMethod.h).
using MethodEntry = void (*)();
static_assert(sizeof(MethodEntry) == 8);

struct ServiceObject {
    std::uint32_t interfaceId;      // CalculateSequenceHash of the interface name; never 0
    std::uint32_t methodTableSize;  // bytes: 8 x number of methods
    const char* interfaceName;      // 8-bit, static

    // The new count. [any-thread]
    std::uint32_t (*AddRef)(ServiceObject* self);
    // The remaining count; the object is destroyed when it falls below 1. [any-thread]
    std::uint32_t (*Release)(ServiceObject* self);
    std::uint32_t (*GetRefCount)(ServiceObject* self);
    // Hands out the object's weak-reference record with one holder added for the caller, making
    // it on first use. Fails with 3 for a null out parameter. [any-thread]
    ResultCode (*GetWeakReference)(ServiceObject* self, WeakReferenceRecord** record);
    // The calling thread's last error in the object's module: 0 when there is one, 8 and a zeroed
    // record when not, 3 when `record` is null. `errorObject` may be null; it receives an owned
    // object that describes the error, or null.
    ResultCode (*GetLastErrorInfo)(ServiceObject* self, ErrorInfo* record,
                                   ServiceObject** errorObject);
    // Calls the method of that name with the arguments that follow, each in the type of the
    // method's declaration after the default argument promotions. 8 when the object has no method
    // of that name, 3 for a null name.
    ResultCode (*CallMethodByName)(ServiceObject* self, const char* name, ...);
};
static_assert(offsetof(ServiceObject, interfaceId) == 0);
static_assert(offsetof(ServiceObject, methodTableSize) == 4);
static_assert(offsetof(ServiceObject, interfaceName) == 8);
static_assert(offsetof(ServiceObject, AddRef) == 16);
static_assert(offsetof(ServiceObject, Release) == 24);
static_assert(offsetof(ServiceObject, GetRefCount) == 32);
static_assert(offsetof(ServiceObject, GetWeakReference) == 40);
static_assert(offsetof(ServiceObject, GetLastErrorInfo) == 48);
static_assert(offsetof(ServiceObject, CallMethodByName) == 56);
static_assert(sizeof(ServiceObject) == 64);

inline constexpr std::size_t kMethodTableOffset = sizeof(ServiceObject);
inline constexpr std::size_t kMethodEntrySize = sizeof(MethodEntry);
inline constexpr char kEndOfTableTag[4] = {'E', 'O', 'F', 'T'};
inline constexpr char kEndOfObjectTag[4] = {'E', 'O', 'S', 'O'};

// The validity test takes a method table of this size or more for damage.
inline constexpr std::uint32_t kImplausibleMethodTableSize = 377;

// Validity test of a pointer received from the other side: 2 when null; 4 when the interface id is
// 0 or not that of `interfaceName`; 5 when the table is implausibly large or the end-of-table tag
// is not where the table size puts it; else 0. Never fails otherwise. [any-thread]
ResultCode CheckServiceObject(const ServiceObject* object, const char* interfaceName);

// Id of an interface: the hash of its name. [any-thread]
std::uint32_t HashInterfaceName(const char* interfaceName);
