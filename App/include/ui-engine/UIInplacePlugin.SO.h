// Interface `UIInplacePlugin`: how the host drives an in-place UI plug-in. Implemented by the
// module through SOImpl::CppUIInplacePluginBase (internal/CppUIInplacePluginBase.h). All methods
// are called on the UI thread. [ui-thread] Results: 0 success, 1 nothing done, 3 null argument.
// ServiceObjectException passes through the entries to the host. Any order of calls is tolerated.
#pragma once

#include "service-common/ServiceMethod.h"

struct UIWnd;
struct UIHandler;
struct UIDocumentPanelModel;

// Argument block of InitBegin, itself borrowed for the call.
struct UIInitBeginArguments {
    UIWnd* window;               // borrowed until Cleanup; null or invalid: no window
    ServiceObject* hostContext;  // borrowed until Cleanup; any object of the host, not null
};
static_assert(sizeof(UIInitBeginArguments) == 16);

// Argument block of InitHtml. What the pointers stand for is the host's own.
struct UIInitHtmlArguments {
    const void* first;   // not null; not read
    const void* second;  // not null; not read
};
static_assert(sizeof(UIInitHtmlArguments) == 16);

// Argument block of InitHandler.
struct UIInitHandlerArguments {
    UIHandler** handler;  // receives an owned reference, or null when memory is short
};
static_assert(sizeof(UIInitHandlerArguments) == 8);

// Argument block of GetUIModel.
struct UIGetUIModelArguments {
    UIDocumentPanelModel** model;  // receives an owned reference, or null when memory is short
};
static_assert(sizeof(UIGetUIModelArguments) == 8);

struct UIInplacePlugin : ServiceObject {
    static constexpr const char* kName = "UIInplacePlugin";
    static constexpr const char* kHeader = "include/ui-engine/UIInplacePlugin.SO.h";

    // The host's first call. Does nothing. Answers 0.
    SO_METHOD(UIInplacePlugin, Handshake, 0, void);
    // Registers the module's resources with the host's service "UIEngine", once per process.
    // Answers 0, also when the provider hands out no engine. Throws ServiceObjectException when the
    // provider or the engine fails; a later call tries again.
    SO_METHOD(UIInplacePlugin, RegisterResources, 1, void);
    // Takes the host's window and context. Answers 0; 3 for a null block or context, and nothing is
    // stored then. A window that does not pass CheckServiceObject is ignored.
    SO_METHOD(UIInplacePlugin, InitBegin, 2, const UIInitBeginArguments* arguments);
    // Does nothing: the host reads the panel's page from the registered resources. Answers 1; 3 for
    // a null block or a null pointer in it.
    SO_METHOD(UIInplacePlugin, InitHtml, 3, const UIInitHtmlArguments* arguments);
    // Does nothing: the handler subscribes when it is given documents. Answers 1.
    SO_METHOD(UIInplacePlugin, InitSubscription, 4, void);
    // Hands out the handler for the panel's body, making handler and model on first use; the same
    // one on every call until Cleanup. Answers 0, with null when it cannot be made; 3 for a null
    // block or out pointer.
    SO_METHOD(UIInplacePlugin, InitHandler, 5, const UIInitHandlerArguments* arguments);
    // Does nothing. Answers 0.
    SO_METHOD(UIInplacePlugin, InitComplete, 6, void);
    // Does nothing: the panel has no native control. Answers 1.
    SO_METHOD(UIInplacePlugin, CreateControl, 7, void);
    // Hands out the panel's model, making handler and model on first use; the same one on every
    // call until Cleanup. Answers 0, with null when it cannot be made; 3 for a null block or out
    // pointer.
    SO_METHOD(UIInplacePlugin, GetUIModel, 8, const UIGetUIModelArguments* arguments);
    // Releases handler and model and forgets window and context. May be called twice; InitHandler
    // makes new ones afterwards. Answers 0.
    SO_METHOD(UIInplacePlugin, Cleanup, 9, void);

    using Catalogue = SODetails::MethodCatalogue<Handshake, RegisterResources, InitBegin, InitHtml,
                                                 InitSubscription, InitHandler, InitComplete,
                                                 CreateControl, GetUIModel, Cleanup>;
};
static_assert(UIInplacePlugin::Catalogue::kMethodCount == 10);
