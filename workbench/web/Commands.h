// The commands of browser clients: a table of names and functions. docs/web-protocol.md lists their
// arguments. [ui-thread]
#pragma once

#include "web/HttpServer.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace Workbench {

class BrowserSession;
class ClientMessage;
struct OpenDocument;

// A command, kept until it is answered.
struct ClientRequest {
    SocketNumber socket = 0;
    std::uint64_t id = 0;
    std::shared_ptr<const ClientMessage> message;  // null for input
};

// What the reply has besides `id` and `error`; nothing when the command replies later.
using CommandReply = std::optional<nlohmann::ordered_json>;
inline constexpr std::nullopt_t kRepliesLater = std::nullopt;

struct CommandCall {
    BrowserSession& session;
    const ClientRequest& request;

    const ClientMessage& Message() const { return *request.message; }
    // The document that the command names; the second one fails for one that must not be changed.
    OpenDocument& Document() const;
    OpenDocument& EditableDocument() const;
};

struct Command {
    const char* name;
    // May throw; the command is refused then.
    CommandReply (*run)(const CommandCall& call);
    // Waits until no job holds the document, so that the UI thread does not.
    bool waits = false;
    // Names pages and comments by numbers, which are others once the document has another revision.
    bool namesPositions = false;
};

std::span<const Command> EditCommands();
std::span<const Command> FileCommands();
std::span<const Command> ViewCommands();

// Runs the command, at once or when its turn has come, and answers it.
void RunCommand(BrowserSession& session, const ClientRequest& request);

}  // namespace Workbench
