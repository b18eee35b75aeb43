// Commands that show and query documents and comments.
#include "actions/Edits.h"
#include "web/BrowserSession.h"
#include "web/ClientMessage.h"
#include "web/Commands.h"
#include "web/DocumentJson.h"

#include <nlohmann/json.hpp>

namespace Workbench {

namespace {

using Json = nlohmann::ordered_json;

CommandReply SetReadOnly(const CommandCall& call)
{
    OpenDocument& document = call.Document();
    const bool on = call.Message().Flag("on");
    call.session.ReopenView(document, on);
    if (!on && document.content->ReadOnly()) {
        throw ActionRefused(document.name + " itself does not permit changes",
                            RefusalReason::kReadOnly);
    }
    return CommandDone();
}

CommandReply SetLocale(const CommandCall& call)
{
    call.session.SwitchLanguage(call.Message().Text("locale"));
    return CommandDone();
}

CommandReply Focus(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const ClientMessage& message = call.Message();
    if (!message.OptionalNumber("page")) {
        document.view->View().SetFocus(kPDNoPage, {});
        return CommandDone();
    }
    const CommentPosition position{message.SmallNumber("page"), message.SmallNumber("index")};
    call.session.Show(document, position.page, CommentAt(document, position));
    return CommandDone();
}

CommandReply GiveCurrent(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const CommentPosition position =
        call.session.RequireCurrent(document, call.Message().OptionalNumber("item"));
    return Json{{"page", position.page},
                {"revision", document.content->Revision()},
                {"annotation",
                 DescribeAnnotation(document.content->AnnotationAt(position.page, position.index),
                                    position.index)}};
}

CommandReply GiveAnnotations(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const std::uint32_t page = call.Message().SmallNumber("page");
    if (page >= document.content->PageCount()) {
        throw ActionRefused(document.name + " has no page " + std::to_string(page),
                            RefusalReason::kGone);
    }
    AnnotationLists& lists = call.session.Annotations();
    const auto known = lists.Find(document.number, page, call.Message().OptionalNumber("known"));
    const std::shared_ptr<SentAnnotations> sent = lists.Begin();
    call.session.RunOnWorker<Json>(
        [content = document.content, number = document.number, page, known, sent] {
            return DescribeAnnotations(number, *content, page, known.get(), *sent);
        },
        [request = call.request, number = document.number, page,
         sent](BrowserSession& session, std::future<Json> annotations) {
            session.CheckWarnings(number);
            session.Answer(request, [&] {
                CommandReply reply(annotations.get());
                if (session.Documents().Find(number) != nullptr) {
                    session.Annotations().Keep(number, page, sent);
                }
                return reply;
            });
        });
    return kRepliesLater;
}

constexpr Command kCommands[] = {
    {"activate",
     [](const CommandCall& call) {
         call.session.Activate(call.Document());
         return CommandDone();
     }},
    {"read-only", SetReadOnly, kWaits},
    {"locale", SetLocale},
    {"focus", Focus, false, kNamesPositions},
    {"find", [](const CommandCall& call) { return call.session.Finder().Answer(call); }},
    {"current", GiveCurrent, kWaits},
    {"annotations", GiveAnnotations},
    {"recovery", [](const CommandCall& call) { return call.session.Recovery().Answer(call); },
     kWaits},
    {"end", [](const CommandCall& call) { return call.session.Prompt().Answer(call.request); }},
};

}  // namespace

std::span<const Command> ViewCommands()
{
    return kCommands;
}

}  // namespace Workbench
