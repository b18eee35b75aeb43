#include "ui-engine/UIThreadDispatcher.h"

#include "platform/Threads.h"
#include "service-common/ServiceProvider.h"

#include <memory>
#include <utility>

namespace {

BasicServiceObjectPtr<UIThread> RequestThreadObject(std::uint32_t threadId)
{
    const auto service = SP::QueryServiceObject<UIService>();
    BasicServiceObjectPtr<UIThread> thread;
    CallMethod<UIService::GetThreadObject>(service.Get(), threadId, thread.Receive());
    return thread;
}

}  // namespace

void UIThreadDispatcher::Start()
{
    Detach();
    const std::uint32_t threadId = Platform::CurrentThreadId();
    SetThread(threadId, RequestThreadObject(threadId));
}

void UIThreadDispatcher::EnsureStarted()
{
    if (!IsStarted()) {
        Start();
    } else if (!ThreadObject()) {
        SetThread(threadId_, RequestThreadObject(threadId_));
    }
}

void UIThreadDispatcher::Detach() noexcept
{
    SetThread(0, nullptr);
}

void UIThreadDispatcher::SetThread(std::uint32_t threadId,
                                   BasicServiceObjectPtr<UIThread> thread) noexcept
{
    // The former object is released outside the lock, with the argument.
    const std::lock_guard lock(mutex_);
    threadId_.store(threadId);
    std::swap(thread_, thread);
}

bool UIThreadDispatcher::IsUIThread() const noexcept
{
    return threadId_.load() == Platform::CurrentThreadId();
}

bool UIThreadDispatcher::Post(std::function<void()> call) const
{
    return PostTo(ThreadObject().Get(), std::move(call));
}

BasicServiceObjectPtr<UIThread> UIThreadDispatcher::ThreadObject() const
{
    const std::lock_guard lock(mutex_);
    return thread_;
}

bool UIThreadDispatcher::PostTo(UIThread* thread, std::function<void()> call)
{
    if (!call || thread == nullptr) {
        return false;
    }
    auto record = std::make_unique<SODetails::PostedCall>(SODetails::PostedCall{
        SODetails::kPostedCallTag, sizeof(SODetails::PostedCall), std::move(call)});
    // The record is the host's from an accepted call on; another outcome leaves it here.
    const CallResult result =
        CallMethodUnchecked<UIThread::PostCall>(thread, &SODetails::RunPostedCall, record.get());
    if (result.Succeeded()) {
        static_cast<void>(record.release());
        return true;
    }
    if (result.called) {
        CheckServiceCall(thread, result.code);
    }
    return false;
}

namespace SODetails {

void RunPostedCall(void* record)
{
    auto* posted = static_cast<PostedCall*>(record);
    if (posted == nullptr || posted->tag != kPostedCallTag) {
        return;
    }
    const std::unique_ptr<PostedCall> owned(posted);
    owned->call();
}

}  // namespace SODetails
