#include "services/UIServiceObject.h"

#include <string>
#include <utility>

namespace Workbench {

UIThreadObject::UIThreadObject(HostStatePtr state, UiThreadLoop::Holding holding)
    : state_(std::move(state)), holding_(holding)
{
    Offer<UIThread::PostCall, &UIThreadObject::PostCall>();
}

ResultCode UIThreadObject::PostCall(UIThread::Runner runner, void* record) const
{
    if (runner == nullptr) {
        return kResultNullArgument;
    }
    return state_->loop.Post(runner, record, holding_) ? kResultOk : kResultDeclined;
}

UIServiceObject::UIServiceObject(HostStatePtr state,
                                 BasicServiceObjectPtr<UIMainFrameObject> mainFrame)
    : state_(std::move(state)),
      mainFrame_(std::move(mainFrame)),
      uiThread_(UIThreadObject::Make(state_, UiThreadLoop::Holding::kMayBeHeld)),
      unheldThread_(UIThreadObject::Make(state_, UiThreadLoop::Holding::kNeverHeld))
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
    HandOut(handsOutUnheld_ ? unheldThread_ : uiThread_, thread);
    return kResultOk;
}

}  // namespace Workbench
