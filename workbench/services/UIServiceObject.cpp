#include "services/UIServiceObject.h"

#include <string>
#include <utility>

namespace Workbench {

UIThreadObject::UIThreadObject(HostStatePtr state) : state_(std::move(state))
{
    Offer<UIThread::PostCall, &UIThreadObject::PostCall>();
}

ResultCode UIThreadObject::PostCall(UIThread::Runner runner, void* record) const
{
    if (runner == nullptr) {
        return kResultNullArgument;
    }
    return state_->loop.Post(runner, record) ? kResultOk : kResultDeclined;
}

UIServiceObject::UIServiceObject(HostStatePtr state,
                                 BasicServiceObjectPtr<UIMainFrameObject> mainFrame)
    : state_(std::move(state)),
      mainFrame_(std::move(mainFrame)),
      uiThread_(UIThreadObject::Make(state_))
{
    Offer<UIService::GetMainFrame, &UIServiceObject::GetMainFrame>();
    Offer<UIService::GetThreadObject, &UIServiceObject::GetThreadObject>();
}

ResultCode UIServiceObject::GetMainFrame(UIMainFrame** mainFrame) const
{
    if (mainFrame == nullptr) {
        return kResultNullArgument;
    }
    HandOut(mainFrame_, mainFrame);
    return kResultOk;
}

ResultCode UIServiceObject::GetThreadObject(std::uint32_t threadId, UIThread** thread) const
{
    if (thread == nullptr) {
        return kResultNullArgument;
    }
    *thread = nullptr;
    if (threadId != state_->loop.ThreadId()) {
        FailCall(kResultNotFound,
                 "thread " + std::to_string(threadId) + " runs no event loop of this host");
    }
    HandOut(uiThread_, thread);
    return kResultOk;
}

}  // namespace Workbench
