// The host's service-provider library, and the checked way of asking it for a service. [any-thread]
#pragma once

#include "service-common/Atom.h"
#include "service-common/ServiceObjectPtr.h"

#include <atomic>
#include <cstdint>

extern "C" {

// The process-wide service object of that name. `*object` is cleared first and receives an owned
// reference. Fails with 3 (null argument, or the atom 0) and with the codes 0x10005 to 0x1000A; a
// failure of the platform behind it is then the calling thread's system error (GetLastError on
// Windows, errno on Linux). [any-thread]
ResultCode ServiceProviderGetServiceObject(Atom name, ServiceObject** object);

}  // extern "C"

namespace SP {

// Throws ServiceObjectException with the provider's message for `code`, unless it is 0. A
// A `systemErrorCode` other than 0 is added with its description.
void _CheckServiceProviderApiResult(ResultCode code, std::uint32_t systemErrorCode);

namespace Details {

// The atom of an interface's name, resolved once per process.
template <class I>
std::atomic<Atom>& CachedAtom() noexcept
{
    static std::atomic<Atom> atom = kAtomUnresolved;
    return atom;
}

// The name's atom; asked of the atom library when `cachedAtom` does not hold it yet.
Atom ResolveOnce(const char* name, std::atomic<Atom>& cachedAtom);

BasicServiceObjectPtr<ServiceObject> QueryServiceObject(const char* name,
                                                        std::atomic<Atom>& cachedAtom);

}  // namespace Details

// The atom of the interface's own name.
template <class I>
Atom ServiceAtom()
{
    return Details::ResolveOnce(I::kName, Details::CachedAtom<I>());
}

// The service object of interface `I` that the provider lists under the interface's own name. The
// name's atom is resolved once per process. Empty when the provider succeeds without an object.
// Throws ServiceObjectException "Fail to query %1% service object: %2%".
template <class I>
BasicServiceObjectPtr<I> QueryServiceObject()
{
    return BasicServiceObjectPtr<I>::Adopt(
        static_cast<I*>(Details::QueryServiceObject(I::kName, Details::CachedAtom<I>()).Detach()));
}

}  // namespace SP
