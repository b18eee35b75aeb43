// Interface `UIInplacePlugin`: how the host drives an in-place UI plug-in. Implemented by the
// module through SOImpl::CppUIInplacePluginBase (internal/CppUIInplacePluginBase.h). All methods
// are called on the UI thread. [ui-thread] Results: 0 success, 1 nothing done, 3 null argument.
// ServiceObjectException passes through the entries to the host.
#pragma once

#include "service-common/ServiceMethod.h"

struct UIWnd;
struct UIHandler;
struct UIDocumentPanelModel;

// Argument blocks: the host passes a pointer to a block of pointers.
struct UIInitBeginArguments {
    UIWnd* window;               // borrowed until Cleanup; null or invalid: no window
    ServiceObject* hostContext;  // borrowed until Cleanup
};
struct UIInitHtmlArguments {
    const void* first;
    const void* second;
};
struct UIInitHandlerArguments {
    UIHandler** handler;  // receives an owned reference, or null
};
struct UIGetUIModelArguments {
    UIDocumentPanelModel** model;  // receives an owned reference, or null
};

struct UIInplacePlugin : ServiceObject {
    static constexpr const char* kName = "UIInplacePlugin";
    static constexpr const char* kHeader = "include/ui-engine/UIInplacePlugin.SO.h";

    SO_METHOD(UIInplacePlugin, Handshake, 0);
    // Registers the module's resources with the host's "UIEngine". Throws ServiceObjectException.
    SO_METHOD(UIInplacePlugin, RegisterResources, 1);
    SO_METHOD(UIInplacePlugin, InitBegin, 2, const UIInitBeginArguments* arguments);
    SO_METHOD(UIInplacePlugin, InitHtml, 3, const UIInitHtmlArguments* arguments);
    SO_METHOD(UIInplacePlugin, InitSubscription, 4);
    // The handler for the panel's body; the same one on every call until Cleanup.
    SO_METHOD(UIInplacePlugin, InitHandler, 5, const UIInitHandlerArguments* arguments);
    SO_METHOD(UIInplacePlugin, InitComplete, 6);
    SO_METHOD(UIInplacePlugin, CreateControl, 7);
    // The panel's model; the same one on every call until Cleanup.
    SO_METHOD(UIInplacePlugin, GetUIModel, 8, const UIGetUIModelArguments* arguments);
    // Releases handler and model. May be called twice.
    SO_METHOD(UIInplacePlugin, Cleanup, 9);

    using Catalogue = SODetails::MethodCatalogue<Handshake, RegisterResources, InitBegin, InitHtml,
                                                 InitSubscription, InitHandler, InitComplete,
                                                 CreateControl, GetUIModel, Cleanup>;
};
static_assert(UIInplacePlugin::Catalogue::kMethodCount == 10);
