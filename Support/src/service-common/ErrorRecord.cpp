#include "service-common/ErrorRecord.h"

#include "service-common/WideText.h"

#include <boost/format.hpp>

#include <exception>
#include <locale>
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
thread_local ThreadErrors* t_errors = nullptr;

class ThreadErrorsStore {
public:
    // Fails with std::bad_alloc on a thread's first use.
    ThreadErrors& ForThisThread()
    {
        if (t_errors == nullptr) {
            auto made = std::make_unique<ThreadErrors>();
            const std::lock_guard lock(mutex_);
            all_.push_back(std::move(made));
            t_errors = all_.back().get();
        }
        return *t_errors;
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

void SetThreadLastError(ErrorRecord record) noexcept
{
    try {
        ThreadErrors& errors = Errors();
        errors.present = true;
        errors.message.clear();
        errors.record = std::move(record);
        errors.message = ToUtf16(errors.record.message);
        if (errors.listener) {
            errors.listener(errors.record);
        }
    } catch (const std::exception&) {
        // Short of memory: the code stands without its text, or the thread has no record yet.
    }
}

const ErrorRecord* ThreadLastError() noexcept
{
    return t_errors != nullptr && t_errors->present ? &t_errors->record : nullptr;
}

void ClearThreadLastError() noexcept
{
    if (t_errors != nullptr) {
        t_errors->present = false;
    }
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
    if (t_errors == nullptr || !t_errors->present) {
        return kResultNotFound;
    }
    const ErrorRecord& record = t_errors->record;
    *info = {record.code, t_errors->message.c_str(), record.function.c_str(), record.file.c_str(),
             record.line};
    return kResultOk;
}

ResultCode ReportMethodResult(ResultCode code, const char* interfaceName, const char* methodName,
                              const char* function, const char* file, std::uint32_t line) noexcept
{
    if (IsExpectedResult(code) || interfaceName == nullptr || methodName == nullptr) {
        return code;
    }
    try {
        // %d prints a signed number: 0x80004005 is -2147467259.
        const auto message = boost::wformat(L"%s::%s() failed, code: %d", std::locale::classic()) %
                             FromAscii(interfaceName) % FromAscii(methodName) %
                             static_cast<std::int32_t>(code);
        SetThreadLastError({code, message.str(), function == nullptr ? "" : function,
                            file == nullptr ? "" : file, line});
    } catch (const std::exception&) {
        SetThreadLastError({code, {}, {}, {}, line});
    }
    return code;
}
