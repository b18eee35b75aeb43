// The host's "UIService" and the object of its UI thread.
#pragma once

#include "services/FrameObjects.h"
#include "services/HostObject.h"
#include "services/HostState.h"
#include "ui-engine/UIService.SO.h"

namespace Workbench {

class UIThreadObject : public HostObject<UIThreadObject, UIThread> {
public:
    explicit UIThreadObject(HostStatePtr state);

private:
    ResultCode PostCall(UIThread::Runner runner, void* record) const;

    HostStatePtr state_;
};

class UIServiceObject : public HostObject<UIServiceObject, UIService> {
public:
    UIServiceObject(HostStatePtr state, BasicServiceObjectPtr<UIMainFrameObject> mainFrame);

private:
    ResultCode GetMainFrame(UIMainFrame** mainFrame) const;
    ResultCode GetThreadObject(std::uint32_t threadId, UIThread** thread) const;

    HostStatePtr state_;
    BasicServiceObjectPtr<UIMainFrameObject> mainFrame_;
    BasicServiceObjectPtr<UIThreadObject> uiThread_;
};

}  // namespace Workbench
