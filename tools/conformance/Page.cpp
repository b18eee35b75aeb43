#include "Page.h"

#include <algorithm>
#include <cstdlib>

namespace Conformance {

namespace {

constexpr std::uint32_t kReplaceContent = 0;
constexpr std::uint32_t kReplaceWhole = 3;

// The text between two marks; empty when the first is not there.
std::string_view Between(std::string_view text, std::string_view begin, std::string_view end)
{
    const std::size_t at = text.find(begin);
    if (at == text.npos) {
        return {};
    }
    text.remove_prefix(at + begin.size());
    return text.substr(0, text.find(end));
}

std::u16string Wide(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::string_view LastPart(std::string_view selector)
{
    return selector.substr(selector.rfind(' ') + 1);
}

void Collect(Element& element, std::string_view selector, std::vector<Element*>& found)
{
    for (Element* child : element.children) {
        if (Page::Matches(*child, selector)) {
            found.push_back(child);
        }
        Collect(*child, selector, found);
    }
}

}  // namespace

Page::Page(HostObject& window, HostObject& engine)
    : window_(window), engine_(engine), body_(Add(nullptr, "body"))
{
}

Element* Page::Add(Element* parent, const char* kind, std::u16string value)
{
    Element& element = elements_.emplace_back(Element{kind, std::move(value), parent});
    if (parent != nullptr) {
        parent->children.push_back(&element);
    }
    return &element;
}

bool Page::Matches(const Element& element, std::string_view selector)
{
    const std::string_view part = LastPart(selector);
    const std::string_view value = Between(part, "=\"", "\"");
    return part.starts_with(element.kind) && (value.empty() || Wide(value) == element.value) &&
           (part.find(":current") == part.npos || (element.state & kCurrent) != 0);
}

std::vector<Element*> Page::Select(Element* root, std::string_view selector)
{
    if (LastPart(selector) == "*") {
        return root->children;
    }
    std::vector<Element*> found;
    Collect(*root, selector, found);
    return found;
}

Element* Page::Find(std::string_view kind)
{
    const auto found = Select(body_, kind);
    return found.empty() ? nullptr : found.front();
}

void Page::AddContainer(std::string_view html)
{
    Element* const container =
        Add(body_, ".panel-content", Wide(Between(html, "doc-view-addr=\"", "\"")));
    for (const char* button :
         {"#expand-all", "#collapse-all", "#reply", "#delete", "#move-top", "#move-bottom"}) {
        Add(container, button);
    }
    Add(container, "div.picture[preloader]");
    Add(container, "div.results-container");
}

void Page::AddPageItem(Element* results, std::string_view html)
{
    const std::string_view name = Between(html, "annot-name=\"", "\"");
    if (name.empty()) {
        Add(results, "#NoItemsMessage", u"There are no items to show");
        return;
    }
    Element* const page = Add(Add(results, "ul[page-item", u"0"), "li[page-index", u"0");
    Add(page, "div.icon");
    Add(Add(Add(page, "div:box"), "ul.comments"), "li[annot-name", Wide(name));
}

void Page::Change(Element* element, std::string_view html, std::uint32_t position)
{
    if (element == body_) {
        AddContainer(html);
        return;
    }
    Element* results = element;
    while (results->kind != "div.results-container" && results->parent != nullptr) {
        results = results->parent;
    }
    if (position == kReplaceWhole && element->kind == "li[annot-name") {
        Element* const list = element->parent;
        Remove(element);
        Add(list, "li[annot-name", Wide(Between(html, "annot-name=\"", "\"")));
        return;
    }
    if (position == kReplaceContent) {
        Clear(element);
    } else if (position == kReplaceWhole) {
        Remove(element);
    }
    AddPageItem(results, html);
}

void Page::Clear(Element* element)
{
    while (!element->children.empty()) {
        Remove(element->children.back());
    }
}

void Page::Remove(Element* element)
{
    DetachBelow(element);
    Clear(element);
    element->inTree = false;
    if (element->parent != nullptr) {
        std::erase(element->parent->children, element);
    }
}

std::uint32_t Page::Attach(Element* element, const ModuleObject& handler)
{
    handler.AddRef();
    Attachment& attachment = attachments_.emplace_back(Attachment{element, handler, 0});
    const ElementAddress address{element, &engine_};
    attachment.attachedResult = handler.Call(HandlerSlot::kAttached, &window_, &address);
    return attachment.attachedResult;
}

void Page::DetachBelow(Element* element)
{
    for (Attachment& attachment : attachments_) {
        const Element* above = attachment.element;
        while (above != nullptr && above != element) {
            above = above->parent;
        }
        if (attachment.isAttached && above == element) {
            attachment.isAttached = false;
            attachment.detachedResult = attachment.handler.Call(HandlerSlot::kDetached);
            attachment.referencesLeft = attachment.handler.Release();
        }
    }
}

bool Page::IsLoading()
{
    const auto preloaders = Select(body_, "div.picture[preloader]");
    return std::any_of(preloaders.begin(), preloaders.end(),
                       [](const Element* preloader) { return preloader->isVisible; });
}

std::uint32_t Page::UsesLeft() const
{
    std::uint32_t left = 0;
    for (const Element& element : elements_) {
        left += static_cast<std::uint32_t>(std::abs(element.uses));
    }
    return left;
}

}  // namespace Conformance
