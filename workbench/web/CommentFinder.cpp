#include "web/CommentFinder.h"

#include "web/BrowserSession.h"
#include "web/ClientMessage.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace Workbench {

namespace {

using Positions = std::vector<CommentPosition>;

enum class Step : std::uint8_t { kNone, kHere, kNext, kPrevious };

Step StepIn(const ClientMessage& message)
{
    const std::string step = message.OptionalText("step").value_or("");
    constexpr const char* kNames[] = {"", "here", "next", "previous"};
    const auto found = std::find(std::begin(kNames), std::end(kNames), step);
    if (found == std::end(kNames)) {
        throw MessageError("there is no step \"" + step + "\"");
    }
    return static_cast<Step>(found - std::begin(kNames));
}

bool IsBefore(const CommentPosition& left, const CommentPosition& right)
{
    return std::pair(left.page, left.index) < std::pair(right.page, right.index);
}

// The match that a step leads to from the current comment; the end when it leads nowhere. Beyond
// the last match comes the first one.
Positions::const_iterator Follow(Step step, const Positions& positions,
                                 const std::optional<CommentPosition>& current)
{
    const auto [first, last] =
        current ? std::equal_range(positions.begin(), positions.end(), *current, IsBefore)
                : std::pair(positions.begin(), positions.begin());
    switch (step) {
    case Step::kNone:
        return first == last ? positions.end() : first;
    case Step::kHere:
    case Step::kNext: {
        const auto next = step == Step::kHere ? first : last;
        return next == positions.end() ? positions.begin() : next;
    }
    case Step::kPrevious:
        return positions.empty() ? positions.end()
                                 : std::prev(first == positions.begin() ? positions.end() : first);
    }
    return positions.end();
}

}  // namespace

CommandReply CommentFinder::Answer(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const std::string text = call.Message().Text("text");
    StepIn(call.Message());
    if (text.empty()) {
        throw MessageError("\"text\" is empty");
    }
    const SocketNumber client = call.request.socket;
    Search& search = searches_[client];
    const bool isSame = search.document == document.number && search.text == text;
    if (isSame && search.found && search.found->revision == document.content->Revision()) {
        return Show(call, document, *search.found);
    }
    const auto superseded = std::exchange(search.waiting, call.request);
    if (!isSame || !superseded) {
        search.document = document.number;
        search.text = text;
        Begin(client, document, search);
    }
    if (superseded) {
        session_.Refuse(*superseded, "another search followed", RefusalReason::kSuperseded);
    }
    return kRepliesLater;
}

void CommentFinder::Forget(SocketNumber client)
{
    if (const auto search = searches_.extract(client); !search.empty() && search.mapped().wanted) {
        *search.mapped().wanted = false;
    }
}

void CommentFinder::Begin(SocketNumber client, const OpenDocument& document, Search& search)
{
    if (search.wanted) {
        *search.wanted = false;
    }
    search.found.reset();
    search.wanted = std::make_shared<std::atomic<bool>>(true);
    session_.RunOnWorker<FoundComments>(
        [content = document.content, text = search.text, wanted = search.wanted] {
            return FindComments(*content, text, *wanted);
        },
        [client, wanted = search.wanted](BrowserSession& session,
                                         std::future<FoundComments> result) {
            session.Finder().Land(client, wanted, std::move(result));
        });
}

// Drops the result of a search that another one followed, and searches anew what has changed since.
void CommentFinder::Land(SocketNumber client, const Wanted& wanted,
                         std::future<FoundComments> result)
{
    const auto entry = searches_.find(client);
    if (entry == searches_.end() || entry->second.wanted != wanted) {
        return;
    }
    Search& search = entry->second;
    const ClientRequest request = *std::exchange(search.waiting, std::nullopt);
    session_.CheckWarnings(search.document);
    session_.Answer(request, [&]() -> CommandReply {
        const OpenDocument& document = session_.Documents().Require(search.document);
        search.found = result.get();
        if (search.found->revision != document.content->Revision()) {
            search.waiting = request;
            Begin(client, document, search);
            return kRepliesLater;
        }
        return Show({session_, request}, document, *search.found);
    });
}

CommandReply CommentFinder::Show(const CommandCall& call, const OpenDocument& document,
                                 const FoundComments& found)
{
    const Positions& positions = found.positions;
    const Step step = StepIn(call.Message());
    const auto match =
        Follow(step, positions, session_.Current(document).PlaceIn(*document.content));
    nlohmann::ordered_json reply = {{"count", positions.size()},
                                    {"number", nullptr},
                                    {"page", nullptr},
                                    {"index", nullptr},
                                    {"revision", found.revision}};
    if (match != positions.end()) {
        reply["number"] = match - positions.begin() + 1;
        reply["page"] = match->page;
        reply["index"] = match->index;
        if (step != Step::kNone) {
            session_.Show(document, match->page,
                          document.content->AnnotationAt(match->page, match->index));
        }
    }
    return reply;
}

}  // namespace Workbench
