#include "ui-engine/internal/UIWndServiceObjectRequester.h"

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/WideText.h"

#include <boost/format.hpp>

#include <utility>

namespace {

// `detail` may be empty; the text has no end that is left blank then.
void ReportFailure(ResultCode code, const char* name, const std::wstring& detail,
                   std::uint32_t line)
{
    auto message =
        boost::wformat(detail.empty() ? L"Fail to query %1% service object from UIWnd!"
                                      : L"Fail to query %1% service object from UIWnd! %2%") %
        FromAscii(name);
    if (!detail.empty()) {
        message % detail;
    }
    SetThreadLastError({code, message.str(),
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
        ReportFailure(failure.Code(), name, failure.Message(), __LINE__);
        return false;
    }
    // Another interface under that name would be called through the wrong table.
    if (found && found->interfaceId == HashInterfaceName(name)) {
        *object = found.Detach();
        return true;
    }
    ReportFailure(kResultNotFound, name, {}, __LINE__);
    return false;
}
