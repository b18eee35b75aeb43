#include "services/PanelElements.h"

#include "services/HtmlPanel.h"

#include <charconv>
#include <string_view>

namespace Workbench {

using HtmlEngine::Document;
using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;
using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;
using HtmlEngine::TreeReader;

namespace {

constexpr const char* kContainer = ".panel-content[doc-view-addr]";
constexpr const char* kContainerKey = "doc-view-addr";
constexpr const char* kPreloader = "div.picture[preloader]";
constexpr const char* kList = "div.results-container";
constexpr const char* kCurrentItem = "li[annot-name]:current";
constexpr const char* kPageItem = "li[page-index]";
constexpr const char* kDeleteButton = "#delete";

bool IsVisible(const Document& panel, ElementHandle element)
{
    return panel.Style(element, "visibility") == "visible";
}

// Leading digits; 0 where there are none.
std::uint32_t NumberIn(std::string_view text)
{
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool HasEntry(const TreeReader& tree, NodeHandle element, std::string_view name,
              std::string_view value = {})
{
    const std::size_t count = tree.AttributeCount(element);
    for (std::size_t i = 0; i < count; ++i) {
        const TreeReader::Attribute entry = tree.AttributeAt(element, i);
        if (entry.name == name && (value.empty() || entry.value == value)) {
            return true;
        }
    }
    return false;
}

NodeHandle FirstElementFrom(const TreeReader& tree, NodeHandle node)
{
    while (node != kNoNodeHandle && tree.Kind(node) != NodeKind::Element) {
        node = tree.NextSibling(node);
    }
    return node;
}

bool IsPageList(const TreeReader& tree, NodeHandle element)
{
    const NodeHandle container = tree.Parent(element);
    return HasEntry(tree, element, "class", "results-container") &&
           HasEntry(tree, container, kContainerKey) &&
           tree.TagName(tree.Parent(container)) == "body";
}

bool IsPageItem(const TreeReader& tree, NodeHandle element)
{
    return HasEntry(tree, element, "page-item") && IsPageList(tree, tree.Parent(element));
}

}  // namespace

std::string ContainerKey(const void* documentView)
{
    const auto address = reinterpret_cast<std::uintptr_t>(documentView);
    return std::to_string(static_cast<std::int32_t>(static_cast<std::uint32_t>(address)));
}

std::vector<std::string> ContainerKeys(const Document& panel)
{
    std::vector<std::string> keys;
    panel.SelectAll(panel.Root(), kContainer, [&](ElementHandle container) {
        keys.push_back(panel.Attribute(container, kContainerKey).value_or(""));
        return true;
    });
    return keys;
}

ElementHandle FindContainer(const Document& panel, const std::string& key)
{
    ElementHandle container = kNoElement;
    panel.SelectFirst(panel.Root(), ".panel-content[doc-view-addr=\"" + key + "\"]", container);
    return container;
}

ElementHandle FindVisibleContainer(const Document& panel)
{
    ElementHandle visible = kNoElement;
    panel.SelectAll(panel.Root(), kContainer, [&](ElementHandle container) {
        visible = IsVisible(panel, container) ? container : kNoElement;
        return visible == kNoElement;
    });
    return visible;
}

std::string KeyOfContainerAround(const Document& panel, ElementHandle element)
{
    ElementHandle container = kNoElement;
    panel.Closest(element, kContainer, container);
    return panel.Attribute(container, kContainerKey).value_or("");
}

ElementHandle FindList(const Document& panel, ElementHandle container)
{
    ElementHandle list = kNoElement;
    panel.SelectFirst(container, kList, list);
    return list;
}

bool IsLoading(const Document& panel, ElementHandle container)
{
    ElementHandle preloader = kNoElement;
    panel.SelectFirst(container, kPreloader, preloader);
    return IsVisible(panel, preloader);
}

std::size_t CountLoading(const Document& panel)
{
    std::size_t count = 0;
    panel.SelectAll(panel.Root(), kPreloader, [&](ElementHandle preloader) {
        count += IsVisible(panel, preloader) ? 1U : 0U;
        return true;
    });
    return count;
}

ElementHandle FindCurrentItem(const Document& panel, ElementHandle container)
{
    ElementHandle item = kNoElement;
    panel.SelectFirst(FindList(panel, container), kCurrentItem, item);
    return item;
}

// Read as the panel reads it: the page is that of the page item around it, the index what the name
// holds besides.
std::optional<CommentPosition> PositionOfItem(const Document& panel, ElementHandle item)
{
    ElementHandle pageItem = kNoElement;
    panel.Closest(item, kPageItem, pageItem);
    std::string name = panel.Attribute(item, "annot-name").value_or("");
    if (pageItem == kNoElement || name.empty()) {
        return std::nullopt;
    }
    const std::uint32_t page = NumberIn(panel.Attribute(pageItem, "page-index").value_or(""));
    const std::string prefix = std::to_string(page) + "_";
    if (const std::size_t found = name.find(prefix); found != name.npos) {
        name.erase(found, prefix.size());
    }
    return CommentPosition{page, NumberIn(name)};
}

ListPart ListPartOf(const TreeReader& tree, NodeHandle element)
{
    const std::string_view tag = tree.TagName(element);
    if (tag == "div") {
        return IsPageList(tree, element) ? ListPart::kPages : ListPart::kNone;
    }
    if (tag == "ul") {
        const NodeHandle pageItem = tree.Parent(tree.Parent(tree.Parent(element)));
        const bool isItems = HasEntry(tree, element, "class", "comments") &&
                             IsPageItem(tree, pageItem) && ItemsOf(tree, pageItem) == element;
        return isItems ? ListPart::kItems : ListPart::kNone;
    }
    if (tag == "popup") {
        const NodeHandle items = tree.Parent(tree.Parent(element));
        return ListPartOf(tree, items) == ListPart::kItems ? ListPart::kTooltip : ListPart::kNone;
    }
    return ListPart::kNone;
}

// The first list in what follows the caption.
NodeHandle ItemsOf(const TreeReader& tree, NodeHandle pageItem)
{
    const NodeHandle page = FirstElementFrom(tree, tree.FirstChild(pageItem));
    const NodeHandle caption = FirstElementFrom(tree, tree.FirstChild(page));
    const NodeHandle content = FirstElementFrom(tree, tree.NextSibling(caption));
    const NodeHandle items = FirstElementFrom(tree, tree.FirstChild(content));
    return tree.TagName(items) == "ul" ? items : kNoNodeHandle;
}

bool IsFolded(const TreeReader& tree, NodeHandle pageItem)
{
    const NodeHandle page = FirstElementFrom(tree, tree.FirstChild(pageItem));
    return (tree.State(page) & HtmlEngine::ElementState::kCollapsed) != 0;
}

std::optional<ListRow> RowAround(const Document& panel, ElementHandle element)
{
    const TreeReader tree(panel);
    ListRow row;
    NodeHandle inside = kNoNodeHandle;
    for (NodeHandle at = panel.NodeOf(element); at != kNoNodeHandle; at = tree.Parent(at)) {
        const ListPart part = inside == kNoNodeHandle ? ListPart::kNone : ListPartOf(tree, at);
        if (part == ListPart::kItems) {
            row.item = panel.IndexInParent(panel.ElementOf(inside));
        } else if (part == ListPart::kPages) {
            row.list = panel.ElementOf(at);
            row.page = panel.IndexInParent(panel.ElementOf(inside));
            return row;
        }
        inside = at;
    }
    return std::nullopt;
}

bool IsInDeleteButton(const Document& panel, ElementHandle element)
{
    ElementHandle button = kNoElement;
    panel.Closest(element, kDeleteButton, button);
    return button != kNoElement;
}

ElementHandle FindKeyTarget(const HtmlPanel& panel, ElementHandle container)
{
    const ElementHandle current = FindCurrentItem(*panel.Document(), container);
    return current != kNoElement && panel.IsShown(current) ? current
                                                           : FindList(*panel.Document(), container);
}

}  // namespace Workbench
