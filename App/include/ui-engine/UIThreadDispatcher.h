// A handler's way to its UI thread: says whether the caller is on it, and posts work to it.
#pragma once

#include "service-common/ServiceObjectPtr.h"
#include "ui-engine/UIService.SO.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>

class UIThreadDispatcher {
public:
    // Makes the calling thread the UI thread and obtains its UI object from the host's UIService.
    // Throws ServiceObjectException and stays detached then. A service that has no UI object for
    // the thread leaves a dispatcher that knows its thread but posts nothing.
    void Start();

    // Starts where that has not succeeded yet, and asks again for a UI object that the service did
    // not have; else does nothing. Throws ServiceObjectException and leaves things as they were.
    // For the UI thread.
    void EnsureStarted();

    // Forgets thread and UI object. May be called twice.
    void Detach() noexcept;

    // False when detached. [any-thread]
    bool IsUIThread() const noexcept;
    bool IsStarted() const noexcept { return threadId_.load() != 0; }

    // Schedules `call` to run later on the UI thread, after what was posted before. True when the
    // host took it; false when there is no call or no thread object to post to. Throws
    // ServiceObjectException when the host fails. [any-thread]
    bool Post(std::function<void()> call) const;

    // The UI object itself, for work that may outlive the dispatcher; empty when there is none.
    // [any-thread]
    BasicServiceObjectPtr<UIThread> ThreadObject() const;

    // As Post, to a UI object. [any-thread]
    static bool PostTo(UIThread* thread, std::function<void()> call);

private:
    void SetThread(std::uint32_t threadId, BasicServiceObjectPtr<UIThread> thread) noexcept;

    std::atomic<std::uint32_t> threadId_ = 0;  // 0: detached
    BasicServiceObjectPtr<UIThread> thread_;
    mutable std::mutex mutex_;  // foreign threads post while the UI thread detaches
};

namespace SODetails {

// Tag of a posted call: the bytes "ININ".
inline constexpr std::uint32_t kPostedCallTag = 0x4E494E49;

// A posted call on its way through the host (UIThread::PostCall): allocated by the module, and
// freed by the runner. The host reads tag and size at most, and keeps the record until it runs it.
struct PostedCall {
    std::uint32_t tag;           // kPostedCallTag
    std::uint32_t size;          // 40
    std::function<void()> call;  // the module's own
};
static_assert(alignof(std::function<void()>) == 8);  // the call stands at offset 8
static_assert(sizeof(PostedCall) == 40);

// What the host is given to run a record: runs and frees it. A null record, and one with another
// tag, is left alone. An empty call raises std::bad_function_call.
void RunPostedCall(void* record);

}  // namespace SODetails
