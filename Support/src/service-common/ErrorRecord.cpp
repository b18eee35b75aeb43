#include "service-common/ErrorRecord.h"

#include "service-common/WideText.h"

#include <boost/format.hpp>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

struct ThreadErrors {
    ErrorRecord record;
    std::u16string message;  // the record's, as it crosses the interface
    bool present = false;
    std::function<void(const ErrorRecord&)> listener;
};

// What each thread left behind, freed with the module. Thread-local storage holds a plain pointer
// only: an object with a destructor there would keep the library loaded for as long as the thread
// lives.
class ThreadErrorsStore {
public:
    ThreadErrors& ForThisThread()
    {
        static thread_local ThreadErrors* mine = nullptr;
        if (mine == nullptr) {
            const std::lock_guard lock(mutex_);
            all_.push_back(std::make_unique<ThreadErrors>());
            mine = all_.back().get();
        }
        return *mine;
    }

private:
    std::mutex mutex_;
    std::vector<std::unique_ptr<ThreadErrors>> all_;
};

ThreadErrors& Errors()
{
    static ThreadErrorsStore store;
    return store.ForThisThread();
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
    const auto message = boost::wformat(L"%s::%s() failed, code: %d") % FromAscii(interfaceName) %
                         FromAscii(methodName) % code;
    SetThreadLastError({code, message.str(), function == nullptr ? "" : function,
                        file == nullptr ? "" : file, line});
    return code;
}
