// Runs what an event or a posted call has to do. Nobody above can act on a failure: it ends the
// task, becomes the thread's last error, and goes no further. [any-thread]
#pragma once

#include <utility>

namespace SODetails {

// Stores the exception that is being handled as the thread's last error. `function` stands for one
// that does not name its own. To be called inside a catch block.
void RecordTaskFailure(const char* function) noexcept;

// Whether the task ended without an exception.
template <class Task>
bool RunEventTask(const char* function, Task&& task) noexcept
{
    try {
        std::forward<Task>(task)();
        return true;
    } catch (...) {
        RecordTaskFailure(function);
        return false;
    }
}

}  // namespace SODetails
