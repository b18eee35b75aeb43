// The binary contract between module and host, written down a second time: layouts, tables, slots,
// names and tags as plain numbers. Stands on none of the headers that module and host are built
// with, so that it can contradict them.
#pragma once

#include "service-common/ResultCodes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Conformance {

// Offsets of a service object's fields.
inline constexpr std::size_t kInterfaceIdAt = 0;
inline constexpr std::size_t kTableSizeAt = 4;
inline constexpr std::size_t kInterfaceNameAt = 8;
inline constexpr std::size_t kAddRefAt = 16;
inline constexpr std::size_t kReleaseAt = 24;
inline constexpr std::size_t kGetRefCountAt = 32;
inline constexpr std::size_t kGetWeakReferenceAt = 40;
inline constexpr std::size_t kGetLastErrorInfoAt = 48;
inline constexpr std::size_t kCallMethodByNameAt = 56;
inline constexpr std::size_t kMethodsAt = 64;
inline constexpr char kEndOfTable[] = "EOFT";
inline constexpr char kEndOfObject[] = "EOSO";

// Offsets and size of a weak-reference record. Its entries: 1 drops a holder, 3 alive, 4 lock.
inline constexpr std::size_t kHolderCountAt = 40;
inline constexpr std::size_t kBackPointerAt = 48;

// What GetLastErrorInfo fills in: five 64-bit words.
struct ErrorWords {
    std::uint64_t code;
    const char16_t* message;
    const char* function;
    const char* file;
    std::uint64_t line;
};

// A posted call as the host sees it.
struct PostedRecord {
    char tag[4];
    std::uint32_t size;
};
inline constexpr char kPostedTag[] = "ININ";
inline constexpr std::uint32_t kPostedSize = 40;

// An entry of the reflection table.
struct ReflectedObject {
    std::uint32_t atom;
    std::uint32_t padding;
    const char* name;
};
inline constexpr const char* kPublicObject = "CommentsPanelInplacePlugin";

// The interfaces that the module offers: table size and the methods' names in slot order.
struct OfferedInterface {
    const char* name;
    std::uint32_t tableSize;
    std::span<const char* const> methods;
};
inline constexpr std::array kPluginMethods{
    "Handshake",   "RegisterResources", "InitBegin",     "InitHtml",   "InitSubscription",
    "InitHandler", "InitComplete",      "CreateControl", "GetUIModel", "Cleanup"};
inline constexpr std::array kHandlerMethods{"GetElementAttachedTo",
                                            "GetSubscribedEvents",
                                            "HandleMouse",
                                            "HandleKey",
                                            "HandleFocus",
                                            "HandleTimer",
                                            "HandleSize",
                                            "HandleScroll",
                                            "HandleDraw",
                                            "HandleMethodCall",
                                            "HandleScriptCall",
                                            "HandleEvent",
                                            "HandleDataArrived",
                                            "HandleGesture",
                                            "HandleExchange",
                                            "Attached",
                                            "Detached",
                                            "OnDocumentComplete",
                                            "OnInplacePluginsInitialized",
                                            "OnInitComplete",
                                            "OnLocaleChanged",
                                            "GetHandlerName"};
inline constexpr std::array kModelMethods{
    "SetDocumentsCollection",      "GetConcreteModel",
    "ShellDropTarget_OnDragEnter", "ShellDropTarget_OnDragOver",
    "ShellDropTarget_OnDragLeave", "ShellDropTarget_OnDrop"};
inline constexpr OfferedInterface kPlugin{"UIInplacePlugin", 80, kPluginMethods};
inline constexpr OfferedInterface kHandler{"UIHandler", 176, kHandlerMethods};
inline constexpr OfferedInterface kModel{"UIDocumentPanelModel", 48, kModelMethods};

// Slots of the offered interfaces that the tool drives by number.
namespace PluginSlot {
inline constexpr unsigned kHandshake = 0, kRegisterResources = 1, kInitBegin = 2, kInitHtml = 3,
                          kInitSubscription = 4, kInitHandler = 5, kInitComplete = 6,
                          kCreateControl = 7, kGetUIModel = 8, kCleanup = 9;
}
namespace HandlerSlot {
inline constexpr unsigned kGetElement = 0, kGetEvents = 1, kHandleMouse = 2, kHandleKey = 3,
                          kHandleEvent = 11, kAttached = 15, kDetached = 16, kLocaleChanged = 20,
                          kGetName = 21;
}
namespace ModelSlot {
inline constexpr unsigned kSetCollection = 0, kGetConcreteModel = 1;
}

// One subscription: the interface of its source and the slot of its subscribe entry.
struct SubscribedEvent {
    std::string_view source;
    unsigned slot;
    bool operator==(const SubscribedEvent&) const = default;
};

// The events of one source, in the order in which they are subscribed.
template <std::size_t N>
constexpr std::array<SubscribedEvent, N> EventsOf(std::string_view source,
                                                  const unsigned (&slots)[N])
{
    std::array<SubscribedEvent, N> events;
    for (std::size_t i = 0; i < N; ++i) {
        events[i] = {source, slots[i]};
    }
    return events;
}
inline constexpr SubscribedEvent kFrameEvent{"UIMainFrame", 25};
inline constexpr auto kCollectionEvents =
    EventsOf("UIDocumentsCollection", {8, 11, 14, 17, 24, 27, 30, 33});
inline constexpr auto kViewEvents =
    EventsOf("BLDocumentView", {42, 20, 25, 28, 51, 6, 126, 54, 188, 94, 199, 182, 185});
inline constexpr std::array kContainerEvents{SubscribedEvent{"BLDocument", 39},
                                             SubscribedEvent{"BLDocument", 78},
                                             SubscribedEvent{"BLDocumentView", 99}};

// Element states, event-group masks, keys and operations that the tool uses.
inline constexpr std::uint32_t kCurrent = 32;
inline constexpr std::uint32_t kPanelEventMask = 256;
inline constexpr std::uint32_t kContainerEventMask = 259;

}  // namespace Conformance
