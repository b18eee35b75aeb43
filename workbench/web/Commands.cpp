#include "web/Commands.h"

#include "actions/Edits.h"
#include "web/BrowserSession.h"
#include "web/ClientMessage.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

namespace Workbench {

namespace {

const Command& FindCommand(const ClientRequest& request)
{
    const std::string name = request.message->Text("name");
    for (const auto commands : {EditCommands(), FileCommands(), ViewCommands()}) {
        const auto found = std::find_if(commands.begin(), commands.end(),
                                        [&](const Command& known) { return known.name == name; });
        if (found != commands.end()) {
            return *found;
        }
    }
    throw ActionRefused("there is no command \"" + name + "\"");
}

void RequireRevision(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const auto revision = call.Message().OptionalNumber("revision");
    if (revision && *revision != document.content->Revision()) {
        throw ActionRefused(document.name + " has been changed meanwhile", RefusalReason::kChanged);
    }
}

CommandReply RunNow(const Command& command, const CommandCall& call)
{
    if (command.namesPositions) {
        RequireRevision(call);
    }
    return command.run(call);
}

}  // namespace

CommandReply CommandDone()
{
    return nlohmann::ordered_json::object();
}

OpenDocument& CommandCall::Document() const
{
    return session.Documents().Require(Message().SmallNumber("document"));
}

OpenDocument& CommandCall::EditableDocument() const
{
    OpenDocument& document = Document();
    RequireEditable(document);
    return document;
}

void RunCommand(BrowserSession& session, const ClientRequest& request)
{
    session.Answer(request, [&]() -> CommandReply {
        const Command& command = FindCommand(request);
        const CommandCall call{session, request};
        if (!command.waits) {
            return RunNow(command, call);
        }
        OpenDocument& document = call.Document();
        session.Jobs().RunWhenFree(
            document, [&session, &command, request, name = document.name](OpenDocument* free) {
                session.Answer(request, [&]() -> CommandReply {
                    if (free == nullptr) {
                        throw ActionRefused(name + " was closed", RefusalReason::kGone);
                    }
                    return RunNow(command, {session, request});
                });
            });
        return kRepliesLater;
    });
}

}  // namespace Workbench
