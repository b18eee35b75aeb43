#include "driver/PanelReport.h"

#include "driver/JsonText.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace Workbench {

namespace {

using Json = nlohmann::ordered_json;

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

const char* NameOf(bool value)
{
    return value ? "true" : "false";
}

void AppendTextOrNull(std::string& out, const std::optional<std::string>& text)
{
    if (text) {
        AppendJsonText(out, *text);
    } else {
        out += "null";
    }
}

// Markup of contents as lines of text: breaks become line ends, other tags stay.
void AppendIndented(std::string& out, std::string_view markup, std::string_view indent)
{
    constexpr std::string_view kBreak = "<br>";
    out += indent;
    for (std::size_t end = 0; (end = markup.find(kBreak)) != markup.npos;) {
        out.append(markup.substr(0, end)).append("\n").append(indent);
        markup.remove_prefix(end + kBreak.size());
    }
    out.append(markup).append("\n");
}

}  // namespace

// --- JSON ---

JsonReport::JsonReport(TextBlocks& text, const std::string& file) : text_(text)
{
    text_.End() += "{\"file\":" + ToLine(file);
}

void JsonReport::TakeView(const PanelView& view)
{
    std::string& out = text_.End();
    out += ",\"key\":";
    AppendJsonText(out, view.key);
    out.append(",\"visible\":").append(NameOf(view.visible));
    out.append(",\"loading\":").append(NameOf(view.loading));
    out += ",\"noItems\":";
    AppendTextOrNull(out, view.noItems);
    out += ",\"buttons\":{";
    for (std::size_t i = 0; i < kPanelButtons.size(); ++i) {
        out.append(i == 0 ? "\"" : ",\"").append(kPanelButtons[i]);
        out.append("\":{\"disabled\":").append(NameOf(view.buttonDisabled[i])).append("}");
    }
    out += "},\"pages\":[";
}

void JsonReport::EndPage()
{
    if (hasPages_) {
        text_.End() += "]}";
    }
}

void JsonReport::TakePage(const PanelPage& page)
{
    EndPage();
    std::string& out = text_.End();
    out += hasPages_ ? ",{\"index\":" : "{\"index\":";
    AppendNumber(out, page.index);
    out += ",\"caption\":";
    AppendJsonText(out, page.caption);
    out.append(",\"state\":\"").append(NameOf(page.state)).append("\",\"items\":[");
    hasPages_ = true;
    hasItems_ = false;
}

void JsonReport::TakeItem(const PanelItem& item)
{
    std::string& out = text_.End();
    out += hasItems_ ? ",{\"annotName\":" : "{\"annotName\":";
    hasItems_ = true;
    AppendJsonText(out, item.annotName);
    out += ",\"classes\":[";
    for (const std::string& name : item.classes) {
        out += &name == &item.classes.front() ? "" : ",";
        AppendJsonText(out, name);
    }
    out.append("],\"current\":").append(NameOf(item.current)).append(",\"title\":");
    AppendJsonText(out, item.title);
    out += ",\"contents\":";
    AppendTextOrNull(out, item.contents);
    out.append(",\"tooltip\":{\"linked\":").append(NameOf(item.tooltip.linked));
    out += ",\"subject\":";
    AppendJsonText(out, item.tooltip.subject);
    out += ",\"title\":";
    AppendJsonText(out, item.tooltip.title);
    out += ",\"created\":";
    AppendTextOrNull(out, item.tooltip.created);
    out += ",\"modified\":";
    AppendTextOrNull(out, item.tooltip.modified);
    out += "}}";
}

void JsonReport::Finish(const BLDocumentViewObject* view)
{
    EndPage();
    std::string& out = text_.End();
    out += "]";
    if (view != nullptr) {
        out += ",\"view\":" + ToLine(ToJson(*view));
    }
    out += "}";
}

// --- Text ---

TextReport::TextReport(TextBlocks& text, const std::string& file) : text_(text)
{
    text_.End() += file;
}

void TextReport::TakeView(const PanelView& view)
{
    std::string& out = text_.End();
    out += view.visible ? "\n" : "  (not active)\n";
    if (view.loading) {
        out += "  loading\n";
    }
    if (view.noItems) {
        out.append("  ").append(*view.noItems).append("\n");
    }
}

void TextReport::TakePage(const PanelPage& page)
{
    const bool isClosed = page.state == PanelPageState::kCollapsed;
    text_.End().append("  ").append(page.caption).append(isClosed ? "  (closed)\n" : "\n");
}

void TextReport::TakeItem(const PanelItem& item)
{
    std::string& out = text_.End();
    out += item.current ? "   > " : "     ";
    out.append(item.annotName).append("  ").append(item.title);
    if (item.tooltip.subject != item.title) {
        out.append(", ").append(item.tooltip.subject);
    }
    if (item.tooltip.title != item.title) {
        out.append(", ").append(item.tooltip.title);
    }
    if (const auto& date = item.tooltip.modified ? item.tooltip.modified : item.tooltip.created) {
        out.append(", ").append(*date);
    }
    out += "\n";
    if (item.contents) {
        AppendIndented(out, *item.contents, "          ");
    }
}

// --- Parts of scripts' results ---

Json ToJson(const BLDocumentViewObject& view)
{
    const auto request = view.LastTarget();
    const auto orNull = [&](Json value) { return request ? std::move(value) : Json(nullptr); };
    const BLGoToRequest shown = request.value_or(BLGoToRequest{});
    const _PDRect& target = shown.target;
    const auto focused = view.FocusedPlace();
    return {{"page", orNull(shown.pageIndex)},
            {"target", orNull({target.left, target.bottom, target.right, target.top})},
            {"mode", orNull(shown.mode)},
            {"focused", focused ? Json(*focused) : Json(nullptr)}};
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

}  // namespace Workbench
