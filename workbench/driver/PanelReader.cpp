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

ElementHandle First(const Document& page, ElementHandle root, const std::string& selector)
{
    ElementHandle match = kNoElement;
    page.SelectFirst(root, selector, match);
    return match;
}

std::vector<ElementHandle> All(const Document& page, ElementHandle root,
                               const std::string& selector)
{
    std::vector<ElementHandle> matches;
    page.SelectAll(root, selector, [&](ElementHandle element) {
        matches.push_back(element);
        return true;
    });
    return matches;
}

// The first child with that tag. Lists are long, so what has a fixed place is not searched for.
ElementHandle ChildNamed(const Document& page, ElementHandle parent, std::string_view tag)
{
    ElementHandle child = page.Child(parent, 0);
    while (child != kNoElement && page.TagName(child) != tag) {
        child = page.NextSibling(child);
    }
    return child;
}

std::string AttributeOf(const Document& page, ElementHandle element, std::string_view name)
{
    return page.Attribute(element, name).value_or(std::string());
}

bool IsVisible(const Document& page, ElementHandle element)
{
    return page.Style(element, "visibility") == "visible";
}

// The rows of a table, whose parser adds a body around them.
std::vector<ElementHandle> RowsOf(const Document& page, ElementHandle table)
{
    std::vector<ElementHandle> rows;
    const ElementHandle body = ChildNamed(page, table, "tbody");
    for (ElementHandle row = page.Child(body == kNoElement ? table : body, 0); row != kNoElement;
         row = page.NextSibling(row)) {
        rows.push_back(row);
    }
    return rows;
}

std::string CellText(const Document& page, ElementHandle row, std::size_t column)
{
    return page.TextContent(page.Child(row, column));
}

std::optional<std::string> DateIn(const Document& page, const std::vector<ElementHandle>& rows,
                                  std::size_t row)
{
    if (row >= rows.size() || page.Style(rows[row], "display") == "none") {
        return std::nullopt;
    }
    return CellText(page, rows[row], 1);
}

PanelTooltip ReadTooltip(const Document& page, ElementHandle popup, const std::string& titleId)
{
    PanelTooltip tooltip;
    if (popup == kNoElement) {
        return tooltip;
    }
    tooltip.linked = !titleId.empty() && AttributeOf(page, popup, "id") == titleId;
    const std::vector<ElementHandle> tables = All(page, popup, "table.props-table");
    if (tables.size() != 2) {
        return tooltip;
    }
    if (const auto rows = RowsOf(page, tables[0]); !rows.empty()) {
        tooltip.subject = CellText(page, rows[0], 0);
        if (!tooltip.subject.empty() && tooltip.subject.back() == ':') {
            tooltip.subject.pop_back();
        }
        tooltip.title = CellText(page, rows[0], 1);
    }
    const auto rows = RowsOf(page, tables[1]);
    tooltip.created = DateIn(page, rows, 0);
    tooltip.modified = DateIn(page, rows, 1);
    return tooltip;
}

// An item's text up to its tooltip, which comes last.
std::string OwnText(const Document& page, ElementHandle item, ElementHandle popup)
{
    std::string text = page.TextContent(item);
    if (const std::string tooltip = page.TextContent(popup); !tooltip.empty()) {
        text.erase(std::min(text.rfind(tooltip), text.size()));
    }
    return Trimmed(text);
}

PanelItem ReadItem(const Document& page, ElementHandle element)
{
    PanelItem item;
    item.annotName = AttributeOf(page, element, "annot-name");
    item.classes = Words(AttributeOf(page, element, "class"));
    item.current = (page.State(element) & HtmlEngine::ElementState::kCurrent) != 0;
    // Markup in the contents may enclose what follows them.
    ElementHandle popup = ChildNamed(page, element, "popup");
    if (popup == kNoElement) {
        popup = First(page, element, "popup.annot-details");
    }
    item.tooltip = ReadTooltip(page, popup, AttributeOf(page, element, "titleid"));
    const ElementHandle heading = ChildNamed(page, element, "h3");
    const ElementHandle paragraph = ChildNamed(page, element, "p");
    item.title = heading == kNoElement ? OwnText(page, element, popup) : page.TextContent(heading);
    if (paragraph != kNoElement) {
        item.contents = page.InnerHtml(paragraph);
    }
    return item;
}

PanelPageState StateOf(const Document& page, ElementHandle element)
{
    const std::uint32_t state = page.State(element);
    if ((state & HtmlEngine::ElementState::kExpanded) != 0) {
        return PanelPageState::kExpanded;
    }
    return (state & HtmlEngine::ElementState::kCollapsed) != 0 ? PanelPageState::kCollapsed
                                                               : PanelPageState::kNone;
}

PanelPage ReadPage(const Document& page, ElementHandle element)
{
    PanelPage result;
    const std::string index = AttributeOf(page, element, "page-item");
    result.index = static_cast<std::uint32_t>(std::strtoul(index.c_str(), nullptr, 10));
    result.caption = page.TextContent(First(page, element, "div.icon"));
    result.state = StateOf(page, First(page, element, "li[page-index]"));
    // Contents are markup; what looks like an item inside of one is none.
    for (const ElementHandle item :
         All(page, element, ":root > li > div > ul.comments > li[annot-name]")) {
        result.items.push_back(ReadItem(page, item));
    }
    return result;
}

}  // namespace

std::optional<PanelView> ReadPanelView(const Document& page, const std::string& key)
{
    const ElementHandle container = FindContainer(page, key);
    if (container == kNoElement) {
        return std::nullopt;
    }
    PanelView view;
    view.key = AttributeOf(page, container, "doc-view-addr");
    view.visible = IsVisible(page, container);
    view.loading = IsLoading(page, container);
    if (const ElementHandle message =
            First(page, container, "div.results-container > #NoItemsMessage");
        message != kNoElement) {
        view.noItems = page.TextContent(message);
    }
    for (std::size_t i = 0; i < kPanelButtons.size(); ++i) {
        const ElementHandle button = First(page, container, std::string("#") + kPanelButtons[i]);
        view.buttonDisabled[i] = (page.State(button) & HtmlEngine::ElementState::kDisabled) != 0;
    }
    for (const ElementHandle item : All(page, container, "div.results-container > ul[page-item]")) {
        view.pages.push_back(ReadPage(page, item));
    }
    return view;
}

}  // namespace Workbench
