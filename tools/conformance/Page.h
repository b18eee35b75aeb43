// The panel's page in the tool's host: just the elements that the panel's templates make, found by
// the last part of a selector. Counts the uses of every element. [ui-thread]
#pragma once

#include "HostObject.h"
#include "ModuleObject.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace Conformance {

struct Element {
    std::string kind;      // what the last part of a selector that finds it begins with
    std::u16string value;  // of its one attribute
    Element* parent = nullptr;
    std::vector<Element*> children{};
    std::uint32_t state = 0;
    std::int32_t uses = 0;
    bool inTree = true;
    bool isVisible = false;
};

// What the module passes for an element.
struct ElementAddress {
    Element* handle;
    HostObject* engine;
};

// A handler of the module on an element. The page holds a reference until it is detached.
struct Attachment {
    Element* element;
    ModuleObject handler;
    std::uint32_t attachedResult;
    std::uint32_t detachedResult = 0;
    std::uint32_t referencesLeft = 0;
    bool isAttached = true;
};

class Page {
public:
    Page(HostObject& window, HostObject& engine);

    Element* Body() { return body_; }
    // The first of that kind in the tree; null when there is none.
    Element* Find(std::string_view kind);
    std::vector<Element*> Select(Element* root, std::string_view selector);
    static bool Matches(const Element& element, std::string_view selector);

    void Change(Element* element, std::string_view html, std::uint32_t position);
    void Clear(Element* element);
    void Remove(Element* element);

    // The result of Attached.
    std::uint32_t Attach(Element* element, const ModuleObject& handler);
    // Detaches what is attached to an element or below it, and gives the references back.
    void DetachBelow(Element* element);
    const std::deque<Attachment>& Attachments() const { return attachments_; }

    // Whether a list is being loaded: its preloader shows.
    bool IsLoading();
    // Uses that were begun and not ended, or ended without a beginning.
    std::uint32_t UsesLeft() const;

private:
    Element* Add(Element* parent, const char* kind, std::u16string value = {});
    void AddContainer(std::string_view html);
    void AddPageItem(Element* results, std::string_view html);

    HostObject& window_;
    HostObject& engine_;
    std::deque<Element> elements_;
    std::deque<Attachment> attachments_;
    Element* body_;
};

}  // namespace Conformance
