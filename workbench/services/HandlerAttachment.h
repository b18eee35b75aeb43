// Attachment of a module's handler to an element of the panel's document: holds the host's
// reference and makes the calls to the handler. [ui-thread]
#pragma once

#include "html-engine/AttachedHandler.h"
#include "service-common/ServiceObjectPtr.h"
#include "services/FailureLog.h"
#include "services/ModuleBoundary.h"
#include "ui-engine/UIHandler.SO.h"

#include <cstdint>

namespace Workbench {

class HandlerAttachment final : public HtmlEngine::AttachedHandler {
public:
    HandlerAttachment(BasicServiceObjectPtr<UIHandler> handler, FailureLog& failures);

    // Calls the handler's Attached and queries its event groups. Returns the code of Attached.
    ResultCode Attach(UIWnd* window, const UIElement& element);

    void OnDetached(HtmlEngine::ElementHandle element) noexcept override;

    // False once the attachment has ended.
    bool IsAttached() const noexcept { return attached_; }
    bool Wants(std::uint32_t eventGroup) const noexcept { return (groups_ & eventGroup) != 0; }
    bool Is(const UIHandler* handler) const noexcept { return handler_.Get() == handler; }

    // Calls a method of the handler while it is attached. A failure goes to the failure log.
    template <class M, class... Args>
    void Call(Args... arguments)
    {
        if (!attached_) {
            return;
        }
        const BasicServiceObjectPtr<UIHandler> held = handler_;
        try {
            const OnSide module(Side::kModule);
            const CallResult result = CallMethodUnchecked<M>(held.Get(), arguments...);
            if (result.called && !IsExpectedResult(result.code)) {
                AddFailure(M::kName, result.code);
            }
        } catch (...) {  // a handler that throws across the interface
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
