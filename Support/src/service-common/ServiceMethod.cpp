#include "service-common/ServiceMethod.h"

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceObjectPtr.h"
#include "service-common/WideText.h"

#include <utility>

namespace {

thread_local std::uint64_t t_failedCalls = 0;

std::string TextOrEmpty(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace

std::uint64_t FailedCallCount() noexcept
{
    return t_failedCalls;
}

void CountFailedCall() noexcept
{
    ++t_failedCalls;
}

void CheckServiceCall(ServiceObject* object, ResultCode code)
{
    if (IsExpectedResult(code)) {
        return;
    }
    if (!IsAbsence(code)) {
        CountFailedCall();
    }
    if (object == nullptr || object->GetLastErrorInfo == nullptr) {
        return;
    }
    ErrorInfo info{};
    BasicServiceObjectPtr<ServiceObject> errorObject;
    if (object->GetLastErrorInfo(object, &info, errorObject.Receive()) != kResultOk) {
        return;
    }
    throw ServiceObjectException({static_cast<ResultCode>(info.code), FromUtf16(info.message),
                                  TextOrEmpty(info.function), TextOrEmpty(info.file),
                                  static_cast<std::uint32_t>(info.line)},
                                 std::move(errorObject));
}
