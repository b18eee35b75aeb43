#include "services/UiThreadLoop.h"

#include "platform/Threads.h"
#include "services/ModuleBoundary.h"
#include "services/ModuleErrors.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Workbench {

UiThreadLoop::UiThreadLoop(FailureLog& failures, ModuleErrors* moduleErrors)
    : threadId_(Platform::CurrentThreadId()),
      failures_(failures),
      moduleErrors_(moduleErrors),
      hostThreads_{threadId_}
{
}

bool UiThreadLoop::IsUiThread() const noexcept
{
    return Platform::CurrentThreadId() == threadId_;
}

bool UiThreadLoop::Post(UIThread::Runner runner, void* record, Holding holding)
{
    return Append({runner, record, {}}, holding);
}

bool UiThreadLoop::Post(std::function<void()> work)
{
    return Append({nullptr, nullptr, std::move(work)}, Holding::kNeverHeld);
}

bool UiThreadLoop::Append(Call call, Holding holding)
{
    const std::lock_guard lock(mutex_);
    if (ended_) {
        return false;
    }
    const bool isHeld = holds_ && holding == Holding::kMayBeHeld &&
                        std::find(hostThreads_.begin(), hostThreads_.end(),
                                  Platform::CurrentThreadId()) == hostThreads_.end();
    (isHeld ? held_ : waiting_).push_back(std::move(call));
    posted_.notify_one();
    return true;
}

void UiThreadLoop::AddHostThread(std::uint32_t threadId)
{
    const std::lock_guard lock(mutex_);
    hostThreads_.push_back(threadId);
}

void UiThreadLoop::RemoveHostThread(std::uint32_t threadId)
{
    const std::lock_guard lock(mutex_);
    const auto found = std::find(hostThreads_.begin(), hostThreads_.end(), threadId);
    if (found != hostThreads_.end()) {
        hostThreads_.erase(found);
    }
}

void UiThreadLoop::ReleaseHeld()
{
    std::move(held_.begin(), held_.end(), std::back_inserter(waiting_));
    held_.clear();
}

void UiThreadLoop::Hold(bool enabled)
{
    const std::lock_guard lock(mutex_);
    holds_ = enabled;
    if (!enabled) {
        ReleaseHeld();
    }
}

bool UiThreadLoop::Holds() const
{
    const std::lock_guard lock(mutex_);
    return holds_;
}

std::size_t UiThreadLoop::HeldCount() const
{
    const std::lock_guard lock(mutex_);
    return held_.size();
}

std::size_t UiThreadLoop::WaitingCount() const
{
    const std::lock_guard lock(mutex_);
    return waiting_.size();
}

bool UiThreadLoop::RunNext()
{
    Call call;
    {
        const std::lock_guard lock(mutex_);
        if (waiting_.empty()) {
            return false;
        }
        call = std::move(waiting_.front());
        waiting_.pop_front();
    }
    try {
        if (call.runner != nullptr) {
            const auto run = [&call] {
                const OnSide module(Side::kModule);
                call.runner(call.record);
            };
            if (moduleErrors_ != nullptr) {
                moduleErrors_->Around("posted call", run);
            } else {
                run();
            }
        } else {
            call.work();
        }
    } catch (...) {
        failures_.Add("posted call", std::current_exception());
    }
    return true;
}

std::size_t UiThreadLoop::RunWaiting()
{
    std::size_t count = 0;
    while (RunNext()) {
        ++count;
    }
    return count;
}

bool UiThreadLoop::RunUntil(const std::function<bool()>& isDone,
                            std::chrono::steady_clock::time_point end)
{
    while (!isDone()) {
        if (RunNext()) {
            if (std::chrono::steady_clock::now() >= end) {
                return isDone();
            }
            continue;
        }
        // What `isDone` looks at may change without a call being posted, so it is asked again
        // after a while.
        constexpr std::chrono::milliseconds kLongestWait(20);
        std::unique_lock lock(mutex_);
        posted_.wait_for(lock, kLongestWait, [this] { return !waiting_.empty(); });
        if (waiting_.empty() && std::chrono::steady_clock::now() >= end) {
            lock.unlock();
            return isDone();
        }
    }
    return true;
}

void UiThreadLoop::End()
{
    const std::lock_guard lock(mutex_);
    ended_ = true;
    holds_ = false;
    ReleaseHeld();
}

}  // namespace Workbench
