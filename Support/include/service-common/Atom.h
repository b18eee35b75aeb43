// The host's atom library: names of services, interfaces, methods, commands and annotation
// subtypes as 32-bit values, and process-wide storage shared by all modules. The functions are
// exported by the host's shared library; module and host link to the same one. [any-thread]
#pragma once

#include "service-common/ResultCodes.h"

#include <cstddef>
#include <cstdint>

// 32-bit number that stands for one name for the life of the process.
using Atom = std::uint32_t;

// Atoms that no name has.
inline constexpr Atom kAtomNone = 0;                  // stands for no name
inline constexpr Atom kAtomUnresolved = 0xFFFFFFFFu;  // not asked for yet

// Failures of storage slots.
inline constexpr ResultCode kResultStorageDestroyed = 0x20001;      // the process is ending
inline constexpr ResultCode kResultStaticDataIdMismatch = 0x20002;  // the slot has another id

extern "C" {

// Hash of `length` bytes at `data`, the same on every call and in every module of a process.
// The empty sequence has a hash too. Never fails; `data` may be null when `length` is 0.
std::uint32_t CalculateSequenceHash(const void* data, std::size_t length);

// Atom of the zero-terminated 8-bit `name`; equal names give equal atoms. The out value is
// cleared first. Fails with 3 for a null argument and with 8 for an empty name.
ResultCode VxGetAtomFromString(const char* name, Atom* atom);

// Name of an atom, borrowed until the process ends. Fails with 3 for a null argument and with 8
// (null name) for an atom that was never made.
ResultCode VxGetStringFromAtom(Atom atom, const char** name);

// Makes or finds the process-wide storage slot named `name`: `size` bytes, zeroed at first.
// `destroy`, when not null, is called with the bytes when the host tears the storage down, which
// it does before it unloads any module. Every module that names the slot must give the same
// `dataId`. Fails with 3 (null argument), kResultStorageDestroyed, kResultStaticDataIdMismatch.
ResultCode CreateSingletonStaticData(const char* name, std::uint32_t dataId, std::size_t size,
                                     void (*destroy)(void* data), void** data);

// Finds a slot that exists. Fails as above, and with 8 when there is no such slot.
ResultCode GetSingletonStaticData(const char* name, std::uint32_t dataId, void** data);

// False from the moment that the host begins to tear the storage down.
bool IsSingletonStaticDataStorageAvailable();

}  // extern "C"
