// What stands in for the parts that a real host has: its objects, one of each interface, and an
// HTML engine that knows elements, the markup that the panel puts in and the selectors that it asks
// for. Keys, move buttons and further views want more: whole selectors, with `:first-child` and
// `:last-child`, and positions among children (GetIndex, GetChildCount, GetNthChild). [ui-thread]
#pragma once

#include "platform/EmbeddedResources.h"
#include "service-common/UnicodeText.h"
#include "ui-engine/PlainHostObject.h"
#include "ui-engine/UIHandler.SO.h"
#include "ui-engine/UIHtmlEngine.SO.h"
#include "ui-engine/UIWnd.SO.h"

#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// --- Objects: this host has one of each interface ------------------------------------------------
struct ListedObject {
    ServiceObject* object;
    std::function<std::size_t()> countListeners;
};
inline std::vector<ListedObject>& Objects()
{
    static std::vector<ListedObject> objects;
    return objects;
}

template <class I>
auto MakeListed()
{
    const auto made = PlainHostObject<I>::Make();
    Objects().push_back({made->Get(), [object = made.Get()] { return object->ListenerCount(); }});
    return made;
}
template <class I>
const auto g_object = MakeListed<I>();

template <class M, class Function>
void Offer(Function function)
{
    g_object<typename M::Interface>->template Offer<M>(function);
}

// Method `M` hands out the object of interface `I`.
template <class M, class I>
void OfferObject()
{
    g_object<typename M::Interface>->template OfferObject<M>(*g_object<I>.Get());
}

// --- The page ------------------------------------------------------------------------------------
struct _HtmlElement {      // the SDK leaves to the host what a handle points to
    _HtmlElement* parent;  // null for the root, and out of the page
    unsigned depth;
    std::string tag;        // ` li .text annot-name="0_1" `
    std::string text = {};  // UTF-8, without that of the elements inside
    std::u16string visibility = {};
    std::uint32_t state = 0;
    BasicServiceObjectPtr<UIHandler> handler = {};
    std::list<_HtmlElement>::iterator place = {};
};
using Element = _HtmlElement;
using Place = std::list<Element>::iterator;

inline std::list<Element> g_page;     // in the order of their start tags, below a root
inline std::list<Element> g_removed;  // kept, so that their handles stay good

// The place behind the element and everything inside it.
inline Place EndOf(const Element& element)
{
    Place end = std::next(element.place);
    while (end != g_page.end() && end != g_removed.end() && end->depth > element.depth) ++end;
    return end;
}

inline std::string_view Trimmed(std::string_view text)
{
    const std::size_t begin = std::min(text.find_first_not_of(" \r\n"), text.size());
    return text.substr(begin, text.find_last_not_of(" \r\n") + 1 - begin);
}

// Reads markup into `parent`. Every element must be ended, but `br` and `link`.
inline void Read(std::string_view html, Place place, Element* parent)
{
    Element* open = parent;
    for (std::size_t at = html.find('<'); at != html.npos; at = html.find('<')) {
        open->text += Trimmed(html.substr(0, at));
        const std::string tag(html.substr(at + 1, html.find('>', at) - at - 1));
        html.remove_prefix(std::min(at + tag.size() + 2, html.size()));
        if (tag[0] == '/') {
            open = open == parent ? open : open->parent;
        } else if (tag[0] != '!') {
            const Place added = g_page.insert(place, {open, open->depth + 1, ' ' + tag + ' '});
            added->place = added;
            open = tag.substr(0, 2) == "br" || tag.substr(0, 4) == "link" ? open : &*added;
        }
    }
    open->text += Trimmed(html);
}

// Takes an element, with everything inside it, out of the page, and detaches the handlers.
inline void Remove(Element& element)
{
    if (element.parent == nullptr) return;
    const Place end = EndOf(element);
    for (Place each = element.place; each != end; ++each) {
        each->parent = nullptr;
        const auto handler = std::exchange(each->handler, nullptr);
        CallMethodUnchecked<UIHandler::Detached>(handler.Get());
    }
    g_removed.splice(g_removed.end(), g_page, element.place, end);
}

inline void SetHtml(Element& element, std::string_view html, HtmlPosition position)
{
    const bool replaces = position == HtmlPosition::kReplaceContent;
    while (replaces && std::next(element.place) != EndOf(element)) {
        Remove(*std::next(element.place));
    }
    const Place place = position == HtmlPosition::kInsertFirst    ? std::next(element.place)
                        : position == HtmlPosition::kInsertBefore ? element.place
                                                                  : EndOf(element);
    Read(html, place, position <= HtmlPosition::kAppendLast ? &element : element.parent);
    if (position == HtmlPosition::kReplaceWhole) Remove(element);
}

