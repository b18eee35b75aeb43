#include "web/SavePrompt.h"

#include "web/BrowserSession.h"
#include "web/ClientMessage.h"
#include "web/FileCommands.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <utility>

namespace Workbench {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

std::vector<DocumentNumber> SavePrompt::UnsavedDocuments() const
{
    std::vector<DocumentNumber> numbers;
    for (const auto& document : session_.Documents().All()) {
        if (document->content->Modified()) {
            numbers.push_back(document->number);
        }
    }
    return numbers;
}

bool SavePrompt::Open(std::chrono::milliseconds patience)
{
    if (session_.Clients().IsEmpty() || UnsavedDocuments().empty()) {
        return false;
    }
    question_ = Question{Clock::now() + patience};
    Update();
    return true;
}

SavePromptState SavePrompt::State() const
{
    if (!question_) {
        return SavePromptState::kWithdrawn;
    }
    const bool isClosed = question_->isClosed || session_.Clients().IsEmpty() ||
                          Clock::now() >= question_->until ||
                          (question_->takesAnswers && UnsavedDocuments().empty());
    return isClosed ? SavePromptState::kClosed : SavePromptState::kOpen;
}

Json SavePrompt::Describe() const
{
    Json message = {{"type", "ending"}, {"documents", told_}};
    if (!told_.empty()) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(question_->until - Clock::now());
        message["seconds"] = std::max<std::int64_t>(left.count(), 0);
    }
    return message;
}

void SavePrompt::Update()
{
    std::vector<DocumentNumber> unsaved;
    if (question_) {
        unsaved = UnsavedDocuments();
    }
    if (unsaved != told_) {
        told_ = std::move(unsaved);
        session_.Clients().Broadcast(Describe());
    }
}

void SavePrompt::Tell(SocketNumber client) const
{
    if (question_ && !told_.empty()) {
        session_.Clients().Send(client, Describe());
    }
}

CommandReply SavePrompt::Answer(const ClientRequest& request)
{
    const std::string answer = request.message->Text("unsaved");
    if (answer != "save" && answer != "discard" && answer != "copies" && answer != "cancel") {
        throw MessageError(R"("unsaved" must be "save", "discard", "copies" or "cancel")");
    }
    if (!question_ || !question_->takesAnswers) {
        throw ActionRefused("the workbench does not ask how to end (any more)");
    }
    if (answer == "save") {
        SaveAll(request);
        return kRepliesLater;
    }
    if (answer == "cancel") {
        question_.reset();
        Update();
    } else {
        question_->takesAnswers = false;
        question_->isClosed = true;
        question_->discards = answer == "discard";
    }
    return CommandDone();
}

// A document without a path stays unsaved and gets a recovery copy at shut-down.
void SavePrompt::SaveAll(const ClientRequest& request)
{
    struct Progress {
        std::size_t left = 1;  // one for the beginning of all
        std::exception_ptr failure;
    };
    question_->takesAnswers = false;
    const auto progress = std::make_shared<Progress>();
    const SavedCallback note = [request, progress](BrowserSession& session,
                                                   const std::exception_ptr& failure) {
        if (progress->failure == nullptr) {
            progress->failure = failure;
        }
        if (--progress->left == 0) {
            session.Prompt().CloseWhenSaved(request, progress->failure);
        }
    };
    for (const auto& document : session_.Documents().All()) {
        if (!document->content->Modified() || !document->path) {
            continue;
        }
        ++progress->left;
        session_.Jobs().RunWhenFree(*document, [&session = session_, note](OpenDocument* saved) {
            if (saved == nullptr) {
                note(session, nullptr);
            } else {
                SaveDocument(session, *saved, *saved->path, false, note);
            }
        });
    }
    note(session_, nullptr);
}

void SavePrompt::CloseWhenSaved(const ClientRequest& request, const std::exception_ptr& failure)
{
    if (question_) {
        question_->isClosed = failure == nullptr;
        question_->takesAnswers = !question_->isClosed;
    }
    AnswerSaved(session_, request, failure);
}

}  // namespace Workbench
