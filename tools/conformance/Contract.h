// The binary contract between module and host, written down a second time: layouts, tables, slots,
// names and tags as plain numbers. Stands on none of the headers that module and host are built
// with, so that it can contradict them.
#pragma once

#include "service-common/ResultCodes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

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
inline constexpr unsigned kSetCollection = 0;
}

// The interfaces that the tool's host offers, and of which the module makes its calls.
enum class Peer : unsigned {
    kUIEngine,
    kUIResources,
    kUIResource,
    kUIResourceRegistration,
    kUIService,
    kUIThread,
    kUIWnd,
    kUIHtmlEngine,
    kUIMainFrame,
    kUIDocumentsCollection,
    kUIDocumentView,
    kBLDocumentView,
    kBLDocument,
    kBLService,
    kBLAnnotNavigator,
    kBLSelection,
    kLocaleManager,
    kPDModelService,
    kHighlight,
    kContext,
    kCount
};
inline constexpr std::size_t kPeerCount = static_cast<std::size_t>(Peer::kCount);

// One subscription, by the interface of its source and the slot of its subscribe entry.
struct SubscribedEvent {
    Peer peer;
    unsigned slot;
    bool operator==(const SubscribedEvent&) const = default;
};

// The subscriptions of a panel that was handed its documents and then shows one view, in order.
inline constexpr SubscribedEvent kPanelEvents[] = {
    {Peer::kUIMainFrame, 25},           {Peer::kUIDocumentsCollection, 8},
    {Peer::kUIDocumentsCollection, 11}, {Peer::kUIDocumentsCollection, 14},
    {Peer::kUIDocumentsCollection, 17}, {Peer::kUIDocumentsCollection, 24},
    {Peer::kUIDocumentsCollection, 27}, {Peer::kUIDocumentsCollection, 30},
    {Peer::kUIDocumentsCollection, 33},
};
inline constexpr SubscribedEvent kViewEvents[] = {
    {Peer::kBLDocumentView, 42},  {Peer::kBLDocumentView, 20},  {Peer::kBLDocumentView, 25},
    {Peer::kBLDocumentView, 28},  {Peer::kBLDocumentView, 51},  {Peer::kBLDocumentView, 6},
    {Peer::kBLDocumentView, 126}, {Peer::kBLDocumentView, 54},  {Peer::kBLDocumentView, 188},
    {Peer::kBLDocumentView, 94},  {Peer::kBLDocumentView, 199}, {Peer::kBLDocumentView, 182},
    {Peer::kBLDocumentView, 185},
};
inline constexpr SubscribedEvent kContainerEvents[] = {
    {Peer::kBLDocument, 39},
    {Peer::kBLDocument, 78},
    {Peer::kBLDocumentView, 99},
};

// Element states, event-group masks, keys and operations that the tool uses.
inline constexpr std::uint32_t kCurrent = 32;
inline constexpr std::uint32_t kPanelEventMask = 256;
inline constexpr std::uint32_t kContainerEventMask = 259;

}  // namespace Conformance
