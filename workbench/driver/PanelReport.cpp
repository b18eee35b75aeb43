#include "driver/PanelReport.h"

#include <nlohmann/json.hpp>

namespace Workbench {

namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const std::optional<std::string>& text)
{
    return text ? Json(*text) : Json(nullptr);
}

const char* NameOf(PanelPageState state)
{
    switch (state) {
    case PanelPageState::kExpanded:
        return "expanded";
    case PanelPageState::kCollapsed:
        return "collapsed";
    case PanelPageState::kNone:
        break;
    }
    return "none";
}

Json ToJson(const PanelTooltip& tooltip)
{
    return {{"linked", tooltip.linked},
            {"subject", tooltip.subject},
            {"title", tooltip.title},
            {"created", OrNull(tooltip.created)},
            {"modified", OrNull(tooltip.modified)}};
}

Json ToJson(const PanelItem& item)
{
    return {{"annotName", item.annotName},       {"classes", item.classes},
            {"current", item.current},           {"title", item.title},
            {"contents", OrNull(item.contents)}, {"tooltip", ToJson(item.tooltip)}};
}

Json ToJson(const PanelPage& page)
{
    Json items = Json::array();
    for (const PanelItem& item : page.items) {
        items.push_back(ToJson(item));
    }
    return {{"index", page.index},
            {"caption", page.caption},
            {"state", NameOf(page.state)},
            {"items", std::move(items)}};
}

// Markup of contents as lines of text: breaks become line ends, other tags stay.
std::string Indented(std::string markup, const std::string& indent)
{
    constexpr std::string_view kBreak = "<br>";
    std::size_t position = 0;
    while ((position = markup.find(kBreak, position)) != std::string::npos) {
        markup.replace(position, kBreak.size(), "\n" + indent);
        position += indent.size() + 1;
    }
    return indent + markup + "\n";
}

std::string ToText(const PanelItem& item)
{
    std::string text = item.current ? "   > " : "     ";
    text += item.annotName + "  " + item.title;
    if (item.tooltip.subject != item.title) {
        text += ", " + item.tooltip.subject;
    }
    if (item.tooltip.title != item.title) {
        text += ", " + item.tooltip.title;
    }
    if (const auto& date = item.tooltip.modified ? item.tooltip.modified : item.tooltip.created) {
        text += ", " + *date;
    }
    text += "\n";
    if (item.contents) {
        text += Indented(*item.contents, "          ");
    }
    return text;
}

}  // namespace

Json ToJson(const PanelView& view, const std::string& file)
{
    Json buttons = Json::object();
    for (std::size_t i = 0; i < kPanelButtons.size(); ++i) {
        buttons[kPanelButtons[i]] = {{"disabled", view.buttonDisabled[i]}};
    }
    Json pages = Json::array();
    for (const PanelPage& page : view.pages) {
        pages.push_back(ToJson(page));
    }
    return {{"file", file},
            {"key", view.key},
            {"visible", view.visible},
            {"loading", view.loading},
            {"noItems", OrNull(view.noItems)},
            {"buttons", std::move(buttons)},
            {"pages", std::move(pages)}};
}

Json ToJson(const BLDocumentViewObject& view)
{
    const auto request = view.LastTarget();
    const auto orNull = [&](Json value) { return request ? std::move(value) : Json(nullptr); };
    const BLGoToRequest shown = request.value_or(BLGoToRequest{});
    const _PDRect& target = shown.target;
    return {{"page", orNull(shown.pageIndex)},
            {"target", orNull({target.left, target.bottom, target.right, target.top})},
            {"mode", orNull(shown.mode)},
            {"focused", OrNull(view.FocusedPlace())}};
}

nlohmann::ordered_json ToJson(const std::vector<HostCall>& calls)
{
    auto list = nlohmann::ordered_json::array();
    for (const HostCall& call : calls) {
        auto entry = nlohmann::ordered_json::array({call.name});
        for (const HostCall::Argument& argument : call.arguments) {
            std::visit([&](const auto& value) { entry.push_back(value); }, argument);
        }
        list.push_back(std::move(entry));
    }
    return list;
}

std::string ToLine(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ToText(const PanelView& view, const std::string& file)
{
    std::string text = file + (view.visible ? "" : "  (not active)") + "\n";
    if (view.loading) {
        text += "  loading\n";
    }
    if (view.noItems) {
        text += "  " + *view.noItems + "\n";
    }
    for (const PanelPage& page : view.pages) {
        text += "  " + page.caption +
                (page.state == PanelPageState::kCollapsed ? "  (closed)" : "") + "\n";
        for (const PanelItem& item : page.items) {
            text += ToText(item);
        }
    }
    return text;
}

}  // namespace Workbench
