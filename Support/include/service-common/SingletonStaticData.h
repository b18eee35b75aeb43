// Typed access to a process-wide storage slot of the host's atom library, which all modules of the
// process share. [any-thread]
#pragma once

#include "service-common/Atom.h"

#include <cstdint>

namespace SODetails {

// Makes or finds the slot. Throws ServiceObjectException with code kResultNotInitialized and the
// text "Fail to get atom singleton instance! Is is already destroyed!" when the storage is gone,
// "Fail to get atom singleton instance! Incorrect StaticDataID!" when the slot has another id.
void* CreateSingletonSlot(const char* name, std::uint32_t dataId, std::size_t size,
                          void (*destroy)(void* data));

// Finds the slot; std::runtime_error "Fail to get atom singleton instance!" when it is missing.
void* GetSingletonSlot(const char* name, std::uint32_t dataId);

}  // namespace SODetails

// The atom service as the module uses it: the same functions as Atom.h, but failing with the texts
// above once the host has torn its storage down.
namespace AtomService {

// Atom of a name; kAtomNone when the library refuses it.
Atom Resolve(const char* name);

// Name of an atom; null for an atom that was never made. Borrowed until the process ends.
const char* NameOf(Atom atom);

}  // namespace AtomService
