#include "driver/PanelReader.h"

#include "html-engine/TreeReader.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace Workbench {

namespace {

using HtmlEngine::Document;
using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;
using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;
using HtmlEngine::TreeReader;

constexpr std::string_view kBlanks = " \t\r\n\f";

std::string Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

ElementHandle First(const Document& panel, ElementHandle root, const std::string& selector)
{
    ElementHandle match = kNoElement;
    panel.SelectFirst(root, selector, match);
    return match;
}

bool IsVisible(const Document& panel, ElementHandle element)
{
    return panel.Style(element, "visibility") == "visible";
}

PanelPageState StateOf(const Document& panel, ElementHandle element)
{
    const std::uint32_t state = panel.State(element);
    if ((state & HtmlEngine::ElementState::kExpanded) != 0) {
        return PanelPageState::kExpanded;
    }
    return (state & HtmlEngine::ElementState::kCollapsed) != 0 ? PanelPageState::kCollapsed
                                                               : PanelPageState::kNone;
}

// Reads items node by node: lists are long, and what has a fixed place is not searched for.
class ItemReader {
public:
    ItemReader(const Document& panel, PanelSink& sink) : panel_(panel), tree_(panel), sink_(sink) {}

    // Contents are markup; what looks like an item inside of one is none.
    void ReadItems(NodeHandle pageItem)
    {
        ForEachChild(pageItem, "li", [this](NodeHandle page) {
            ForEachChild(page, "div", [this](NodeHandle content) {
                ForEachChild(content, "ul", [this](NodeHandle list) {
                    if (HasClass(list, "comments")) {
                        ReadList(list);
                    }
                });
            });
        });
    }

private:
    void ReadList(NodeHandle list)
    {
        ForEachChild(list, "li", [this](NodeHandle element) {
            if (const auto name = AttributeOf(element, "annot-name")) {
                ReadItem(element, *name);
                sink_.TakeItem(item_);
            }
        });
    }

    // The one item is used again and again, and with it the memory of its texts.
    void ReadItem(NodeHandle element, std::string_view name)
    {
        item_.annotName = name;
        item_.classes.clear();
        for (std::size_t i = 0; i < tree_.AttributeCount(element); ++i) {
            if (const auto attribute = tree_.AttributeAt(element, i); attribute.name == "class") {
                item_.classes.emplace_back(attribute.value);
            }
        }
        item_.current = (tree_.State(element) & HtmlEngine::ElementState::kCurrent) != 0;
        // Markup in the contents may enclose what follows them.
        NodeHandle popup = ChildNamed(element, "popup");
        if (popup == kNoNodeHandle) {
            popup = First(panel_, element, "popup.annot-details");
        }
        ReadTooltip(popup, AttributeOf(element, "titleid").value_or(""));
        const NodeHandle heading = ChildNamed(element, "h3");
        if (heading == kNoNodeHandle) {
            item_.title = OwnText(element, popup);
        } else {
            ReadText(heading, item_.title);
        }
        const NodeHandle paragraph = ChildNamed(element, "p");
        item_.contents.reset();
        if (paragraph != kNoNodeHandle) {
            item_.contents = panel_.InnerHtml(paragraph);
        }
    }

    void ReadTooltip(NodeHandle popup, std::string_view titleId)
    {
        PanelTooltip& tooltip = item_.tooltip;
        tooltip.linked = !titleId.empty() && AttributeOf(popup, "id") == titleId;
        tooltip.subject.clear();
        tooltip.title.clear();
        tooltip.created.reset();
        tooltip.modified.reset();
        std::size_t count = 0;
        std::array<NodeHandle, 2> tables{};
        ForEachInside(popup, [&](NodeHandle node) {
            if (tree_.TagName(node) == "table" && HasClass(node, "props-table")) {
                tables[std::min<std::size_t>(count++, 1)] = node;
            }
        });
        if (count != 2) {
            return;
        }
        if (const NodeHandle row = Row(tables[0], 0); row != kNoNodeHandle) {
            ReadText(ElementChild(row, 0), tooltip.subject);
            if (!tooltip.subject.empty() && tooltip.subject.back() == ':') {
                tooltip.subject.pop_back();
            }
            ReadText(ElementChild(row, 1), tooltip.title);
        }
        ReadDate(Row(tables[1], 0), tooltip.created);
        ReadDate(Row(tables[1], 1), tooltip.modified);
    }

    void ReadDate(NodeHandle row, std::optional<std::string>& date) const
    {
        if (row != kNoNodeHandle && panel_.Style(row, "display") != "none") {
            ReadText(ElementChild(row, 1), date.emplace());
        }
    }

    // An item's text up to its tooltip, which comes last.
    std::string OwnText(NodeHandle item, NodeHandle popup) const
    {
        std::string text = panel_.TextContent(item);
        if (const std::string tooltip = panel_.TextContent(popup); !tooltip.empty()) {
            text.erase(std::min(text.rfind(tooltip), text.size()));
        }
        return Trimmed(text);
    }

