// The commands that edit a document.
#include "actions/Edits.h"
#include "service-common/UnicodeText.h"
#include "web/Author.h"
#include "web/BrowserSession.h"
#include "web/ClientMessage.h"
#include "web/Commands.h"

#include <nlohmann/json.hpp>

#include <ctime>

namespace Workbench {

namespace {

using Json = nlohmann::ordered_json;

_PDDateRec Now()
{
    return DateOf(std::time(nullptr));
}

CommentPosition PositionIn(const ClientMessage& message)
{
    return {message.SmallNumber("page"), message.SmallNumber("index")};
}

// The corners of each quad in the order of /QuadPoints.
std::vector<Documents::Quad> QuadsIn(const ClientMessage& message)
{
    constexpr std::size_t kNumbers = 8;
    const std::vector<double> numbers =
        message.OptionalCoordinates("quads").value_or(std::vector<double>{});
    if (numbers.size() % kNumbers != 0) {
        throw MessageError("\"quads\" must have eight numbers for each quad");
    }
    std::vector<Documents::Quad> quads;
    for (std::size_t at = 0; at < numbers.size(); at += kNumbers) {
        const double* const n = numbers.data() + at;
        quads.push_back({{n[0], n[1]}, {n[2], n[3]}, {n[4], n[5]}, {n[6], n[7]}});
    }
    return quads;
}

std::u16string AuthorIn(const CommandCall& call)
{
    const std::optional<std::string> author = call.Message().OptionalText("author");
    return author ? UnicodeText::ToUtf16(*author) : call.session.Author();
}

CommandReply Add(const CommandCall& call)
{
    const ClientMessage& message = call.Message();
    const OpenDocument& document = call.EditableDocument();
    RequireCommentsEditable(document);
    const CommentPosition added = AddComment(
        document, {message.SmallNumber("page"), message.Text("subtype"),
                   message.OptionalText("contents").value_or(""), message.OptionalRect("rect"),
                   Documents::Authorship{AuthorIn(call), Now()}, QuadsIn(message)});
    return Json{{"index", added.index}};
}

CommandReply Edit(const CommandCall& call)
{
    const OpenDocument& document = call.EditableDocument();
    const CommentPosition position = PositionIn(call.Message());
    const std::string contents = call.Message().Text("contents");
    RequireCommentEditable(document, position);
    EditComment(document, position, contents, Now());
    return CommandDone();
}

CommandReply Remove(const CommandCall& call)
{
    const ClientMessage& message = call.Message();
    const OpenDocument& document = call.EditableDocument();
    const CommentPosition position =
        message.OptionalNumber("page")
            ? PositionIn(message)
            : call.session.RequireCurrent(document, message.OptionalNumber("item"));
    RequireCommentEditable(document, position);
    RemoveComment(document, position);
    return CommandDone();
}

// Undo or redo of an edit of contents shows the comment.
CommandReply Travel(const CommandCall& call,
                    std::vector<Documents::Change> (*step)(const OpenDocument&))
{
    const OpenDocument& document = call.EditableDocument();
    const std::vector<Documents::Change> changes = step(document);
    const auto* const first =
        changes.empty() ? nullptr : std::get_if<Documents::AnnotationChange>(&changes.front());
    if (first != nullptr && first->operation == PDAnnotOperation::kPropertiesChanged) {
        call.session.Show(document, first->page, first->annotation);
    }
    return CommandDone();
}

constexpr Command kCommands[] = {
    {"add", Add, kWaits},
    {"edit", Edit, kWaits, kNamesPositions},
    {"remove", Remove, kWaits, kNamesPositions},
    {"insert-page",
     [](const CommandCall& call) {
         InsertPage(call.EditableDocument(), call.Message().SmallNumber("at"));
         return CommandDone();
     },
     kWaits, kNamesPositions},
    {"delete-page",
     [](const CommandCall& call) {
         DeletePage(call.EditableDocument(), call.Message().SmallNumber("page"));
         return CommandDone();
     },
     kWaits, kNamesPositions},
    {"move-page",
     [](const CommandCall& call) {
         MovePage(call.EditableDocument(), call.Message().SmallNumber("from"),
                  call.Message().SmallNumber("to"));
         return CommandDone();
     },
     kWaits, kNamesPositions},
    {"undo", [](const CommandCall& call) { return Travel(call, Undo); }, kWaits},
    {"redo", [](const CommandCall& call) { return Travel(call, Redo); }, kWaits},
};

}  // namespace

std::span<const Command> EditCommands()
{
    return kCommands;
}

}  // namespace Workbench
