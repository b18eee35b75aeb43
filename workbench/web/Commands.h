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

// A command that waits for its reply.
struct ClientRequest {
    SocketNumber socket = 0;
    std::uint64_t id = 0;
    std::shared_ptr<const ClientMessage> message;  // null for input
};

// Members of the reply besides `id` and `error`; nullopt when the command replies later.
using CommandReply = std::optional<nlohmann::ordered_json>;
inline constexpr std::nullopt_t kRepliesLater = std::nullopt;
CommandReply CommandDone();  // a reply without further members

struct CommandCall {
    BrowserSession& session;
    const ClientRequest& request;

    const ClientMessage& Message() const { return *request.message; }
    // The document that the command names; EditableDocument fails for a read-only one.
    OpenDocument& Document() const;
    OpenDocument& EditableDocument() const;
};

struct Command {
    const char* name;
    // An exception refuses the command.
    CommandReply (*run)(const CommandCall& call);
    // Deferred until no job holds the document's lock, so that the UI thread never blocks on it.
    bool waits = false;
    // Names pages and comments by position, which is valid for one revision of the document.
    bool namesPositions = false;
};

// Words for rows of the tables.
inline constexpr bool kWaits = true;
inline constexpr bool kNamesPositions = true;

std::span<const Command> EditCommands();
std::span<const Command> FileCommands();
std::span<const Command> ViewCommands();

// Runs the command, at once or after the work that it waits for, and sends the reply.
void RunCommand(BrowserSession& session, const ClientRequest& request);

}  // namespace Workbench
