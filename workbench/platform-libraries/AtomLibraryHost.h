// What the host may do with the atom library beyond the functions of service-common/Atom.h: end the
// process-wide storage at the right moment, and look at what modules asked for. [any-thread]
#pragma once

#include <cstdint>

extern "C" {

// Ends the process-wide storage: from the first moment on it counts as not available, then every
// slot's `destroy` function is called, the youngest slot first, then the bytes are freed. The host
// calls it before it unloads a module. A second call does nothing.
void VxHostTearDownSingletonStorage();

// Makes the storage available again, without slots. For hosts that start more than once in a
// process; ends the storage first when that has not been done.
void VxHostRestartSingletonStorage();

// How often VxGetAtomFromString was called with that name; 0 for null.
std::uint64_t VxHostCountAtomRequests(const char* name);

// Makes the call of VxGetAtomFromString of that number, counted from 1 and from now on, fail with
// 6; 0 for none. Returns how many were refused since the call before.
std::uint64_t VxHostRefuseAtomRequest(std::uint64_t number);

}  // extern "C"
