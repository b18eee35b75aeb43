// Interface `UIService`: the host's user-interface service, listed by the service provider, and
// the per-thread object through which work is posted. Implemented by the host.
#pragma once

#include "service-common/ServiceMethod.h"

#include <cstdint>

struct UIMainFrame;

// A thread that runs an event loop.
struct UIThread : ServiceObject {
    static constexpr const char* kName = "UIThread";
    static constexpr const char* kHeader = "include/ui-engine/UIService.SO.h";

    using Runner = void (*)(void* record);

    // Calls `runner` with `record` later on the object's thread, after the calls posted before.
    // A call that is accepted (0) is made exactly once, or, when the loop has ended, never.
    // [any-thread]
    SO_METHOD(UIThread, PostCall, 1, Runner runner, void* record);

    using Catalogue = SODetails::MethodCatalogue<PostCall>;
};

struct UIService : ServiceObject {
    static constexpr const char* kName = "UIService";
    static constexpr const char* kHeader = "include/ui-engine/UIService.SO.h";

    // The host's main frame, owned; null when it has none. [ui-thread]
    SO_METHOD(UIService, GetMainFrame, 5, UIMainFrame** mainFrame);
    // The object of the thread with that identifier, owned. [any-thread]
    SO_METHOD(UIService, GetThreadObject, 12, std::uint32_t threadId, UIThread** thread);

    using Catalogue = SODetails::MethodCatalogue<GetMainFrame, GetThreadObject>;
};
