// The host's "UIService" and its UI thread object.
#pragma once

#include "services/FrameObjects.h"
#include "services/HostObject.h"
#include "services/HostState.h"
#include "ui-engine/UIService.SO.h"

namespace Workbench {

class UIThreadObject : public HostObject<UIThreadObject, UIThread> {
public:
    UIThreadObject(HostStatePtr state, UiThreadLoop::Holding holding);

private:
    ResultCode PostCall(UIThread::Runner runner, void* record) const;

    const HostStatePtr state_;
    const UiThreadLoop::Holding holding_;
};

class UIServiceObject : public HostObject<UIServiceObject, UIService> {
public:
    UIServiceObject(HostStatePtr state, BasicServiceObjectPtr<UIMainFrameObject> mainFrame);

    // While enabled, GetThreadObject returns thread objects whose calls the loop never holds back.
    // [ui-thread]
    void HandOutUnheld(bool enabled) noexcept { handsOutUnheld_ = enabled; }

private:
    ResultCode GetMainFrame(UIMainFrame** mainFrame) const;
    ResultCode GetThreadObject(std::uint32_t threadId, UIThread** thread) const;

    HostStatePtr state_;
    BasicServiceObjectPtr<UIMainFrameObject> mainFrame_;
    BasicServiceObjectPtr<UIThreadObject> uiThread_;
    BasicServiceObjectPtr<UIThreadObject> unheldThread_;
    bool handsOutUnheld_ = false;
};

}  // namespace Workbench
