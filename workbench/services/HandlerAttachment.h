// A module's handler on an element of the panel's page: the reference that the host keeps, and the
// calls that reach the handler. [ui-thread]
#pragma once

#include "html-engine/AttachedHandler.h"
#include "service-common/ServiceObjectPtr.h"
#include "services/FailureLog.h"
#include "ui-engine/UIHandler.SO.h"

#include <cstdint>

namespace Workbench {

class HandlerAttachment final : public HtmlEngine::AttachedHandler {
public:
    HandlerAttachment(BasicServiceObjectPtr<UIHandler> handler, FailureLog& failures);

    // Calls the handler's Attached, and asks which events it wants. The code that Attached gave.
    ResultCode Attach(UIWnd* window, const UIElement& element);

    void OnDetached(HtmlEngine::ElementHandle element) noexcept override;

    // False from the moment that the attachment ends.
    bool IsAttached() const noexcept { return attached_; }
    bool Wants(std::uint32_t eventGroup) const noexcept { return (groups_ & eventGroup) != 0; }
    bool Is(const UIHandler* handler) const noexcept { return handler_.Get() == handler; }

    // Calls a method of the handler, if still attached. A failure goes to the failure log.
    template <class M, class... Args>
    void Call(Args... arguments)
    {
        if (!attached_) {
            return;
        }
        const BasicServiceObjectPtr<UIHandler> held = handler_;
        try {
            const CallResult result = CallMethodUnchecked<M>(held.Get(), arguments...);
            if (result.called && !IsExpectedResult(result.code)) {
                AddFailure(M::kName, result.code);
            }
        } catch (...) {  // a handler that breaks its promise
            failures_.Add(M::kName, std::current_exception());
        }
    }

private:
    void AddFailure(const char* method, ResultCode code);

    BasicServiceObjectPtr<UIHandler> handler_;
    FailureLog& failures_;
    std::uint32_t groups_ = 0;
    bool attached_ = true;
    bool knowsElement_ = false;
};

}  // namespace Workbench
