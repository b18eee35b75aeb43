// The small vocabulary of the HTML engine: handles of elements and nodes, result codes, insert
// positions and element state bits. Included by everything that speaks to a Document. Plain values,
// usable on any thread; what they refer to lives on the UI thread.
#pragma once

#include <cstdint>

namespace HtmlEngine {

// Names one element of one Document; pointer-sized, opaque, 0 means "no element". A handle is a
// plain number: copying it costs nothing and keeps nothing alive. It is known as long as its
// element is in the tree, and longer while the element has uses (`Document::Use`). Once the
// element has ended the handle is unknown for good: no later element ever gets the same one.
using ElementHandle = std::uintptr_t;

constexpr ElementHandle kNoElement = 0;

static_assert(sizeof(ElementHandle) == sizeof(void*));
static_assert(sizeof(ElementHandle) == 8, "A handle packs a 32-bit slot and a 32-bit generation.");

// Names one node of one Document: an element, a text or a comment; 0 means "no node". An element's
// node handle is its ElementHandle. Known as long as the node is, and never given to another one.
using NodeHandle = std::uint64_t;

constexpr NodeHandle kNoNodeHandle = 0;

// `None` is what an unknown handle names.
enum class NodeKind : std::uint8_t { None, Element, Text, Comment };

// Where an element's name comes from.
enum class Namespace : std::uint8_t { Html, Svg, MathMl };

// Outcome of an operation on a Document. Every code but `Success` means that nothing has changed.
enum class Result : std::uint32_t {
    Success = 0,
    // The handle is 0, was never given out, or its element has ended.
    UnknownElement = 1,
    // The operation needs a place in a tree that the element does not have: replacing, deleting or
    // inserting beside the root of a tree, or attaching a handler to a detached element.
    NoPlace = 2,
    // The element cannot hold content (`br`, `img`, ...).
    NoContent = 3,
    // A name that cannot be written as an attribute or a style property.
    BadName = 4,
    // The selector is not in the narrow CSS syntax that Document describes.
    MalformedSelector = 5,
    // There was nothing to end: the use count is 0, or the handler is not attached here.
    NotHeld = 6,
    // The handler is null, or is attached to this element already.
    HandlerRefused = 7,
};

// Where `Document::SetHtml` puts markup, relative to the element that it is given.
enum class InsertPosition : std::uint32_t {
    // In place of everything inside the element.
    ReplaceContent = 0,
    // Inside, before the first child.
    InsertFirst = 1,
    // Inside, after the last child.
    AppendLast = 2,
    // In place of the element itself.
    ReplaceElement = 3,
    // Directly before the element, under the same parent.
    InsertBefore = 4,
    // Directly after the element, under the same parent.
    InsertAfter = 5,
};

// Bits of an element's state. Bits without a name here are kept and given back as they were set.
namespace ElementState {
constexpr std::uint32_t kHover = 2;
constexpr std::uint32_t kActive = 4;
constexpr std::uint32_t kFocus = 8;
constexpr std::uint32_t kCurrent = 32;
constexpr std::uint32_t kDisabled = 128;
constexpr std::uint32_t kExpanded = 512;
constexpr std::uint32_t kCollapsed = 1024;
}  // namespace ElementState

}  // namespace HtmlEngine
