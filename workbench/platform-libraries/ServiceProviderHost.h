// The host's side of the service-provider library: which service objects the process has, and
// which of them are refused. [any-thread]
#pragma once

#include "service-common/ServiceObject.h"

#include <cstdint>

extern "C" {

// Lists `object` under `name`, in place of whatever the name stood for. The provider keeps a
// reference of its own. A null object is listed too: the provider then succeeds without an object.
// Fails with 3 for a null name and with 8 for an empty one.
ResultCode VxHostRegisterService(const char* name, ServiceObject* object);

// Makes every request for `name` fail with that code and system error code.
ResultCode VxHostRefuseService(const char* name, ResultCode code, std::uint32_t systemErrorCode);

// Forgets the name: requests for it fail with kResultServiceUnknown again. 8 when it is not listed.
ResultCode VxHostUnregisterService(const char* name);

// Forgets every name.
void VxHostUnregisterAllServices();

}  // extern "C"
