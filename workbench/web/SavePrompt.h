// The prompt before the workbench ends: clients ask their users what becomes of changes that are
// not saved. [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "web/Commands.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <vector>

namespace Workbench {

class BrowserSession;

// State of the save-before-exit prompt.
enum class SavePromptState : std::uint8_t {
    kOpen,
    kWithdrawn,  // cancelled, or never opened
    kClosed,     // answered, out of time, or nothing left to ask or nobody to be asked
};

class SavePrompt {
public:
    // The session outlives the prompt.
    explicit SavePrompt(BrowserSession& session) : session_(session) {}

    // Opens the prompt in all clients, for that long. False when no document has unsaved changes,
    // and when no client is connected.
    bool Open(std::chrono::milliseconds patience);

    SavePromptState State() const;

    // Whether a user has answered that changes may be lost.
    bool DiscardsChanges() const noexcept { return question_ && question_->discards; }

    // Tells the clients when other documents are unsaved than before, because of saving or edits.
    void Update();

    // A client that connects is asked, too.
    void Tell(SocketNumber client) const;

    // The command "end", which answers the prompt.
    CommandReply Answer(const ClientRequest& request);

private:
    struct Question {
        std::chrono::steady_clock::time_point until;
        bool takesAnswers = true;  // not while one is being carried out
        bool isClosed = false;
        bool discards = false;
    };

    std::vector<DocumentNumber> UnsavedDocuments() const;
    nlohmann::ordered_json Describe() const;
    void SaveAll(const ClientRequest& request);
    void CloseWhenSaved(const ClientRequest& request, const std::exception_ptr& failure);

    BrowserSession& session_;
    std::optional<Question> question_;
    std::vector<DocumentNumber> told_;  // the unsaved documents that clients were told of last
};

}  // namespace Workbench
