#include "driver/PanelReader.h"

#include <cstdlib>
#include <string_view>

namespace Workbench {

namespace {

using HtmlEngine::Document;
using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;

constexpr std::string_view kBlanks = " \t\r\n\f";

std::string Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

std::vector<std::string> Words(std::string_view text)
{
    std::vector<std::string> words;
    std::size_t start = text.find_first_not_of(kBlanks);
    while (start != std::string_view::npos) {
        const std::size_t end = text.find_first_of(kBlanks, start);
        words.emplace_back(text.substr(start, end - start));
        start = text.find_first_not_of(kBlanks, end);
    }
    return words;
}

ElementHandle First(const Document& panel, ElementHandle root, const std::string& selector)
{
    ElementHandle match = kNoElement;
    panel.SelectFirst(root, selector, match);
    return match;
}

std::vector<ElementHandle> All(const Document& panel, ElementHandle root,
                               const std::string& selector)
{
    std::vector<ElementHandle> matches;
    panel.SelectAll(root, selector, [&](ElementHandle element) {
        matches.push_back(element);
        return true;
    });
    return matches;
}

// The first child with that tag. Lists are long, so what has a fixed place is not searched for.
ElementHandle ChildNamed(const Document& panel, ElementHandle parent, std::string_view tag)
{
    ElementHandle child = panel.Child(parent, 0);
    while (child != kNoElement && panel.TagName(child) != tag) {
        child = panel.NextSibling(child);
    }
    return child;
}

std::string AttributeOf(const Document& panel, ElementHandle element, std::string_view name)
{
    return panel.Attribute(element, name).value_or(std::string());
}

bool IsVisible(const Document& panel, ElementHandle element)
{
    return panel.Style(element, "visibility") == "visible";
}

// The rows of a table, whose parser adds a body around them.
std::vector<ElementHandle> RowsOf(const Document& panel, ElementHandle table)
{
    std::vector<ElementHandle> rows;
    const ElementHandle body = ChildNamed(panel, table, "tbody");
    for (ElementHandle row = panel.Child(body == kNoElement ? table : body, 0); row != kNoElement;
         row = panel.NextSibling(row)) {
        rows.push_back(row);
    }
    return rows;
}

std::string CellText(const Document& panel, ElementHandle row, std::size_t column)
{
    return panel.TextContent(panel.Child(row, column));
}

std::optional<std::string> DateIn(const Document& panel, const std::vector<ElementHandle>& rows,
                                  std::size_t row)
{
    if (row >= rows.size() || panel.Style(rows[row], "display") == "none") {
        return std::nullopt;
    }
    return CellText(panel, rows[row], 1);
}

PanelTooltip ReadTooltip(const Document& panel, ElementHandle popup, const std::string& titleId)
{
    PanelTooltip tooltip;
    if (popup == kNoElement) {
        return tooltip;
    }
    tooltip.linked = !titleId.empty() && AttributeOf(panel, popup, "id") == titleId;
    const std::vector<ElementHandle> tables = All(panel, popup, "table.props-table");
    if (tables.size() != 2) {
        return tooltip;
    }
    if (const auto rows = RowsOf(panel, tables[0]); !rows.empty()) {
        tooltip.subject = CellText(panel, rows[0], 0);
        if (!tooltip.subject.empty() && tooltip.subject.back() == ':') {
            tooltip.subject.pop_back();
        }
        tooltip.title = CellText(panel, rows[0], 1);
    }
    const auto rows = RowsOf(panel, tables[1]);
    tooltip.created = DateIn(panel, rows, 0);
    tooltip.modified = DateIn(panel, rows, 1);
    return tooltip;
}

// An item's text up to its tooltip, which comes last.
std::string OwnText(const Document& panel, ElementHandle item, ElementHandle popup)
{
    std::string text = panel.TextContent(item);
    if (const std::string tooltip = panel.TextContent(popup); !tooltip.empty()) {
        text.erase(std::min(text.rfind(tooltip), text.size()));
    }
    return Trimmed(text);
}

PanelItem ReadItem(const Document& panel, ElementHandle element)
{
    PanelItem item;
    item.annotName = AttributeOf(panel, element, "annot-name");
    item.classes = Words(AttributeOf(panel, element, "class"));
    item.current = (panel.State(element) & HtmlEngine::ElementState::kCurrent) != 0;
    // Markup in the contents may enclose what follows them.
    ElementHandle popup = ChildNamed(panel, element, "popup");
    if (popup == kNoElement) {
        popup = First(panel, element, "popup.annot-details");
    }
    item.tooltip = ReadTooltip(panel, popup, AttributeOf(panel, element, "titleid"));
    const ElementHandle heading = ChildNamed(panel, element, "h3");
    const ElementHandle paragraph = ChildNamed(panel, element, "p");
    item.title =
        heading == kNoElement ? OwnText(panel, element, popup) : panel.TextContent(heading);
    if (paragraph != kNoElement) {
        item.contents = panel.InnerHtml(paragraph);
    }
    return item;
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

PanelPage ReadPage(const Document& panel, ElementHandle element)
{
    PanelPage result;
    const std::string index = AttributeOf(panel, element, "page-item");
    result.index = static_cast<std::uint32_t>(std::strtoul(index.c_str(), nullptr, 10));
    result.caption = panel.TextContent(First(panel, element, "div.icon"));
    result.state = StateOf(panel, First(panel, element, "li[page-index]"));
    // Contents are markup; what looks like an item inside of one is none.
    for (const ElementHandle item :
         All(panel, element, ":root > li > div > ul.comments > li[annot-name]")) {
        result.items.push_back(ReadItem(panel, item));
    }
    return result;
}

}  // namespace

std::optional<PanelView> ReadPanelView(const Document& panel, const std::string& key)
{
    const ElementHandle container = FindContainer(panel, key);
    if (container == kNoElement) {
        return std::nullopt;
    }
    PanelView view;
    view.key = AttributeOf(panel, container, "doc-view-addr");
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
    for (const ElementHandle item :
         All(panel, container, "div.results-container > ul[page-item]")) {
        view.pages.push_back(ReadPage(panel, item));
    }
    return view;
}

}  // namespace Workbench
