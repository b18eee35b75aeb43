// The platform libraries of a host's process, which the module links to and the tool too: what they
// export, in plain types. Names, storage and services are the host's side of the contract.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" {

std::uint32_t CalculateSequenceHash(const void* data, std::size_t length);
std::uint32_t VxGetAtomFromString(const char* name, std::uint32_t* atom);

// Process-wide storage: torn down before a module is unloaded, begun anew for another life.
void VxHostTearDownSingletonStorage();
void VxHostRestartSingletonStorage();

// Listing of services; the provider holds a reference.
std::uint32_t VxHostRegisterService(const char* name, void* object);
std::uint32_t VxHostUnregisterService(const char* name);
void VxHostUnregisterAllServices();

}  // extern "C"

namespace Conformance {

inline std::uint32_t HashOf(std::string_view text)
{
    return CalculateSequenceHash(text.data(), text.size());
}

inline std::uint32_t AtomOf(const char* name)
{
    std::uint32_t atom = 0;
    VxGetAtomFromString(name, &atom);
    return atom;
}

}  // namespace Conformance
