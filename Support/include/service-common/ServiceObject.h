// The memory contract of every object that module and host exchange. Both sides read and write the
// same bytes; nothing virtual, nothing packed. 64-bit pointers, little-endian. An object begins
// with the 64-byte header declared here (ServiceObject). Behind it stand:
//
// - at offset 64 the method entries of its interface in slot order, 8 bytes each; a slot that is
// not
//   offered is null;
// - at 64 + methodTableSize the end-of-table tag, the bytes "EOFT";
// - at 68 + methodTableSize the type id, 32 bits: the hash of the class's type name;
// - then the class's own members;
// - last, in objects of this SDK, the reference count (32 bits), the weak-reference record
// (pointer,
//   null until it is asked for) and the end-of-object tag, the bytes "EOSO". The other side reads
//   these through the header's entries only.
#pragma once

#include "service-common/ResultCodes.h"

#include <cstddef>
#include <cstdint>

struct ServiceObject;
struct WeakReferenceRecord;

// What GetLastErrorInfo hands out: five 64-bit words. The texts are borrowed: they stand until
// the thread's next error in that module.
struct ErrorInfo {
    std::uint64_t code;       // a result code
    const char16_t* message;  // UTF-16, zero-terminated
    const char* function;     // 8-bit, zero-terminated
    const char* file;         // 8-bit, zero-terminated
    std::uint64_t line;       // 1-based; 0 when unknown
};
static_assert(sizeof(ErrorInfo) == 40);

// Any method entry, cast back to its true signature by the one call path (ServiceMethod.h).
using MethodEntry = void (*)();
static_assert(sizeof(MethodEntry) == 8);

// The header of an object. An object that is handed out comes with one reference, which its
// receiver owns and releases.
struct ServiceObject {
    std::uint32_t interfaceId;      // CalculateSequenceHash of the interface name; never 0
    std::uint32_t methodTableSize;  // bytes: 8 x number of slots
    const char* interfaceName;      // 8-bit, static

    // Adds a reference; the new count. [any-thread]
    std::uint32_t (*AddRef)(ServiceObject* self);
    // Drops a reference; the remaining count. The object is destroyed when it falls below 1.
    // [any-thread]
    std::uint32_t (*Release)(ServiceObject* self);
    // The count, which may have changed since. [any-thread]
    std::uint32_t (*GetRefCount)(ServiceObject* self);
    // Hands out the object's weak-reference record with one holder added for the caller, making
    // it on first use. Fails with 3 for a null out parameter. [any-thread]
    ResultCode (*GetWeakReference)(ServiceObject* self, WeakReferenceRecord** record);
    // The calling thread's last error in the object's module: 0 when there is one, 8 and a zeroed
    // record when not, 3 when `record` is null. `errorObject` may be null; it receives an owned
    // object that describes the error, or null. [any-thread]
    ResultCode (*GetLastErrorInfo)(ServiceObject* self, ErrorInfo* record,
                                   ServiceObject** errorObject);
    // Calls the method of that name with the arguments that follow, each in the type of the
    // method's declaration after the default argument promotions. 8 when the object has no method
    // of that name, 3 for a null name. Called on the thread that the method is called on.
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

// Where the method entries begin, and the bytes of one.
inline constexpr std::size_t kMethodTableOffset = 64;
inline constexpr std::size_t kMethodEntrySize = 8;
static_assert(kMethodTableOffset == sizeof(ServiceObject));
static_assert(kMethodEntrySize == sizeof(MethodEntry));

// Tags behind the method table and at the end of an object, without a terminating zero.
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
