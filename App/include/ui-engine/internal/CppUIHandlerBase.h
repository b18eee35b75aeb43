// Adapter that makes a class a `UIHandler`. The class derives from CppUIHandlerBase<Class, Traits>
// and declares the member functions that it wants to act on; the rest decline. No exception leaves
// an entry. [ui-thread]
#pragma once

#include "ui-engine/UIHandler.SO.h"
#include "ui-engine/internal/InterfaceAdapter.h"

#include <string>
#include <type_traits>

namespace SOImpl {

template <class T, class Traits>
class CppUIHandlerBase : public SODetails::InterfaceAdapter<T, Traits, UIHandler> {
public:
    // Defaults of the member functions; a class hides those that it implements.
    ResultCode HandleMouse(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleKey(HtmlElementHandle, UIKeyEvent*) { return kResultDeclined; }
    ResultCode HandleFocus(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleTimer(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleSize(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleScroll(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleDraw(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleMethodCall(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleScriptCall(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleEvent(HtmlElementHandle, UIBehaviourEvent*) { return kResultDeclined; }
    ResultCode HandleDataArrived(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleGesture(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode HandleExchange(HtmlElementHandle, void*) { return kResultDeclined; }
    ResultCode OnDocumentComplete() { return kResultDeclined; }
    ResultCode OnInplacePluginsInitialized() { return kResultDeclined; }
    ResultCode OnInitComplete() { return kResultDeclined; }
    ResultCode OnLocaleChanged() { return kResultDeclined; }

protected:
    CppUIHandlerBase()
    {
        this->template FillTable<GetElementAttachedToImpl, GetSubscribedEventsImpl, HandleMouseImpl,
                                 HandleKeyImpl, HandleFocusImpl, HandleTimerImpl, HandleSizeImpl,
                                 HandleScrollImpl, HandleDrawImpl, HandleMethodCallImpl,
                                 HandleScriptCallImpl, HandleEventImpl, HandleDataArrivedImpl,
                                 HandleGestureImpl, HandleExchangeImpl, AttachedImpl, DetachedImpl,
                                 OnDocumentCompleteImpl, OnInplacePluginsInitializedImpl,
                                 OnInitCompleteImpl, OnLocaleChangedImpl, GetHandlerNameImpl>();
    }
    ~CppUIHandlerBase() = default;

private:
    template <class Impl, class M>
    using Thunk = SODetails::MethodThunk<Impl, T, Traits, M, SODetails::ContainExceptions>;

    // UIElement ElementAttachedTo() const
    struct GetElementAttachedToImpl
        : Thunk<GetElementAttachedToImpl, UIHandler::GetElementAttachedTo> {
        static ResultCode Unpack(T& object, UIElement* element)
        {
            if (element == nullptr) {
                return kResultNullArgument;
            }
            *element = object.ElementAttachedTo();
            return kResultOk;
        }
    };

    // std::uint32_t SubscribedEvents() const
    struct GetSubscribedEventsImpl
        : Thunk<GetSubscribedEventsImpl, UIHandler::GetSubscribedEvents> {
        static ResultCode Unpack(T& object, std::uint32_t* mask)
        {
            if (mask == nullptr) {
                return kResultNullArgument;
            }
            *mask = object.SubscribedEvents();
            return kResultOk;
        }
    };

    // ResultCode Attached(UIWnd& window, const UIElement& element)
    struct AttachedImpl : Thunk<AttachedImpl, UIHandler::Attached> {
        static ResultCode Unpack(T& object, UIWnd* window, const UIElement* element)
        {
            if (window == nullptr || element == nullptr) {
                return kResultNullArgument;
            }
            return object.Attached(*window, *element);
        }
    };

    // The class's type name, read once and kept with the handler.
    struct GetHandlerNameImpl : Thunk<GetHandlerNameImpl, UIHandler::GetHandlerName> {
        static ResultCode Unpack(T& object, const char** name)
        {
            if (name == nullptr) {
                return kResultNullArgument;
            }
            std::string& cached = object.handlerName_;
            if (cached.empty()) {
                cached = SODetails::TypeName<T>();
            }
            *name = cached.c_str();
            return kResultOk;
        }
    };

// A slot whose arguments go to the member function of the same name as they are.
#define SOIMPL_FORWARD(name)                                                                       \
    struct name##Impl : Thunk<name##Impl, UIHandler::name> {                                       \
        template <class... Args>                                                                   \
        static ResultCode Unpack(T& object, Args... arguments)                                     \
        {                                                                                          \
            return object.name(arguments...);                                                      \
        }                                                                                          \
    }
    SOIMPL_FORWARD(HandleMouse);
    SOIMPL_FORWARD(HandleFocus);
    SOIMPL_FORWARD(HandleTimer);
    SOIMPL_FORWARD(HandleSize);
    SOIMPL_FORWARD(HandleScroll);
    SOIMPL_FORWARD(HandleDraw);
    SOIMPL_FORWARD(HandleMethodCall);
    SOIMPL_FORWARD(HandleScriptCall);
    SOIMPL_FORWARD(HandleDataArrived);
    SOIMPL_FORWARD(HandleGesture);
    SOIMPL_FORWARD(HandleExchange);
    SOIMPL_FORWARD(Detached);
    SOIMPL_FORWARD(OnDocumentComplete);
    SOIMPL_FORWARD(OnInplacePluginsInitialized);
    SOIMPL_FORWARD(OnInitComplete);
    SOIMPL_FORWARD(OnLocaleChanged);
#undef SOIMPL_FORWARD

// As above, for an event whose record a class reads: a class that acts on it is never given null.
#define SOIMPL_FORWARD_EVENT(name)                                                                 \
    struct name##Impl : Thunk<name##Impl, UIHandler::name> {                                       \
        template <class Event>                                                                     \
        static ResultCode Unpack(T& object, HtmlElementHandle element, Event* event)               \
        {                                                                                          \
            constexpr bool kActsOnIt =                                                             \
                !std::is_same_v<decltype(&T::name), decltype(&CppUIHandlerBase::name)>;            \
            return kActsOnIt && event == nullptr ? kResultNullArgument                             \
                                                 : object.name(element, event);                    \
        }                                                                                          \
    }
    SOIMPL_FORWARD_EVENT(HandleKey);
    SOIMPL_FORWARD_EVENT(HandleEvent);
#undef SOIMPL_FORWARD_EVENT

    std::string handlerName_;
};

}  // namespace SOImpl
