// Interface `UIHandler`: native code that the host attaches to an element of its HTML engine.
// Implemented by the module through SOImpl::CppUIHandlerBase (internal/CppUIHandlerBase.h).
// All methods are called on the UI thread. [ui-thread] Results: 0 success, 1 not handled, 3 null
// argument; a failure's code is recorded. No exception leaves an entry. The module has two
// handlers: the panel's, which the host attaches to the body of the panel's page, and one for each
// container of comments, which the panel attaches itself.
//
// Of the input and engine events, `element` is the element attached to, and `event` the host's
// record, both borrowed for the call. The panel reads the records of HandleKey and HandleEvent
// only; the rest are the host's own and may be null.
#pragma once

#include "service-common/ServiceMethod.h"
#include "ui-engine/HtmlElementTypes.h"

#include <cstdint>

struct UIWnd;

struct UIHandler : ServiceObject {
    static constexpr const char* kName = "UIHandler";
    static constexpr const char* kHeader = "include/ui-engine/UIHandler.SO.h";

    // The element that the handler is attached to, borrowed; {null, null} when detached.
    SO_METHOD(UIHandler, GetElementAttachedTo, 0, UIElement* element);
    // The event groups that the handler wants (kEventGroup...), the same on every call: 256 of the
    // panel's handler, 259 of a container's.
    SO_METHOD(UIHandler, GetSubscribedEvents, 1, std::uint32_t* mask);
    // Mouse input. Answers 1: the panel acts on the engine's clicks (HandleEvent).
    SO_METHOD(UIHandler, HandleMouse, 2, HtmlElementHandle element, void* event);
    // Keyboard input. A container's handler acts on kKeyDown of Enter, Delete, Home, End, Page Up,
    // Page Down and the up and down arrows whose target is inside its list, and answers 1, so that
    // the engine scrolls as it always does; 3 to a null record. The panel's handler answers 1
    // whatever the record. Fails with the code of what went wrong.
    SO_METHOD(UIHandler, HandleKey, 3, HtmlElementHandle element, UIKeyEvent* event);
    // The keyboard focus moved. Answers 1.
    SO_METHOD(UIHandler, HandleFocus, 4, HtmlElementHandle element, void* event);
    // A timer of the element ran out. Answers 1.
    SO_METHOD(UIHandler, HandleTimer, 5, HtmlElementHandle element, void* event);
    // The element's size changed. Answers 1.
    SO_METHOD(UIHandler, HandleSize, 6, HtmlElementHandle element, void* event);
    // The element is scrolled. Answers 1.
    SO_METHOD(UIHandler, HandleScroll, 7, HtmlElementHandle element, void* event);
    // The element is drawn. Answers 1: the engine draws it.
    SO_METHOD(UIHandler, HandleDraw, 8, HtmlElementHandle element, void* event);
    // A method of the element is called by native code. Answers 1.
    SO_METHOD(UIHandler, HandleMethodCall, 9, HtmlElementHandle element, void* event);
    // A method of the element is called by a script. Answers 1.
    SO_METHOD(UIHandler, HandleScriptCall, 10, HtmlElementHandle element, void* event);
    // An event that an element inside raised by its behaviour. A container's handler acts on
    // kBehaviourClick and kBehaviourActivated, and answers 1, so that the event goes on; 3 to a
    // null record. The panel's handler answers 1 whatever the record. Fails with the code of what
    // went wrong.
    SO_METHOD(UIHandler, HandleEvent, 11, HtmlElementHandle element, UIBehaviourEvent* event);
    // Data that the element asked for arrived. Answers 1.
    SO_METHOD(UIHandler, HandleDataArrived, 12, HtmlElementHandle element, void* event);
    // A touch gesture. Answers 1.
    SO_METHOD(UIHandler, HandleGesture, 13, HtmlElementHandle element, void* event);
    // Something is dragged over the element or dropped on it. Answers 1.
    SO_METHOD(UIHandler, HandleExchange, 14, HtmlElementHandle element, void* event);
    // The handler was attached to `element` of `window`. Both are borrowed for the call: the
    // handler keeps a use of the element and a weak reference to the window. Answers 0; 3 when one
    // is null; fails with 2 when the element cannot be used, a container's handler also with the
    // code of what went wrong with its document, and is not attached then.
    SO_METHOD(UIHandler, Attached, 15, UIWnd* window, const UIElement* element);
    // The handler left its element, or the element the tree: ends every subscription and drops the
    // documents. Comes once per Attached that did not fail. Answers 0.
    SO_METHOD(UIHandler, Detached, 16, void);
    // The page of the element is complete. Answers 1.
    SO_METHOD(UIHandler, OnDocumentComplete, 17, void);
    // Every plug-in of the host is initialised. Answers 1.
    SO_METHOD(UIHandler, OnInplacePluginsInitialized, 18, void);
    // The host's user interface is complete. Answers 1.
    SO_METHOD(UIHandler, OnInitComplete, 19, void);
    // The language of the host's user interface changed: a container's handler posts that its list
    // be loaded anew, and answers 0. The panel's handler answers 1. Fails with the code of what
    // went wrong with posting; the next event makes good for it.
    SO_METHOD(UIHandler, OnLocaleChanged, 20, void);
    // Name of the handler's class as run-time type information has it, 8-bit, zero-terminated,
    // borrowed until the handler dies.
    SO_METHOD(UIHandler, GetHandlerName, 21, const char** name);

    using Catalogue = SODetails::MethodCatalogue<
        GetElementAttachedTo, GetSubscribedEvents, HandleMouse, HandleKey, HandleFocus, HandleTimer,
        HandleSize, HandleScroll, HandleDraw, HandleMethodCall, HandleScriptCall, HandleEvent,
        HandleDataArrived, HandleGesture, HandleExchange, Attached, Detached, OnDocumentComplete,
        OnInplacePluginsInitialized, OnInitComplete, OnLocaleChanged, GetHandlerName>;
};
static_assert(UIHandler::Catalogue::kMethodCount == 22);
