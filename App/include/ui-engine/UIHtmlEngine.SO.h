// Interface `UIHtmlEngine`: the element interface of the host's HTML engine. Handles that a method
// hands out carry no use; take one with UseElement before the tree may change. Texts handed out
// are borrowed until the next call of the engine. Every method fails with 8 for a handle that is
// not, or no longer, an element. Implemented by the host. [ui-thread]
#pragma once

#include "service-common/ServiceMethod.h"
#include "ui-engine/HtmlElementTypes.h"

#include <cstdint>

struct UIHandler;

struct UIHtmlEngine : ServiceObject {
    static constexpr const char* kName = "UIHtmlEngine";
    static constexpr const char* kHeader = "include/ui-engine/UIHtmlEngine.SO.h";

    // Begins a use: the handle stays safe until the matching UnuseElement, also when the element
    // leaves the tree.
    SO_METHOD(UIHtmlEngine, UseElement, 0, HtmlElementHandle element);
    // Ends a use. Fails with 6 when the element has none.
    SO_METHOD(UIHtmlEngine, UnuseElement, 1, HtmlElementHandle element);

    // The element's parent; 0 with null when it has none.
    SO_METHOD(UIHtmlEngine, GetParent, 2, HtmlElementHandle element, HtmlElementHandle* parent);
    // 0-based position among the element children of the parent.
    SO_METHOD(UIHtmlEngine, GetIndex, 3, HtmlElementHandle element, std::uint32_t* index);
    // Number of element children.
    SO_METHOD(UIHtmlEngine, GetChildCount, 4, HtmlElementHandle element, std::uint32_t* count);
    // The element child at a 0-based index; fails with 9 and null beyond the count.
    SO_METHOD(UIHtmlEngine, GetNthChild, 5, HtmlElementHandle element, std::uint32_t index,
              HtmlElementHandle* child);

    // Puts markup in, `length` bytes of UTF-8 at `html`, borrowed for the call. What is malformed
    // is repaired inside the element that holds it. Fails with 6 where the element cannot have
    // content, or has no place in a tree that the position needs; with 9 for an unknown position.
    SO_METHOD(UIHtmlEngine, SetHtml, 6, HtmlElementHandle element, const std::uint8_t* html,
              std::uint32_t length, HtmlPosition position);
    // Replaces the content by text, `length` UTF-16 code units at `text`, borrowed for the call;
    // length 0 empties the element.
    SO_METHOD(UIHtmlEngine, SetText, 7, HtmlElementHandle element, const char16_t* text,
              std::uint32_t length);
    // Sets a property of the element's own style; name in ASCII, value in UTF-16, both
    // zero-terminated.
    SO_METHOD(UIHtmlEngine, SetStyleAttribute, 8, HtmlElementHandle element, const char* name,
              const char16_t* value);

    // The element's states (kState... bits).
    SO_METHOD(UIHtmlEngine, GetState, 9, HtmlElementHandle element, std::uint32_t* state);
    // Sets and clears state bits; `updateNow` 1: restyle before the call returns. Setting
    // kStateCurrent takes that state from the element that had it inside the same attached
    // handler's element; kStateExpanded and kStateCollapsed exclude each other, setting one clears
    // the other.
    SO_METHOD(UIHtmlEngine, SetState, 10, HtmlElementHandle element, std::uint32_t bitsToSet,
              std::uint32_t bitsToClear, std::uint32_t updateNow);

    // First element below `root` in document order that matches `selector` (CSS, narrow code page,
    // zero-terminated, as in UIWnd::SelectElements); 0 with null when none does. Fails with 6 for a
    // malformed selector.
    SO_METHOD(UIHtmlEngine, SelectFirst, 11, HtmlElementHandle root, const char* selector,
              HtmlElementHandle* element);
    // The element itself or its closest ancestor that matches; 0 with null when none does. Here
    // `:root` means the root of the panel's document. Fails with 6 for a malformed selector.
    SO_METHOD(UIHtmlEngine, SelectEnclosing, 12, HtmlElementHandle element, const char* selector,
              HtmlElementHandle* enclosing);
    // Whether the element itself matches; `:root` as in SelectEnclosing. Fails with 6 for a
    // malformed selector.
    SO_METHOD(UIHtmlEngine, TestSelector, 13, HtmlElementHandle element, const char* selector,
              bool* matches);

    // Text of an attribute (name in ASCII, zero-terminated): `length` UTF-16 code units at `value`,
    // borrowed until the next call of the engine; 0 with null when the element has none.
    SO_METHOD(UIHtmlEngine, GetAttribute, 14, HtmlElementHandle element, const char* name,
              const char16_t** value, std::uint32_t* length);

    // Refreshes the element after its content changed (kUpdate... flags).
    SO_METHOD(UIHtmlEngine, UpdateElement, 15, HtmlElementHandle element, std::uint32_t flags);
    // Scrolls the element into view inside its scrolling container; no flags are defined.
    SO_METHOD(UIHtmlEngine, ScrollIntoView, 16, HtmlElementHandle element, std::uint32_t flags);
    // Attaches a handler and calls its Attached; the engine keeps a reference until the element
    // leaves the tree, then calls Detached and releases it. Fails with the code of Attached, with
    // 3 or 4 for what is no handler, or with 6 for a handler that the element has already; the
    // handler is not kept then.
    SO_METHOD(UIHtmlEngine, AttachHandler, 17, HtmlElementHandle element, UIHandler* handler);
    // Removes the element from the tree.
    SO_METHOD(UIHtmlEngine, DeleteElement, 18, HtmlElementHandle element);

    using Catalogue = SODetails::MethodCatalogue<
        UseElement, UnuseElement, GetParent, GetIndex, GetChildCount, GetNthChild, SetHtml, SetText,
        SetStyleAttribute, GetState, SetState, SelectFirst, SelectEnclosing, TestSelector,
        GetAttribute, UpdateElement, ScrollIntoView, AttachHandler, DeleteElement>;
};
