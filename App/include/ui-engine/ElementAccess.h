// The panel's way to the DOM: references to single elements and sets of elements that a selector
// found. Nothing of the DOM is held elsewhere. Every operation is safe on an empty reference or
// after the window died: it does nothing, or yields what is empty. Failures that are not thrown, a
// refused use among them, are counted (FailedCallCount), but those of refreshing. [ui-thread]
#pragma once

#include "service-common/ServiceObjectPtr.h"
#include "ui-engine/HtmlElementTypes.h"
#include "ui-engine/UIHtmlEngine.SO.h"
#include "ui-engine/UIWnd.SO.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// An ordered set of elements, each in use until the set is destroyed; where the engine refused the
// use, the handle is null. The set-wide operations skip null handles and ignore the engine's
// result codes; each returns the set.
class ElementSet {
public:
    ElementSet() = default;
    ElementSet(std::vector<UIElement> elements, WeakServiceObjectPtr<UIWnd> window);
    ElementSet(ElementSet&& other) noexcept = default;
    ElementSet& operator=(ElementSet&&) = delete;
    ~ElementSet();

    bool IsEmpty() const noexcept { return elements_.empty(); }
    std::size_t Size() const noexcept { return elements_.size(); }
    const std::vector<UIElement>& Elements() const noexcept { return elements_; }

    // Sets the style attribute "visibility" to "collapse", or to another value.
    const ElementSet& Collapse() const;
    const ElementSet& SetVisibility(const char16_t* value) const;
    // Sets and clears state bits; the engine restyles at once.
    const ElementSet& ChangeState(std::uint32_t bitsToSet, std::uint32_t bitsToClear) const;
    // Puts UTF-8 markup in; null or no bytes empty the elements instead.
    const ElementSet& SetHtml(const std::uint8_t* html, std::uint32_t length,
                              HtmlPosition position) const;
    // Refreshes the elements (kUpdate... flags).
    const ElementSet& Update(std::uint32_t flags) const;
    // Removes the elements from the tree, under the check rule.
    void Delete() const;
    // Whether every element is in all of these states; true for an empty set.
    bool AllInState(std::uint32_t bits) const;

private:
    friend class ElementReference;

    template <class Operation>
    const ElementSet& ForEach(Operation operation) const;

    std::vector<UIElement> elements_;
    WeakServiceObjectPtr<UIWnd> window_;
};

// A reference to one element, in use while it is held, or empty. Host failures of the operations
// below raise ServiceObjectException by the check rule, except those of SetState and SetStyle,
// which are ignored as in a set.
class ElementReference {
public:
    ElementReference() = default;
    // Takes a use of `element`; empty when the engine refuses it.
    ElementReference(const UIElement& element, const WeakServiceObjectPtr<UIWnd>& window);
    ElementReference(const ElementReference& other);
    ElementReference(ElementReference&& other) noexcept;
    ElementReference& operator=(ElementReference other) noexcept;
    ~ElementReference();

    explicit operator bool() const noexcept { return element_ != nullptr; }
    UIElement AsElement() const noexcept { return {element_, engine_}; }
    const WeakServiceObjectPtr<UIWnd>& Window() const noexcept { return window_; }

    // Another element of the same window, such as the target of an event.
    ElementReference SameWindow(HtmlElementHandle handle) const;

    // Every element below this one that matches; empty for a null or empty selector.
    ElementSet SelectAll(const char* selector) const;
    ElementSet SelectAll(const std::string& selector) const { return SelectAll(selector.c_str()); }
    ElementReference SelectFirst(const char* selector) const;
    ElementReference SelectFirst(const std::string& selector) const
    {
        return SelectFirst(selector.c_str());
    }
    // The element itself or its closest ancestor that matches.
    ElementReference Enclosing(const char* selector) const;
    bool Matches(const char* selector) const;

    ElementReference Parent() const;
    ElementReference NextSibling() const;
    ElementReference PreviousSibling() const;

    // The attribute's text, empty when absent; `present` (may be null) distinguishes the two.
    std::wstring Attribute(const char* name, bool* present = nullptr) const;

    std::uint32_t State() const;
    void SetState(std::uint32_t bitsToSet, std::uint32_t bitsToClear) const;
    void SetStyle(const char* name, const char16_t* value) const;
    // No markup empties the element when it replaces the content, and does nothing elsewhere.
    void SetHtml(std::string_view utf8, HtmlPosition position) const;
    void SetText(std::wstring_view text) const;
    void Update(std::uint32_t flags) const;
    // Follows what has happened already and must not undo it: a failure becomes the thread's last
    // error and goes no further.
    void ScrollIntoView() const;
    void AttachHandler(UIHandler* handler) const;
    void Delete() const;

private:
    // The window, held while its engine is called; empty when this reference is.
    BasicServiceObjectPtr<UIWnd> Lock() const;
    ElementReference Sibling(bool next) const;

    HtmlElementHandle element_ = nullptr;
    UIHtmlEngine* engine_ = nullptr;
    WeakServiceObjectPtr<UIWnd> window_;
};
