// Error records: what a failed call leaves behind for the other side to read. One record per
// thread and module; each call of SetThreadLastError replaces it.
#pragma once

#include "service-common/ServiceObject.h"

#include <cstdint>
#include <functional>
#include <string>

struct ErrorRecord {
    ResultCode code = kResultOk;
    std::wstring message;
    std::string function;
    std::string file;
    std::uint32_t line = 0;
};

// Stores the calling thread's last error and signals the thread's error event. Where memory is
// short, the code is stored without its text. [any-thread]
void SetThreadLastError(ErrorRecord record) noexcept;

// The calling thread's last error, or null when there is none. Borrowed until the next error or
// clearing on this thread.
const ErrorRecord* ThreadLastError() noexcept;

// Forgets the calling thread's last error.
void ClearThreadLastError() noexcept;

// The per-thread error event: `listener` is called on this thread with every record stored from
// now on; an empty one stops that. The listener must not throw.
void SetThreadErrorListener(std::function<void(const ErrorRecord&)> listener);

// Fills `info` from the calling thread's record as ServiceObject::GetLastErrorInfo promises.
ResultCode ReadThreadLastError(ErrorInfo* info, ServiceObject** errorObject) noexcept;

// The reporting rule. Records "%s::%s() failed, code: %d" (the code as a signed number) for a code
// that is not expected, unless a name is missing, and returns the code unchanged.
ResultCode ReportMethodResult(ResultCode code, const char* interfaceName, const char* methodName,
                              const char* function, const char* file, std::uint32_t line) noexcept;