    // A row of a table, whose parser adds a body around the rows.
    NodeHandle Row(NodeHandle table, std::size_t index) const
    {
        const NodeHandle body = ChildNamed(table, "tbody");
        return ElementChild(body == kNoNodeHandle ? table : body, index);
    }

    void ReadText(NodeHandle top, std::string& text) const
    {
        text.clear();
        ForEachInside(top, [&](NodeHandle node) {
            if (tree_.Kind(node) == NodeKind::Text) {
                text += tree_.Text(node);
            }
        });
    }

    std::optional<std::string_view> AttributeOf(NodeHandle element, std::string_view name) const
    {
        for (std::size_t i = 0; i < tree_.AttributeCount(element); ++i) {
            if (const auto attribute = tree_.AttributeAt(element, i); attribute.name == name) {
                return attribute.value;
            }
        }
        return std::nullopt;
    }

    // Classes come before all other attributes.
    bool HasClass(NodeHandle element, std::string_view name) const
    {
        for (std::size_t i = 0; i < tree_.AttributeCount(element); ++i) {
            const auto attribute = tree_.AttributeAt(element, i);
            if (attribute.name != "class" || attribute.value == name) {
                return attribute.name == "class";
            }
        }
        return false;
    }

    template <class Visit>
    void ForEachChild(NodeHandle parent, std::string_view tag, const Visit& visit) const
    {
        for (NodeHandle child = tree_.FirstChild(parent); child != kNoNodeHandle;
             child = tree_.NextSibling(child)) {
            if (tree_.TagName(child) == tag) {
                visit(child);
            }
        }
    }

    // The first child with that tag.
    NodeHandle ChildNamed(NodeHandle parent, std::string_view tag) const
    {
        NodeHandle child = tree_.FirstChild(parent);
        while (child != kNoNodeHandle && tree_.TagName(child) != tag) {
            child = tree_.NextSibling(child);
        }
        return child;
    }

    NodeHandle ElementChild(NodeHandle parent, std::size_t index) const
    {
        NodeHandle child = tree_.FirstChild(parent);
        for (; child != kNoNodeHandle; child = tree_.NextSibling(child)) {
            if (tree_.Kind(child) == NodeKind::Element && index-- == 0) {
                break;
            }
        }
        return child;
    }

    // Every node below `top`, in document order.
    template <class Visit>
    void ForEachInside(NodeHandle top, const Visit& visit) const
    {
        for (NodeHandle node = tree_.FirstChild(top); node != kNoNodeHandle;) {
            visit(node);
            NodeHandle next = tree_.FirstChild(node);
            for (; next == kNoNodeHandle && node != top; node = tree_.Parent(node)) {
                next = tree_.NextSibling(node);
            }
            node = next;
        }
    }

    const Document& panel_;
    const TreeReader tree_;
    PanelSink& sink_;
    PanelItem item_;
};

}  // namespace

bool ReadPanelView(const Document& panel, const std::string& key, PanelSink& sink)
{
    const ElementHandle container = FindContainer(panel, key);
    if (container == kNoElement) {
        return false;
    }
    PanelView view;
    view.key = panel.Attribute(container, "doc-view-addr").value_or("");
    view.visible = IsVisible(panel, container);
    view.loading = IsLoading(panel, container);
    if (const ElementHandle message =
            First(panel, container, "div.results-container > #NoItemsMessage");
        message != kNoElement) {
        view.noItems = panel.TextContent(message);
    }
    for (std::size_t i = 0; i < kPanelButtons.size(); ++i) {
        const ElementHandle button = First(panel, container, std::string("#") + kPanelButtons[i]);
        view.buttonDisabled[i] = (panel.State(button) & HtmlEngine::ElementState::kDisabled) != 0;
    }
    sink.TakeView(view);

    ItemReader items(panel, sink);
    const auto readPage = [&](ElementHandle element) {
        PanelPage page;
        const std::string index = panel.Attribute(element, "page-item").value_or("");
        page.index = static_cast<std::uint32_t>(std::strtoul(index.c_str(), nullptr, 10));
        page.caption = panel.TextContent(First(panel, element, "div.icon"));
        page.state = StateOf(panel, First(panel, element, "li[page-index]"));
        sink.TakePage(page);
        items.ReadItems(element);
        return true;
    };
    panel.SelectAll(container, "div.results-container > ul[page-item]", readPage);
    return true;
}

std::optional<PanelView> ReadPanelView(const Document& panel, const std::string& key)
{
    PanelView view;
    PanelViewCollector collector(view);
    return ReadPanelView(panel, key, collector) ? std::optional(std::move(view)) : std::nullopt;
}

}  // namespace Workbench
