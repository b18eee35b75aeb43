// The end of the desk, when there are changes that are not saved: the users are asked.
#include "web/Desk.h"

#include <algorithm>

namespace Workbench {

using Clock = std::chrono::steady_clock;

std::vector<DocumentNumber> Desk::UnsavedDocuments() const
{
    std::vector<DocumentNumber> numbers;
    for (const auto& document : documents_) {
        if (document->content->Modified()) {
            numbers.push_back(document->number);
        }
    }
    return numbers;
}

bool Desk::AskBeforeEnding(std::chrono::milliseconds patience)
{
    if (pages_.empty() || UnsavedDocuments().empty()) {
        return false;
    }
    ending_ = Ending{Clock::now() + patience};
    TellOfEnding();
    return true;
}

EndQuestion Desk::QuestionOfEnding() const
{
    if (!ending_) {
        return EndQuestion::kTakenBack;
    }
    const bool isOver = ending_->isOver || pages_.empty() || Clock::now() >= ending_->until ||
                        (ending_->takesAnswers && UnsavedDocuments().empty());
    return isOver ? EndQuestion::kOver : EndQuestion::kStands;
}

Desk::Json Desk::DescribeEnding() const
{
    Json message = {{"type", "ending"}, {"documents", toldUnsaved_}};
    if (!toldUnsaved_.empty()) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(ending_->until - Clock::now());
        message["seconds"] = std::max<std::int64_t>(left.count(), 0);
    }
    return message;
}

// Whatever is saved or changed meanwhile, the question is about what is not saved.
void Desk::TellOfEnding()
{
    std::vector<DocumentNumber> unsaved;
    if (ending_) {
        unsaved = UnsavedDocuments();
    }
    if (unsaved != toldUnsaved_) {
        toldUnsaved_ = std::move(unsaved);
        Broadcast(DescribeEnding());
    }
}

void Desk::End(const PageCommand& command)
{
    const std::string answer = command.message->Text("unsaved");
    if (answer != "save" && answer != "discard" && answer != "copies" && answer != "cancel") {
        throw MessageError(R"("unsaved" must be "save", "discard", "copies" or "cancel")");
    }
    if (!ending_ || !ending_->takesAnswers) {
        Refuse(command, "the workbench does not ask how to end (any more)");
        return;
    }
    if (answer == "save") {
        SaveAllAndEnd(command);
        return;
    }
    if (answer == "cancel") {
        ending_.reset();
    } else {
        ending_->takesAnswers = false;
        ending_->isOver = true;
        ending_->discards = answer == "discard";
    }
    Reply(command);
}

// A document without a path stays unsaved, and so gets a recovery copy in the end.
void Desk::SaveAllAndEnd(const PageCommand& command)
{
    struct Progress {
        std::size_t left = 1;  // one for the beginning of all
        WriteOutcome outcome;
    };
    ending_->takesAnswers = false;
    const auto progress = std::make_shared<Progress>();
    const Saved note = [command, progress](Desk& desk, const WriteOutcome& outcome) {
        if (progress->outcome.error.empty()) {
            progress->outcome = outcome;
        }
        if (--progress->left == 0) {
            desk.EndWhenSaved(command, progress->outcome);
        }
    };
    for (const auto& document : documents_) {
        if (!document->content->Modified() || !document->path) {
            continue;
        }
        ++progress->left;
        const DocumentWork save = [this, note](OpenDocument* saved) {
            if (saved == nullptr) {
                note(*this, {});
            } else {
                SaveTo(*saved, *saved->path, false, note);
            }
        };
        if (document->fileJobs != 0 || !document->waiting.empty()) {
            document->waiting.emplace_back(save);
        } else {
            save(document.get());
        }
    }
    note(*this, {});
}

void Desk::EndWhenSaved(const PageCommand& command, const WriteOutcome& outcome)
{
    if (ending_) {
        ending_->isOver = outcome.error.empty();
        ending_->takesAnswers = !ending_->isOver;
    }
    Answer(command, outcome);
}

}  // namespace Workbench
