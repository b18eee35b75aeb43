#include "web/DocumentJson.h"

#include "documents/Records.h"
#include "service-common/UnicodeText.h"
#include "services/AnnotationPlace.h"
#include "web/PanelWriter.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace Workbench {

namespace {

using Documents::EditKind;
using Json = nlohmann::ordered_json;

Json NameOf(std::optional<EditKind> kind)
{
    if (!kind) {
        return nullptr;
    }
    switch (*kind) {
    case EditKind::kAdd:
        return "add";
    case EditKind::kEdit:
        return "edit";
    case EditKind::kRemove:
        return "remove";
    case EditKind::kInsertPage:
        return "insert-page";
    case EditKind::kDeletePage:
        return "delete-page";
    case EditKind::kMovePage:
        return "move-page";
    }
    return nullptr;
}

Json Sides(const _PDRect& rect)
{
    return Json::array({rect.left, rect.bottom, rect.right, rect.top});
}

Json Focused(const OpenDocument& document)
{
    const auto focus = document.view->View().FocusedAnnotation();
    if (!focus.annotation) {
        return nullptr;
    }
    const auto position = PositionOnPage(*document.content, focus.page, focus.annotation.Get());
    return position ? Json{{"page", focus.page}, {"index", *position}} : Json(nullptr);
}

Json Shown(const OpenDocument& document)
{
    const auto target = document.view->View().LastTarget();
    if (!target) {
        return nullptr;
    }
    return {{"count", document.targetsOfFormerViews + document.view->View().TargetCount()},
            {"page", target->pageIndex},
            {"target", Sides(target->target)},
            {"mode", target->mode}};
}

// Start of the text after the file's name, with or without a folder in front of the name.
std::size_t EndOfName(const std::string& warning, const std::string& name)
{
    for (std::size_t found = warning.find(name); found != std::string::npos;
         found = warning.find(name, found + 1)) {
        const std::size_t end = found + name.size();
        const bool begins = found == 0 || warning[found - 1] == '/';
        if (begins && (warning.compare(end, 2, ": ") == 0 || warning.compare(end, 2, " (") == 0)) {
            return end + (warning[end] == ':' ? 2 : 1);
        }
    }
    return 0;
}

}  // namespace

std::vector<std::string> ShortWarnings(const std::vector<std::string>& warnings,
                                       const std::string& name)
{
    constexpr std::size_t kMost = 20;
    constexpr std::size_t kLongest = 200;
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < std::min(warnings.size(), kMost); ++i) {
        std::string line = warnings[i].substr(EndOfName(warnings[i], name));
        if (line.size() > kLongest) {
            line.resize(kLongest);
            line += "...";
        }
        lines.push_back(std::move(line));
    }
    if (warnings.size() > kMost) {
        lines.push_back("and " + std::to_string(warnings.size() - kMost) + " more");
    }
    return lines;
}

Json DescribeDocument(const OpenDocument& document, const char* busy,
                      const std::optional<std::filesystem::path>& recovery)
{
    const Documents::Document& content = *document.content;
    return {{"id", document.number},
            {"name", document.name},
            {"path", document.path ? Json(document.path->string()) : Json(nullptr)},
            {"pages", content.PageCount()},
            {"revision", content.Revision()},
            {"modified", content.Modified()},
            {"readOnly", content.ReadOnly()},
            {"deletionPermitted", content.AnnotationDeletionPermitted()},
            {"busy", busy == nullptr ? Json(nullptr) : Json(busy)},
            {"undo", NameOf(content.UndoKind())},
            {"redo", NameOf(content.RedoKind())},
            {"recovery", recovery ? Json(recovery->string()) : Json(nullptr)},
            {"warnings", ShortWarnings(content.Warnings(), content.Name())},
            {"current", nullptr},
            {"focused", Focused(document)},
            {"shown", Shown(document)}};
}

Json DescribeRow(const HtmlEngine::Document& panel, HtmlEngine::ElementHandle element)
{
    const std::optional<ListRow> row = RowAround(panel, element);
    if (!row) {
        return nullptr;
    }
    return {{"list", IdOf(row->list)},
            {"page", row->page},
            {"item", row->item ? Json(*row->item) : Json(nullptr)}};
}

Json DescribeAnnotation(const Documents::AnnotationRef& annotation, std::size_t index)
{
    if (!annotation) {
        return nullptr;
    }
    const Documents::PropertyBlockRef block = annotation.Get()->properties.Load();
    const Documents::AnnotationProperties& properties = block->properties;
    return {{"index", index},
            {"subtype", properties.subtype},
            {"rect", properties.rect ? Sides(*properties.rect) : Json(nullptr)},
            {"listed", block->listed},
            {"appearance", properties.hasAppearance},
            {"contents", UnicodeText::ToUtf8(properties.contents)},
            {"title", UnicodeText::ToUtf8(properties.title)},
            {"locked", !Documents::Document::DeletionRefusal(annotation.Get()).empty()}};
}

HttpAnswer JsonAnswer(unsigned status, const Json& json)
{
    return {.status = status,
            .contentType = "application/json",
            .body = std::make_shared<const std::string>(ToText(json))};
}

std::string ToText(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Workbench
