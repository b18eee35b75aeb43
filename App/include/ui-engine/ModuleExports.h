// The exports of a module, which a host finds in the loaded library by their names, and calls in
// the platform's standard convention. A type is named after its export, with `Export` behind it.
// [ui-thread]
#pragma once

#include "service-common/ServiceObjectRegistry.h"
#include "ui-engine/UIEngine.SO.h"

#include <cstdint>

// Lists the module's public service objects: an array and its count, borrowed until the module is
// unloaded and the same on every call. An entry's atom is 0xFFFFFFFF unless CreateServiceObject
// was called before: go by the names. 3 for a null out parameter, and nothing is written then;
// 0x10007 with null and 0 when there are none.
using ReflectServiceObjectInfoExport = ResultCode (*)(const ServiceObjectInfo** entries,
                                                      std::uint32_t* count);

// Makes a new service object of the name that the atom stands for; the caller owns its one
// reference. 3 for the atom 0 or a null out parameter; 0x10005 for a name that the module does not
// have; 0x10006 when the object cannot be made. `object` is written on success only.
using CreateServiceObjectExport = ResultCode (*)(Atom name, ServiceObject** object);

// Makes the module's resources reachable through the host's engine, once per process; borrowed. 3
// for null, else 0, also when the engine makes no registration: a later call tries again. Throws
// ServiceObjectException when the engine fails.
using RegisterResourcesExport = ResultCode (*)(UIEngine* engine);
