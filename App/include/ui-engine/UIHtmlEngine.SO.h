// Interface `UIHtmlEngine`: the element interface of the host's HTML engine. Handles that a method
// hands out carry no use; take one with UseElement before the tree may change. Texts handed out
// are borrowed until the next call of the engine. Implemented by the host. [ui-thread]
#pragma once

#include "service-common/ServiceMethod.h"
#include "ui-engine/HtmlElementTypes.h"

#include <cstdint>

struct UIHandler;

struct UIHtmlEngine : ServiceObject {
    static constexpr const char* kName = "UIHtmlEngine";
    static constexpr const char* kHeader = "include/ui-engine/UIHtmlEngine.SO.h";

    // Begins a use: the handle stays safe until the matching UnuseElement, also when the element
    // leaves the tree. Fails for a handle that is not, or no longer, an element.
    SO_METHOD(UIHtmlEngine, UseElement, 0, HtmlElementHandle element);
    SO_METHOD(UIHtmlEngine, UnuseElement, 1, HtmlElementHandle element);

    // 0 with null when there is none.
    SO_METHOD(UIHtmlEngine, GetParent, 2, HtmlElementHandle element, HtmlElementHandle* parent);
    // 0-based position among the element children of the parent.
    SO_METHOD(UIHtmlEngine, GetIndex, 3, HtmlElementHandle element, std::uint32_t* index);
    SO_METHOD(UIHtmlEngine, GetChildCount, 4, HtmlElementHandle element, std::uint32_t* count);
    SO_METHOD(UIHtmlEngine, GetNthChild, 5, HtmlElementHandle element, std::uint32_t index,
              HtmlElementHandle* child);

    // Markup in UTF-8, `length` bytes.
    SO_METHOD(UIHtmlEngine, SetHtml, 6, HtmlElementHandle element, const std::uint8_t* html,
              std::uint32_t length, HtmlPosition position);
    // Replaces the content by text, `length` UTF-16 code units.
    SO_METHOD(UIHtmlEngine, SetText, 7, HtmlElementHandle element, const char16_t* text,
              std::uint32_t length);
    // Sets a property of the element's own style; name in ASCII, value in UTF-16, both
    // zero-terminated.
    SO_METHOD(UIHtmlEngine, SetStyleAttribute, 8, HtmlElementHandle element, const char* name,
              const char16_t* value);

    SO_METHOD(UIHtmlEngine, GetState, 9, HtmlElementHandle element, std::uint32_t* state);
    // `updateNow` 1: restyle before the call returns. Setting kStateCurrent takes that state from
    // the element that had it inside the same attached handler's element.
    SO_METHOD(UIHtmlEngine, SetState, 10, HtmlElementHandle element, std::uint32_t bitsToSet,
              std::uint32_t bitsToClear, std::uint32_t updateNow);

    // First element below `root` in document order that matches; 0 with null when none does.
    SO_METHOD(UIHtmlEngine, SelectFirst, 11, HtmlElementHandle root, const char* selector,
              HtmlElementHandle* element);
    // The element itself or its closest ancestor that matches; 0 with null when none does. Here
    // `:root` means the root of the panel's document.
    SO_METHOD(UIHtmlEngine, SelectEnclosing, 12, HtmlElementHandle element, const char* selector,
              HtmlElementHandle* enclosing);
    SO_METHOD(UIHtmlEngine, TestSelector, 13, HtmlElementHandle element, const char* selector,
              bool* matches);

    // `length` UTF-16 code units; null when the element has no such attribute (name in ASCII).
    SO_METHOD(UIHtmlEngine, GetAttribute, 14, HtmlElementHandle element, const char* name,
              const char16_t** value, std::uint32_t* length);

    // Refreshes the element after its content changed (kUpdate... flags).
    SO_METHOD(UIHtmlEngine, UpdateElement, 15, HtmlElementHandle element, std::uint32_t flags);
    // Scrolls the element into view inside its scrolling container; no flags are defined.
    SO_METHOD(UIHtmlEngine, ScrollIntoView, 16, HtmlElementHandle element, std::uint32_t flags);
    // Attaches a handler and calls its Attached; the engine keeps a reference until the element
    // leaves the tree, then calls Detached and releases it.
    SO_METHOD(UIHtmlEngine, AttachHandler, 17, HtmlElementHandle element, UIHandler* handler);
    // Removes the element from the tree.
    SO_METHOD(UIHtmlEngine, DeleteElement, 18, HtmlElementHandle element);

    using Catalogue = SODetails::MethodCatalogue<
        UseElement, UnuseElement, GetParent, GetIndex, GetChildCount, GetNthChild, SetHtml, SetText,
        SetStyleAttribute, GetState, SetState, SelectFirst, SelectEnclosing, TestSelector,
        GetAttribute, UpdateElement, ScrollIntoView, AttachHandler, DeleteElement>;
};
