#include "services/HandlerAttachment.h"

#include "service-common/UnicodeText.h"

#include <exception>
#include <string>
#include <utility>

namespace Workbench {

HandlerAttachment::HandlerAttachment(BasicServiceObjectPtr<UIHandler> handler, FailureLog& failures)
    : handler_(std::move(handler)), failures_(failures)
{
}

ResultCode HandlerAttachment::Attach(UIWnd* window, const UIElement& element)
{
    const BasicServiceObjectPtr<UIHandler> held = handler_;
    knowsElement_ = true;
    const ResultCode code = [&] {
        const OnSide module(Side::kModule);
        return CallMethodUnchecked<UIHandler::Attached>(held.Get(), window, &element).code;
    }();
    if (IsExpectedResult(code)) {
        Call<UIHandler::GetSubscribedEvents>(&groups_);
    } else {
        AddFailure(UIHandler::Attached::kName, code);
        knowsElement_ = false;
    }
    return code;
}

void HandlerAttachment::OnDetached(HtmlEngine::ElementHandle) noexcept
{
    if (knowsElement_) {
        Call<UIHandler::Detached>();
    }
    attached_ = false;
    handler_.Reset();
}

void HandlerAttachment::AddFailure(const char* method, ResultCode code)
{
    Failure failure{std::string(UIHandler::kName) + "::" + method, code, ""};
    UIHandler* const handler = handler_.Get();
    ErrorInfo info{};
    if (handler != nullptr && handler->GetLastErrorInfo != nullptr &&
        handler->GetLastErrorInfo(handler, &info, nullptr) == kResultOk &&
        info.message != nullptr) {
        failure.message = UnicodeText::ToUtf8(info.message);
    }
    failures_.Add(std::move(failure));
}

}  // namespace Workbench
