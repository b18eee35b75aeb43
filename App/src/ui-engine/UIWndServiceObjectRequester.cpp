#include "ui-engine/internal/UIWndServiceObjectRequester.h"

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/WideText.h"

#include <boost/format.hpp>

#include <utility>

namespace {

void ReportFailure(ResultCode code, std::wstring message, std::uint32_t line)
{
    SetThreadLastError({code, std::move(message),
                        "UIWndServiceObjectRequester::QueryServiceObjectFromUIWnd",
                        "include/ui-engine/internal/UIWndServiceObjectRequester", line});
}

}  // namespace

bool UIWndServiceObjectRequester::Query(UIWnd* window, const char* name,
                                        std::atomic<Atom>& cachedAtom, ServiceObject** object)
{
    *object = nullptr;
    BasicServiceObjectPtr<ServiceObject> found;
    try {
        CallMethod<UIWnd::QueryServiceObject>(window, SP::Details::ResolveOnce(name, cachedAtom),
                                              found.Receive());
    } catch (const ServiceObjectException& failure) {
        ReportFailure(failure.Code(),
                      (boost::wformat(L"Fail to query %1% service object from UIWnd! %2%") %
                       FromAscii(name) % failure.Message())
                          .str(),
                      __LINE__);
        return false;
    }
    // Another interface under that name would be called through the wrong table.
    if (found && found->interfaceId == HashInterfaceName(name)) {
        *object = found.Detach();
        return true;
    }
    ReportFailure(
        kResultNotFound,
        (boost::wformat(L"Fail to query %1% service object from UIWnd!") % FromAscii(name)).str(),
        __LINE__);
    return false;
}
