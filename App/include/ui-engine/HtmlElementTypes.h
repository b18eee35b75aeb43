// Plain types in which module and host speak of elements of the HTML engine: handles, states,
// positions and input events. No dependencies.
#pragma once

#include <cstddef>
#include <cstdint>

struct UIHtmlEngine;

// Handle of an element, issued by the engine; null stands for none. A handle is safe to use while
// it has a use (UIHtmlEngine::UseElement), or during the call that passed it.
using HtmlElementHandle = struct _HtmlElement*;

// An element as it is passed between module and host. Borrowed for the call.
struct UIElement {
    HtmlElementHandle handle;  // null: none
    UIHtmlEngine* engine;      // that the handle belongs to; null when it is
};
static_assert(sizeof(UIElement) == 16);

// State bits of an element, pseudo classes in selectors and style sheets.
inline constexpr std::uint32_t kStateCurrent = 32;      // :current
inline constexpr std::uint32_t kStateDisabled = 128;    // :disabled
inline constexpr std::uint32_t kStateExpanded = 512;    // :expanded
inline constexpr std::uint32_t kStateCollapsed = 1024;  // :collapsed

// Where SetHtml puts the markup.
enum class HtmlPosition : std::uint32_t {
    kReplaceContent = 0,  // in place of all children
    kInsertFirst = 1,     // before the first child
    kAppendLast = 2,      // after the last child
    kReplaceWhole = 3,    // in place of the element itself, which leaves the tree
    kInsertBefore = 4,    // as the previous sibling
    kInsertAfter = 5,     // as the next sibling
};

// Flags of UpdateElement.
inline constexpr std::uint32_t kUpdateMeasure = 1;  // lay the element out anew, then redraw

// Event groups of UIHandler::GetSubscribedEvents.
inline constexpr std::uint32_t kEventGroupMouse = 1;
inline constexpr std::uint32_t kEventGroupKeys = 2;
inline constexpr std::uint32_t kEventGroupBehaviour = 256;

// Kinds of key events. The panel acts on kKeyDown.
inline constexpr std::uint32_t kKeyUp = 0;
inline constexpr std::uint32_t kKeyDown = 1;
inline constexpr std::uint32_t kKeyCharacter = 2;

// Virtual-key codes of the keys that the panel knows.
inline constexpr std::uint32_t kKeyEnter = 13;
inline constexpr std::uint32_t kKeyPageUp = 33;
inline constexpr std::uint32_t kKeyPageDown = 34;
inline constexpr std::uint32_t kKeyEnd = 35;
inline constexpr std::uint32_t kKeyHome = 36;
inline constexpr std::uint32_t kKeyLeft = 37;
inline constexpr std::uint32_t kKeyUpArrow = 38;
inline constexpr std::uint32_t kKeyRight = 39;
inline constexpr std::uint32_t kKeyDownArrow = 40;
inline constexpr std::uint32_t kKeyDelete = 46;

// A key event. Owned by the host, borrowed for the call.
struct UIKeyEvent {
    HtmlElementHandle target;  // the element that has the keyboard focus
    std::uint32_t kind;        // kKeyUp, kKeyDown or kKeyCharacter
    std::uint32_t virtualKey;  // virtual-key code; only those named above mean anything here
    std::uint32_t modifiers;   // 1 Ctrl, 2 Shift, 4 Alt
    std::uint32_t handled;     // set to 1 by a handler to stop further processing
};
static_assert(sizeof(UIKeyEvent) == 24);

// Kinds of behaviour events on which the panel acts.
inline constexpr std::uint32_t kBehaviourClick = 0;
inline constexpr std::uint32_t kBehaviourActivated = 11;  // a click made without a pointer

// An event that an element's behaviour raised. Owned by the host, borrowed for the call.
struct UIBehaviourEvent {
    HtmlElementHandle target;  // the element that raised the event
    std::uint32_t kind;        // kBehaviour...
    std::uint32_t handled;     // set to 1 by a handler to stop further processing
};
static_assert(sizeof(UIBehaviourEvent) == 16);
