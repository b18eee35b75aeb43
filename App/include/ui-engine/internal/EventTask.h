// Runs what an event or a posted call has to do. Nobody above can act on a failure: it ends the
// task, becomes the thread's last error, and goes no further. [any-thread]
#pragma once

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "ui-engine/NarrowText.h"

#include <exception>

namespace SODetails {

template <class Task>
void RunEventTask(const char* function, Task&& task)
{
    try {
        task();
    } catch (const ServiceObjectException& failure) {
        SetThreadLastError(failure.Record());
    } catch (const std::exception& failure) {
        SetThreadLastError({kResultUnexpected, FromNarrow(failure.what()), function,
                            "include/ui-engine/internal/EventTask", __LINE__});
    }
}

}  // namespace SODetails
