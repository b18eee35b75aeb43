// Interface `UIHandler`: native code that the host attaches to an element of its HTML engine.
// Implemented by the module through SOImpl::CppUIHandlerBase (internal/CppUIHandlerBase.h).
// All methods are called on the UI thread. [ui-thread] Results: 0 success, 1 not handled, 3 null
// argument; a failure's code is recorded. No exception leaves an entry.
#pragma once

#include "service-common/ServiceMethod.h"
#include "ui-engine/HtmlElementTypes.h"

#include <cstdint>

struct UIWnd;

struct UIHandler : ServiceObject {
    static constexpr const char* kName = "UIHandler";
    static constexpr const char* kHeader = "include/ui-engine/UIHandler.SO.h";

    // The element that the handler is attached to; {null, null} when detached. Borrowed.
    SO_METHOD(UIHandler, GetElementAttachedTo, 0, UIElement* element);
    // The event groups that the handler wants (kEventGroup...).
    SO_METHOD(UIHandler, GetSubscribedEvents, 1, std::uint32_t* mask);
    // Input and engine events on the element or inside it. `element` is the one attached to; the
    // argument records of events that the panel does not take are the host's own. A class that acts
    // on HandleKey or HandleEvent answers 3 to a null record.
    SO_METHOD(UIHandler, HandleMouse, 2, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleKey, 3, HtmlElementHandle element, UIKeyEvent* event);
    SO_METHOD(UIHandler, HandleFocus, 4, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleTimer, 5, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleSize, 6, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleScroll, 7, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleDraw, 8, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleMethodCall, 9, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleScriptCall, 10, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleEvent, 11, HtmlElementHandle element, UIBehaviourEvent* event);
    SO_METHOD(UIHandler, HandleDataArrived, 12, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleGesture, 13, HtmlElementHandle element, void* event);
    SO_METHOD(UIHandler, HandleExchange, 14, HtmlElementHandle element, void* event);
    // The handler was attached to `element` of `window`. Both are borrowed for the call; the
    // handler keeps references of its own. 3 when one is null.
    SO_METHOD(UIHandler, Attached, 15, UIWnd* window, const UIElement* element);
    // The handler left its element, or the element the tree. Comes once per Attached.
    SO_METHOD(UIHandler, Detached, 16);
    SO_METHOD(UIHandler, OnDocumentComplete, 17);
    SO_METHOD(UIHandler, OnInplacePluginsInitialized, 18);
    SO_METHOD(UIHandler, OnInitComplete, 19);
    // The language of the host's user interface changed.
    SO_METHOD(UIHandler, OnLocaleChanged, 20);
    // Name of the handler's class, 8-bit, borrowed until the handler dies.
    SO_METHOD(UIHandler, GetHandlerName, 21, const char** name);

    using Catalogue = SODetails::MethodCatalogue<
        GetElementAttachedTo, GetSubscribedEvents, HandleMouse, HandleKey, HandleFocus, HandleTimer,
        HandleSize, HandleScroll, HandleDraw, HandleMethodCall, HandleScriptCall, HandleEvent,
        HandleDataArrived, HandleGesture, HandleExchange, Attached, Detached, OnDocumentComplete,
        OnInplacePluginsInitialized, OnInitComplete, OnLocaleChanged, GetHandlerName>;
};
static_assert(UIHandler::Catalogue::kMethodCount == 22);
