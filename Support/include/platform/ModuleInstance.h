// The module's own instance: what the system knows a loaded library by. Set by the library's entry
// routine when the process attaches it, cleared when the process detaches it. [ui-thread]
#pragma once

namespace Platform {

// HMODULE of the library on Windows; its load address on Linux.
using ModuleInstance = void*;

// The instance of the library or program that this code is linked into; null before the library
// was attached and after it was detached.
ModuleInstance CurrentModuleInstance() noexcept;

// Called by the library's entry routine only.
void SetCurrentModuleInstance(ModuleInstance instance) noexcept;

}  // namespace Platform
