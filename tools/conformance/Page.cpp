#include "Page.h"

#include "Host.h"

#include <algorithm>

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

void Page::Attach(Element* element, const ModuleObject& handler)
{
    handler.AddRef();
    Attachment& attachment = attachments_.emplace_back(Attachment{element, handler, 0});
    const ElementAddress address{element, &engine_};
    attachment.attachedResult = handler.Call(HandlerSlot::kAttached, &window_, &address);
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

std::int32_t Page::UsesLeft() const
{
    std::int32_t left = 0;
    for (const Element& element : elements_) {
        left += element.uses < 0 ? -element.uses : element.uses;
    }
    return left;
}

namespace {

Page& PageOf(HostObject& self)
{
    return self.host->ThePage();
}

using Collector = void (*)(void* context, Element* element, HostObject* engine);

std::uint32_t QueryServiceObject(HostObject& self, std::uint32_t atom, HostObject** object)
{
    return self.host->HandOutNamed(atom, object);
}

std::uint32_t SelectElements(HostObject& self, Element* root, const char* selector,
                             Collector collector, void* context)
{
    for (Element* element : PageOf(self).Select(root, selector)) {
        collector(context, element, &self.host->Of(Peer::kUIHtmlEngine));
    }
    return kResultOk;
}

std::uint32_t UseElement(HostObject&, Element* element)
{
    if (element == nullptr || !element->inTree) {
        return kResultNotFound;
    }
    ++element->uses;
    return kResultOk;
}

std::uint32_t UnuseElement(HostObject&, Element* element)
{
    --element->uses;
    return kResultOk;
}

std::uint32_t GetParent(HostObject&, Element* element, Element** parent)
{
    *parent = element->parent;
    return kResultOk;
}

std::uint32_t GetIndex(HostObject&, Element* element, std::uint32_t* index)
{
    if (element->parent == nullptr || !element->inTree) {
        return kResultNotFound;
    }
    const auto& siblings = element->parent->children;
    *index = static_cast<std::uint32_t>(std::find(siblings.begin(), siblings.end(), element) -
                                        siblings.begin());
    return kResultOk;
}

std::uint32_t GetChildCount(HostObject&, Element* element, std::uint32_t* count)
{
    *count = static_cast<std::uint32_t>(element->children.size());
    return kResultOk;
}

std::uint32_t GetNthChild(HostObject&, Element* element, std::uint32_t index, Element** child)
{
    *child = index < element->children.size() ? element->children[index] : nullptr;
    return kResultOk;
}

std::uint32_t SetHtml(HostObject& self, Element* element, const char* html, std::uint32_t length,
                      std::uint32_t position)
{
    PageOf(self).Change(element, {html, length}, position);
    return kResultOk;
}

std::uint32_t SetText(HostObject& self, Element* element, const char16_t*, std::uint32_t)
{
    PageOf(self).Clear(element);
    return kResultOk;
}

std::uint32_t SetStyleAttribute(HostObject&, Element* element, const char*, const char16_t* value)
{
    element->isVisible = std::u16string_view(value) == u"visible";
    return kResultOk;
}

std::uint32_t GetState(HostObject&, Element* element, std::uint32_t* state)
{
    *state = element->state;
    return kResultOk;
}

std::uint32_t SetState(HostObject&, Element* element, std::uint32_t set, std::uint32_t clear,
                       std::uint32_t)
{
    element->state = (element->state | set) & ~clear;
    return kResultOk;
}

std::uint32_t SelectFirst(HostObject& self, Element* root, const char* selector, Element** element)
{
    const auto found = PageOf(self).Select(root, selector);
    *element = found.empty() ? nullptr : found.front();
    return kResultOk;
}

std::uint32_t SelectEnclosing(HostObject&, Element* element, const char* selector,
                              Element** enclosing)
{
    while (element != nullptr && !Page::Matches(*element, selector)) {
        element = element->parent;
    }
    *enclosing = element;
    return kResultOk;
}

std::uint32_t TestSelector(HostObject&, Element* element, const char* selector, bool* matches)
{
    *matches = Page::Matches(*element, selector);
    return kResultOk;
}

std::uint32_t GetAttribute(HostObject&, Element* element, const char*, const char16_t** value,
                           std::uint32_t* length)
{
    *value = element->value.empty() ? nullptr : element->value.c_str();
    *length = static_cast<std::uint32_t>(element->value.size());
    return kResultOk;
}

// Updating, scrolling.
std::uint32_t Refresh(HostObject&, Element*, std::uint32_t)
{
    return kResultOk;
}

std::uint32_t AttachHandler(HostObject& self, Element* element, void* handler)
{
    PageOf(self).Attach(element, ModuleObject(handler));
    return PageOf(self).Attachments().back().attachedResult;
}

std::uint32_t DeleteElement(HostObject& self, Element* element)
{
    PageOf(self).Remove(element);
    return kResultOk;
}

}  // namespace

void FillWindow(HostObject& window)
{
    Fill<4, QueryServiceObject>(window);
    Fill<32, SelectElements>(window);
}

void FillEngine(HostObject& engine)
{
    Fill<0, UseElement>(engine);
    Fill<1, UnuseElement>(engine);
    Fill<2, GetParent>(engine);
    Fill<3, GetIndex>(engine);
    Fill<4, GetChildCount>(engine);
    Fill<5, GetNthChild>(engine);
    Fill<6, SetHtml>(engine);
    Fill<7, SetText>(engine);
    Fill<8, SetStyleAttribute>(engine);
    Fill<9, GetState>(engine);
    Fill<10, SetState>(engine);
    Fill<11, SelectFirst>(engine);
    Fill<12, SelectEnclosing>(engine);
    Fill<13, TestSelector>(engine);
    Fill<14, GetAttribute>(engine);
    Fill<15, Refresh>(engine);
    Fill<16, Refresh>(engine);
    Fill<17, AttachHandler>(engine);
    Fill<18, DeleteElement>(engine);
}

}  // namespace Conformance
