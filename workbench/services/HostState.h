// State shared by the service objects of one host. Created on the UI thread; lives as long as the
// last object that refers to it.
#pragma once

#include "services/CallLog.h"
#include "services/EventSource.h"
#include "services/FailureLog.h"
#include "services/ForeignThread.h"
#include "services/ModuleErrors.h"
#include "services/UiThreadLoop.h"

#include <atomic>
#include <memory>
#include <string_view>

namespace Workbench {

struct HostState {
    FailureLog failures;
    ModuleErrors moduleErrors{failures};
    UiThreadLoop loop{failures, &moduleErrors};
    ForeignThread foreignThread{loop, failures};
    CallLog calls;

    // Fires document events on the foreign thread instead of the thread of the change.
    std::atomic<bool> firesOnForeignThread = false;
    // Views report that navigation is not allowed.
    std::atomic<bool> interactionLocked = false;

    // Fires an event and logs exceptions of its subscribers. [any-thread]
    template <class E, class... Args>
    void Fire(EventSource<E>& source, Args... arguments)
    {
        const auto fire = [&] {
            for (const auto& exception : source.Fire(arguments...)) {
                failures.Add(E::kName, exception);
            }
        };
        if (loop.IsUiThread()) {
            moduleErrors.Around(E::kName, fire);
        } else {
            fire();
        }
    }
};

using HostStatePtr = std::shared_ptr<HostState>;

}  // namespace Workbench
