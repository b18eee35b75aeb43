#include "documents/EditHistory.h"

#include <iterator>
#include <utility>

namespace Documents {

std::vector<Change> EditHistory::Do(Step step)
{
    Steps applied;
    applied.push_back(std::move(step));
    std::vector<Change> changes = applied.back().apply();
    Steps dropped;  // freed after the lock: steps hold annotations and pages
    const std::lock_guard lock{mutex_};
    applied.back().state = ++lastState_;
    done_.splice(done_.end(), applied);
    dropped.swap(undone_);
    ++revision_;
    return changes;
}

std::vector<Change> EditHistory::Travel(Steps& from, Steps& to,
                                        std::function<std::vector<Change>()> Step::*direction)
{
    if (from.empty()) {
        return {};
    }
    std::vector<Change> changes = (from.back().*direction)();
    const std::lock_guard lock{mutex_};
    to.splice(to.end(), from, std::prev(from.end()));
    ++revision_;
    return changes;
}

void EditHistory::NoteSaved()
{
    const std::lock_guard lock{mutex_};
    savedState_ = State();
}

void EditHistory::NoteUnsaved()
{
    const std::lock_guard lock{mutex_};
    savedState_ = kNoState;
}

std::optional<EditKind> EditHistory::KindOfLast(const Steps& steps) const
{
    const std::lock_guard lock{mutex_};
    return steps.empty() ? std::nullopt : std::optional{steps.back().kind};
}

std::uint64_t EditHistory::Revision() const
{
    const std::lock_guard lock{mutex_};
    return revision_;
}

bool EditHistory::Modified() const
{
    const std::lock_guard lock{mutex_};
    return State() != savedState_;
}

}  // namespace Documents
