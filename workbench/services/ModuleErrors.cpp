#include "services/ModuleErrors.h"

#include "service-common/UnicodeText.h"

namespace Workbench {
namespace {

// A record cannot be cleared from outside. A call that is refused replaces it by one that is known.
constexpr const char* kKnownMessage = "UIInplacePlugin::InitHtml() failed, code: 3";

}  // namespace

std::optional<Failure> ModuleErrors::Take()
{
    std::optional<Failure> taken;
    ErrorInfo info{};
    if (plugin_ == nullptr || plugin_->GetLastErrorInfo == nullptr ||
        plugin_->GetLastErrorInfo(plugin_, &info, nullptr) != kResultOk) {
        return taken;
    }
    const std::string message =
        info.message == nullptr ? std::string() : UnicodeText::ToUtf8(info.message);
    if (message != kKnownMessage) {
        taken = Failure{info.function == nullptr ? "" : info.function,
                        static_cast<ResultCode>(info.code), message};
        CallMethodUnchecked<UIInplacePlugin::InitHtml>(plugin_, nullptr);
    }
    return taken;
}

void ModuleErrors::Log(const char* where)
{
    std::optional<Failure> left = Take();
    if (left && !IsAbsence(left->code)) {
        if (left->where.empty()) {
            left->where = where;
        }
        failures_.Add(*std::move(left));
    }
}

}  // namespace Workbench
