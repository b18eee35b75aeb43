// Searches of browser clients for comments: the command `find`. A search runs on a worker thread;
// its result is kept for each client, so that going on to another match takes no search.
// [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "web/Commands.h"
#include "web/CommentSearch.h"
#include "web/HttpServer.h"

#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Workbench {

class BrowserSession;

class CommentFinder {
public:
    // The session outlives this.
    explicit CommentFinder(BrowserSession& session) : session_(session) {}

    // Makes the match that the command asks for the current comment, and replies with its number. A
    // command that still waits for its search is refused (kSuperseded) when the client sends
    // another.
    CommandReply Answer(const CommandCall& call);

    // Gives up the search of a client that has gone.
    void Forget(SocketNumber client);

private:
    using Wanted = std::shared_ptr<std::atomic<bool>>;

    struct Search {
        DocumentNumber document = 0;
        std::string text;
        std::optional<FoundComments> found;    // of the last search that has ended
        Wanted wanted;                         // of the one that was begun last
        std::optional<ClientRequest> waiting;  // while that one runs
    };

    void Begin(SocketNumber client, const OpenDocument& document, Search& search);
    void Land(SocketNumber client, const Wanted& wanted, std::future<FoundComments> result);
    CommandReply Show(const CommandCall& call, const OpenDocument& document,
                      const FoundComments& found);

    BrowserSession& session_;
    std::map<SocketNumber, Search> searches_;
};

}  // namespace Workbench
