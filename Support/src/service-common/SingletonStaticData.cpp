#include "service-common/SingletonStaticData.h"

#include "service-common/ServiceObjectException.h"

#include <stdexcept>

namespace {

[[noreturn]] void FailSingleton(const wchar_t* message, const char* function, std::uint32_t line)
{
    throw ServiceObjectException({kResultNotInitialized, message, function,
                                  "include/service-common/SingletonStaticData", line});
}

void RequireStorage(const char* function, std::uint32_t line)
{
    if (!IsSingletonStaticDataStorageAvailable()) {
        FailSingleton(L"Fail to get atom singleton instance! Is is already destroyed!", function,
                      line);
    }
}

}  // namespace

namespace SODetails {

void* CreateSingletonSlot(const char* name, std::uint32_t dataId, std::size_t size,
                          void (*destroy)(void* data))
{
    constexpr const char* kFunction = "SODetails::CreateSingletonSlot";
    RequireStorage(kFunction, __LINE__);
    void* data = nullptr;
    const ResultCode code = CreateSingletonStaticData(name, dataId, size, destroy, &data);
    if (code == kResultStaticDataIdMismatch) {
        FailSingleton(L"Fail to get atom singleton instance! Incorrect StaticDataID!", kFunction,
                      __LINE__);
    }
    if (code != kResultOk || data == nullptr) {
        FailSingleton(L"Fail to get atom singleton instance! Is is already destroyed!", kFunction,
                      __LINE__);
    }
    return data;
}

void* GetSingletonSlot(const char* name, std::uint32_t dataId)
{
    void* data = nullptr;
    if (GetSingletonStaticData(name, dataId, &data) != kResultOk || data == nullptr) {
        throw std::runtime_error("Fail to get atom singleton instance!");
    }
    return data;
}

}  // namespace SODetails

namespace AtomService {

Atom Resolve(const char* name)
{
    RequireStorage("AtomService::Resolve", __LINE__);
    Atom atom = kAtomNone;
    return VxGetAtomFromString(name, &atom) == kResultOk ? atom : kAtomNone;
}

const char* NameOf(Atom atom)
{
    RequireStorage("AtomService::NameOf", __LINE__);
    const char* name = nullptr;
    return VxGetStringFromAtom(atom, &name) == kResultOk ? name : nullptr;
}

}  // namespace AtomService
