// The exception of the system. Thrown by the check rule and by the handlers' own operations; it may
// cross from the module into the host, which compiles this header too. [any-thread]
#pragma once

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectPtr.h"

#include <exception>
#include <memory>
#include <string>

class ServiceObjectException : public std::exception {
public:
    explicit ServiceObjectException(ErrorRecord record,
                                    BasicServiceObjectPtr<ServiceObject> errorObject = nullptr)
        : state_(std::make_shared<const State>(
              State{Narrowed(record.message), std::move(record), std::move(errorObject)}))
    {
    }

    ResultCode Code() const noexcept { return state_->record.code; }
    const std::wstring& Message() const noexcept { return state_->record.message; }
    const std::string& Function() const noexcept { return state_->record.function; }
    const std::string& File() const noexcept { return state_->record.file; }
    std::uint32_t Line() const noexcept { return state_->record.line; }
    const ErrorRecord& Record() const noexcept { return state_->record; }

    // The host's error object where the failing call handed one out, else empty.
    const BasicServiceObjectPtr<ServiceObject>& ErrorObject() const noexcept
    {
        return state_->errorObject;
    }

    // The message in UTF-8.
    const char* what() const noexcept override { return state_->narrowMessage.c_str(); }

private:
    struct State {
        std::string narrowMessage;  // made before the record is moved from
        ErrorRecord record;
        BasicServiceObjectPtr<ServiceObject> errorObject;
    };
    static std::string Narrowed(const std::wstring& message);

    std::shared_ptr<const State> state_;  // copying an exception must not fail
};
