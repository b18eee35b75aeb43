// The module's three exported functions, of the types and with the promises of
// ui-engine/ModuleExports.h. [ui-thread]
#pragma once

#include "platform/LibraryExport.h"
#include "ui-engine/ModuleExports.h"

#include <cstdint>
#include <type_traits>

extern "C" {

// See SODetails::ReflectRegisteredObjects.
LIBRARY_EXPORT ResultCode ReflectServiceObjectInfo(const ServiceObjectInfo** entries,
                                                   std::uint32_t* count);

// See SODetails::CreateRegisteredObject.
LIBRARY_EXPORT ResultCode CreateServiceObject(Atom name, ServiceObject** object);

LIBRARY_EXPORT ResultCode RegisterResources(UIEngine* engine);

}  // extern "C"
static_assert(std::is_same_v<decltype(&ReflectServiceObjectInfo), ReflectServiceObjectInfoExport>);
static_assert(std::is_same_v<decltype(&CreateServiceObject), CreateServiceObjectExport>);
static_assert(std::is_same_v<decltype(&RegisterResources), RegisterResourcesExport>);

// RegisterResources for the module's own code. A host, or another module in its process, may export
// functions of the names above, and a call by such a name would reach that one on Linux: the module
// never calls its own exports.
ResultCode RegisterModuleResources(UIEngine* engine);
