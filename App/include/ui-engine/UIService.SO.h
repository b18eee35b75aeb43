// Interfaces `UIService` and `UIThread`: the host's user-interface service, listed by the service
// provider, and the per-thread object through which work is posted. Implemented by the host.
#pragma once

#include "service-common/ServiceMethod.h"

#include <cstdint>

struct UIMainFrame;

// A thread that runs an event loop.
struct UIThread : ServiceObject {
    static constexpr const char* kName = "UIThread";
    static constexpr const char* kHeader = "include/ui-engine/UIService.SO.h";

    // Runs a posted record; made once, on the object's thread.
    using Runner = void (*)(void* record);

    // Calls `runner` with `record` later on the object's thread, after the calls posted before.
    // A call that is accepted (0) is made exactly once: before the module is unloaded those that
    // still wait are made. The record belongs to it (SODetails::PostedCall). With any other code
    // the record stays the caller's. [any-thread]
    SO_METHOD(UIThread, PostCall, 1, Runner runner, void* record);

    using Catalogue = SODetails::MethodCatalogue<PostCall>;
};

// The host's user-interface service, listed by the service provider as "UIService".
struct UIService : ServiceObject {
    static constexpr const char* kName = "UIService";
    static constexpr const char* kHeader = "include/ui-engine/UIService.SO.h";

    // The host's main frame, owned; null when it has none. [ui-thread]
    SO_METHOD(UIService, GetMainFrame, 5, UIMainFrame** mainFrame);
    // The object of the thread with that identifier (GetCurrentThreadId on Windows, gettid on
    // Linux), owned. Fails with 8 for a thread without an event loop. [any-thread]
    SO_METHOD(UIService, GetThreadObject, 12, std::uint32_t threadId, UIThread** thread);

    using Catalogue = SODetails::MethodCatalogue<GetMainFrame, GetThreadObject>;
};