// Whether the element passes the last part of a selector. The parts before it go without saying in
// this page; that elements are `:first-child` or `:last-child`, too.
inline bool Matches(const Element& element, std::string_view selector)
{
    const auto has = [&](const std::string& text) { return element.tag.find(text) != text.npos; };
    std::string_view tests = selector.substr(selector.rfind(' ') + 1);
    while (!tests.empty()) {
        const std::string test(tests.substr(0, tests.find_first_of(".#[:", 1)));
        const std::string name = test.substr(1);
        tests.remove_prefix(test.size());
        if (!(test[0] == '['       ? has(' ' + name.substr(0, name.size() - 1))
              : test[0] == '#'     ? has(" id=\"" + name + '"')
              : test[0] == '.'     ? has(" class=\"" + name + '"') || has(" class=\"" + name + ' ')
              : test == ":current" ? (element.state & kStateCurrent) != 0
              : test[0] == ':'     ? true
                                   : test == "*" || element.tag.find(' ' + test + ' ') == 0)) {
            return false;
        }
    }
    return true;
}

// The elements inside `root` that match, in the order of the page.
inline std::vector<Element*> Select(const Element& root, std::string_view selector)
{
    std::vector<Element*> found;
    for (Place each = std::next(root.place); each != EndOf(root); ++each) {
        const bool isChild = each->parent == &root;
        const bool counts = isChild || selector != ":root > *";
        if (counts && Matches(*each, selector)) found.push_back(&*each);
    }
    return found;
}

inline Element* First(const Element& root, std::string_view selector)
{
    const auto found = Select(root, selector);
    return found.empty() ? nullptr : found.front();
}

// The value of an attribute; empty when there is none.
inline std::string_view Attribute(const Element& element, const std::string& name)
{
    const std::size_t at = element.tag.find(' ' + name + "=\"");
    if (at == std::string::npos) return {};
    const std::string_view value = std::string_view(element.tag).substr(at + name.size() + 3);
    return value.substr(0, value.find('"'));
}

inline void LoadPage(const Platform::ResourceBytes& html)
{
    g_page.push_back({nullptr, 0, ""});
    g_page.front().place = g_page.begin();
    Read({reinterpret_cast<const char*>(html.data), html.size}, g_page.end(), &g_page.front());
}

inline int g_usesHeld = 0;  // of elements

inline void OfferPage()
{
    using Engine = UIHtmlEngine;
    Offer<UIWnd::SelectElements>(
        [](Element* root, const char* selector, UIWnd::Collector collect, void* context) {
            for (Element* each : Select(*root, selector))
                collect(context, each, g_object<UIHtmlEngine>->Get());
        });
    Offer<Engine::UseElement>([](Element* element) {
        if (element->parent == nullptr) return kResultNotFound;
        return ++g_usesHeld, kResultOk;
    });
    Offer<Engine::UnuseElement>([](Element*) { --g_usesHeld; });
    Offer<Engine::SelectFirst>([](Element* root, const char* selector, Element** found) {
        *found = First(*root, selector);
    });
    Offer<Engine::SelectEnclosing>([](Element* element, const char* selector, Element** found) {
        while (element != nullptr && !Matches(*element, selector)) element = element->parent;
        *found = element;
    });
    Offer<Engine::TestSelector>([](Element* element, const char* selector, bool* matches) {
        *matches = Matches(*element, selector);
    });
    Offer<Engine::GetParent>([](Element* element, Element** out) { *out = element->parent; });
    Offer<Engine::GetAttribute>(
        [](Element* element, const char* name, const char16_t** value, std::uint32_t* length) {
            static std::u16string text;  // borrowed until the next call
            text = UnicodeText::ToUtf16(Attribute(*element, name));
            *value = text.empty() ? nullptr : text.c_str();
            *length = static_cast<std::uint32_t>(text.size());
        });
    Offer<Engine::GetState>(
        [](Element* element, std::uint32_t* state) { *state = element->state; });
    Offer<Engine::SetState>(
        [](Element* element, std::uint32_t set, std::uint32_t clear, std::uint32_t) {
            Element* holder = element;  // in which one element is current
            while (holder->parent != nullptr && !holder->handler) holder = holder->parent;
            for (Place each = holder->place; each != EndOf(*holder); ++each) {
                each->state &= ~(set & kStateCurrent);
            }
            if ((set & kStateExpanded) != 0) clear |= kStateCollapsed;
            if ((set & kStateCollapsed) != 0) clear |= kStateExpanded;
            element->state = (element->state | set) & ~clear;
        });
    Offer<Engine::SetStyleAttribute>(
        [](Element* element, const char*, const char16_t* value) { element->visibility = value; });
    Offer<Engine::SetHtml>([](Element* element, const std::uint8_t* html, std::uint32_t length,
                              HtmlPosition position) {
        SetHtml(*element, {reinterpret_cast<const char*>(html), length}, position);
    });
    Offer<Engine::DeleteElement>([](Element* element) { Remove(*element); });
    Offer<Engine::AttachHandler>([](Element* element, UIHandler* handler) {
        element->handler = BasicServiceObjectPtr<UIHandler>::Retain(handler);
        const UIElement place{element, g_object<UIHtmlEngine>->Get()};
        return CallMethodUnchecked<UIHandler::Attached>(handler, g_object<UIWnd>->Get(), &place)
            .code;
    });
}
