#include "service-common/ErrorRecord.h"

#include "service-common/WideText.h"

#include <boost/format.hpp>

#include <memory>
#include <utility>

namespace {

struct ThreadErrors {
    ErrorRecord record;
    std::u16string message;  // the record's, as it crosses the interface
    bool present = false;
    std::function<void(const ErrorRecord&)> listener;
};

ThreadErrors& Errors()
{
    static thread_local ThreadErrors errors;
    return errors;
}

}  // namespace

void SetThreadLastError(ErrorRecord record)
{
    ThreadErrors& errors = Errors();
    errors.message = ToUtf16(record.message);
    errors.record = std::move(record);
    errors.present = true;
    if (errors.listener) {
        errors.listener(errors.record);
    }
}

const ErrorRecord* ThreadLastError() noexcept
{
    const ThreadErrors& errors = Errors();
    return errors.present ? &errors.record : nullptr;
}

void ClearThreadLastError() noexcept
{
    Errors().present = false;
}

void SetThreadErrorListener(std::function<void(const ErrorRecord&)> listener)
{
    Errors().listener = std::move(listener);
}

ResultCode ReadThreadLastError(ErrorInfo* info, ServiceObject** errorObject) noexcept
{
    if (info == nullptr) {
        return kResultNullArgument;
    }
    *info = {};
    if (errorObject != nullptr) {
        *errorObject = nullptr;
    }
    const ThreadErrors& errors = Errors();
    if (!errors.present) {
        return kResultNotFound;
    }
    *info = {errors.record.code, errors.message.c_str(), errors.record.function.c_str(),
             errors.record.file.c_str(), errors.record.line};
    return kResultOk;
}

ResultCode ReportMethodResult(ResultCode code, const char* interfaceName, const char* methodName,
                              const char* function, const char* file, std::uint32_t line)
{
    if (IsExpectedResult(code) || interfaceName == nullptr || methodName == nullptr) {
        return code;
    }
    const auto message = boost::wformat(L"%s::%s() failed, code: %d") %
                         FromAscii(interfaceName) % FromAscii(methodName) % code;
    SetThreadLastError({code, message.str(), function == nullptr ? "" : function,
                        file == nullptr ? "" : file, line});
    return code;
}
