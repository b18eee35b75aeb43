// The module-wide registry of service objects that a host may create by atom, and the reflection
// table that lists them. The registry is built by static initialisers and does not change later;
// both are used on the host's UI thread only. [ui-thread]
#pragma once

#include "service-common/Atom.h"
#include "service-common/ServiceObjectPtr.h"

#include <cstddef>
#include <cstdint>
#include <functional>

// One entry of the reflection table as the host reads it. Borrowed until the module is unloaded.
struct ServiceObjectInfo {
    Atom atom;  // as the registry held it when the table was built; 0xFFFFFFFF: not resolved yet
    std::uint32_t reserved;  // 0
    const char* name;        // 8-bit, zero-terminated, static
};
static_assert(sizeof(ServiceObjectInfo) == 16);
static_assert(offsetof(ServiceObjectInfo, name) == 8);

namespace SODetails {

// A creatable service object. Define one with static storage per public class; its constructor
// pushes it at the head of the registry. `name` is static; `factory` gives an owned new object, or
// an empty handle when it fails.
class ServiceObjectRegistration {
public:
    using Factory = std::function<BasicServiceObjectPtr<ServiceObject>()>;

    ServiceObjectRegistration(const char* name, Factory factory);
    ServiceObjectRegistration(const ServiceObjectRegistration&) = delete;
    ServiceObjectRegistration& operator=(const ServiceObjectRegistration&) = delete;
    ~ServiceObjectRegistration();

private:
    friend ResultCode ReflectRegisteredObjects(const ServiceObjectInfo**, std::uint32_t*);
    friend ResultCode CreateRegisteredObject(Atom, ServiceObject**);

    const char* name_;
    Atom atom_ = kAtomUnresolved;
    Factory factory_;
    ServiceObjectRegistration* next_;
};

// Body of the export ReflectServiceObjectInfo: the array of public objects, built on the first
// call, borrowed until the module is unloaded, and its count. 3 for a null out parameter (nothing
// is written then); kResultNoPublicObjects with null and 0 when the registry is empty.
ResultCode ReflectRegisteredObjects(const ServiceObjectInfo** entries, std::uint32_t* count);

// Body of the export CreateServiceObject: a new object, owned by the caller. 3 for the atom 0 or a
// null out parameter; kResultServiceNotInModule; kResultFactoryFailed.
ResultCode CreateRegisteredObject(Atom atom, ServiceObject** object);

}  // namespace SODetails
