// The save-before-exit prompt: asks the users of all clients whether to save, copy or discard
// unsaved changes before the workbench ends. [ui-thread]
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
    kClosed,     // answered or timed out, or no unsaved documents or no clients left
};

class SavePrompt {
public:
    // The session outlives the prompt.
    explicit SavePrompt(BrowserSession& session) : session_(session) {}

    // Opens the prompt in all clients, for at most `patience`. False when no document has unsaved
    // changes, and when no client is connected.
    bool Open(std::chrono::milliseconds patience);

    SavePromptState State() const;

    // Whether a user has chosen to discard the changes.
    bool DiscardsChanges() const noexcept { return question_ && question_->discards; }

    // Sends the prompt again when the set of unsaved documents has changed.
    void Update();

    // Sends an open prompt to a client that has just connected.
    void Tell(SocketNumber client) const;

    // Carries out the command "end", the answer to the prompt.
    CommandReply Answer(const ClientRequest& request);

private:
    struct Question {
        std::chrono::steady_clock::time_point until;
        bool takesAnswers = true;  // false while an answer is being carried out
        bool isClosed = false;
        bool discards = false;
    };

    std::vector<DocumentNumber> UnsavedDocuments() const;
    nlohmann::ordered_json Describe() const;
    void SaveAll(const ClientRequest& request);
    void CloseWhenSaved(const ClientRequest& request, const std::exception_ptr& failure);

    BrowserSession& session_;
    std::optional<Question> question_;
    std::vector<DocumentNumber> told_;  // unsaved documents in the last message to clients
};

}  // namespace Workbench
