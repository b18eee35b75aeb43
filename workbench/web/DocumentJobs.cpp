#include "web/DocumentJobs.h"

#include <utility>

namespace Workbench {

DocumentJobs::DocumentJobs(const OpenDocuments& documents,
                           std::function<void(DocumentNumber)> changed)
    : documents_(documents), changed_(std::move(changed))
{
}

const DocumentJobs::State* DocumentJobs::Find(DocumentNumber number) const
{
    const auto found = states_.find(number);
    return found == states_.end() ? nullptr : &found->second;
}

bool DocumentJobs::IsHeld(DocumentNumber number) const
{
    const State* const state = Find(number);
    return state != nullptr && state->held != 0;
}

bool DocumentJobs::IsSaving(DocumentNumber number) const
{
    const State* const state = Find(number);
    return state != nullptr && state->saving;
}

bool DocumentJobs::HasWaiting(DocumentNumber number) const
{
    const State* const state = Find(number);
    return state != nullptr && !state->waiting.empty();
}

void DocumentJobs::RunWhenFree(OpenDocument& document, Work work)
{
    if (IsHeld(document.number) || HasWaiting(document.number)) {
        Append(document.number, std::move(work));
    } else {
        work(&document);
    }
}

void DocumentJobs::Append(DocumentNumber number, Work work)
{
    State& state = states_[number];
    state.waiting.push_back(std::move(work));
    *state.awaited = state.held != 0;
}

std::shared_ptr<const std::atomic<bool>> DocumentJobs::Awaited(DocumentNumber number)
{
    return states_[number].awaited;
}

void DocumentJobs::Begin(DocumentNumber number, Kind kind)
{
    State& state = states_[number];
    ++state.held;
    if (kind == Kind::kSave) {
        state.saving = true;
        changed_(number);
    }
}

void DocumentJobs::End(DocumentNumber number, Kind kind, const std::function<void()>& then)
{
    if (const auto found = states_.find(number); found != states_.end() && kind == Kind::kSave) {
        found->second.saving = false;
        changed_(number);
    }
    then();
    if (const auto found = states_.find(number); found != states_.end()) {
        --found->second.held;
        RunWaiting(number);
    }
}

// Waiting work may start another job or close the document.
void DocumentJobs::RunWaiting(DocumentNumber number)
{
    while (!IsHeld(number) && HasWaiting(number)) {
        std::deque<Work>& waiting = states_[number].waiting;
        const Work work = std::move(waiting.front());
        waiting.pop_front();
        *states_[number].awaited = !waiting.empty();
        work(documents_.Find(number));
    }
}

void DocumentJobs::Forget(DocumentNumber number)
{
    const auto closed = states_.extract(number);
    if (!closed.empty()) {
        for (const Work& work : closed.mapped().waiting) {
            work(nullptr);
        }
    }
}

}  // namespace Workbench
