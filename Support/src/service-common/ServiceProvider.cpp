#include "service-common/ServiceProvider.h"

#include "platform/SystemErrors.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/SingletonStaticData.h"
#include "service-common/WideText.h"

#include <boost/format.hpp>

#include <locale>

namespace {

constexpr const char* kSourceFile = "include/service-common/ServiceProvider";

struct ProviderMessage {
    ResultCode code;
    const wchar_t* text;
    const wchar_t* textWithSystemError;  // null: the same text
};

constexpr ProviderMessage kProviderMessages[] = {
    {kResultServiceNotInModule, L"service is not supported by the corresponding module.\n",
     nullptr},
    {kResultFactoryFailed, L"service object factory function failed.\n", nullptr},
    {kResultNoPublicObjects, L"there are no public service objects in corresponding module.\n",
     nullptr},
    {kResultServiceUnknown, L"corresponding service is not supported by the service provider.\n",
     nullptr},
    {kResultModuleNotFound,
     L"the service provider cannot find corresponding module to create service object.\n",
     L"the service provider cannot find corresponding module to create service object.\n\n"
     L"System error code: [%1%]\nDescription: %2%\n"},
    // The short text ends with a blank and no line break.
    {kResultFactoryNotFound,
     L"the service provider cannot find corresponding factory function in the module to create "
     L"service object. ",
     L"the service provider cannot find corresponding factory function in the module to create "
     L"service object.\n\nSystem error code: [%1%]\nDescription: %2%\n"},
};

std::wstring MessageFor(ResultCode code, std::uint32_t systemErrorCode)
{
    for (const ProviderMessage& message : kProviderMessages) {
        if (message.code != code) {
            continue;
        }
        if (systemErrorCode == 0 || message.textWithSystemError == nullptr) {
            return message.text;
        }
        return (boost::wformat(message.textWithSystemError, std::locale::classic()) %
                systemErrorCode % Platform::SystemErrorText(systemErrorCode))
            .str();
    }
    if (systemErrorCode == 0) {
        return (boost::wformat(L"\"ServiceProviderGetServiceObject()\" call failed with code "
                               L"%1%.\n",
                               std::locale::classic()) %
                code)
            .str();
    }
    return (boost::wformat(L"\"ServiceProviderGetServiceObject()\" call failed with code %1%.\n\n"
                           L"System error code: [%2%]\nDescription: %3%\n",
                           std::locale::classic()) %
            code % systemErrorCode % Platform::SystemErrorText(systemErrorCode))
        .str();
}

}  // namespace

namespace SP {

void _CheckServiceProviderApiResult(ResultCode code, std::uint32_t systemErrorCode)
{
    if (code == kResultOk) {
        return;
    }
    throw ServiceObjectException({code, MessageFor(code, systemErrorCode),
                                  "SP::_CheckServiceProviderApiResult", kSourceFile, __LINE__});
}

namespace Details {

Atom ResolveOnce(const char* name, std::atomic<Atom>& cachedAtom)
{
    Atom atom = cachedAtom.load(std::memory_order_relaxed);
    if (atom == kAtomUnresolved) {
        atom = AtomService::Resolve(name);
        cachedAtom.store(atom == kAtomNone ? kAtomUnresolved : atom, std::memory_order_relaxed);
    }
    return atom;
}

BasicServiceObjectPtr<ServiceObject> QueryServiceObject(const char* name,
                                                        std::atomic<Atom>& cachedAtom)
{
    const Atom atom = ResolveOnce(name, cachedAtom);
    try {
        BasicServiceObjectPtr<ServiceObject> object;
        Platform::SetSystemError(0);  // what a former call left says nothing of this one
        const ResultCode code = ServiceProviderGetServiceObject(atom, object.Receive());
        _CheckServiceProviderApiResult(code, Platform::SystemError());
        return object;
    } catch (const ServiceObjectException& failure) {
        throw ServiceObjectException({failure.Code(),
                                      (boost::wformat(L"Fail to query %1% service object: %2%") %
                                       FromAscii(name) % failure.Message())
                                          .str(),
                                      "SP::QueryServiceObject", kSourceFile, __LINE__});
    }
}

}  // namespace Details
}  // namespace SP
