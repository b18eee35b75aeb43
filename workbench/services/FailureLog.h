// Failures of module code in calls whose caller cannot report them: posted calls, events and input
// events. [any-thread]
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

    // Adds what an exception says: the code and text of a ServiceObjectException, else the text.
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
