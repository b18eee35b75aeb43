// Log of failures of module code in calls without a caller that could report them: posted calls,
// events and input events. [any-thread]
#pragma once

#include "service-common/ResultCodes.h"

#include <exception>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

struct Failure {
    std::string where;  // "UIHandler::HandleKey"
    ResultCode code = kResultUnexpected;
    std::string message;  // UTF-8
};

class FailureLog {
public:
    void Add(Failure failure);

    // Adds an exception: code and text of a ServiceObjectException, the text of any other.
    void Add(std::string_view where, const std::exception_ptr& exception);

    // The failures since the last call, oldest first.
    std::vector<Failure> Take();

private:
    std::mutex mutex_;
    std::vector<Failure> failures_;
};

// "UIHandler::HandleKey: Not initialized (code 2)".
std::string Describe(const Failure& failure);

}  // namespace Workbench
