// The module's three exported functions; a host finds them by name. Results are those of the
// service-object contract. [ui-thread]
#pragma once

#include "service-common/ServiceObjectRegistry.h"

#include <cstdint>

struct UIEngine;

// Linux needs it said that a symbol may leave the library; Windows has the export list for that.
#if defined(_WIN32)
#define PANEL_EXPORT
#else
#define PANEL_EXPORT [[gnu::visibility("default")]]
#endif

extern "C" {

// The module's public service objects: an array, the same on every call, borrowed until the module
// is unloaded, and its count. See SODetails::ReflectRegisteredObjects.
PANEL_EXPORT ResultCode ReflectServiceObjectInfo(const ServiceObjectInfo** entries,
                                                 std::uint32_t* count);

// A new service object, owned by the caller. See SODetails::CreateRegisteredObject.
PANEL_EXPORT ResultCode CreateServiceObject(Atom name, ServiceObject** object);

// Makes the module's resources reachable through the host's engine, once per process: 3 for null,
// else 0. Throws ServiceObjectException when the host fails; a later call tries again.
PANEL_EXPORT ResultCode RegisterResources(UIEngine* engine);

}  // extern "C"

// RegisterResources for the module's own code. A host, or another module in its process, may export
// functions of the names above, and a call by such a name would reach that one on Linux: the module
// never calls its own exports.
ResultCode RegisterModuleResources(UIEngine* engine);
