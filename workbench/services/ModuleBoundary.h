// The boundary between host and module: which side the code that runs on a thread belongs to, and a
// hook that tests decide the outcome of the module's calls with. [any-thread]
#pragma once

#include "service-common/ResultCodes.h"

#include <atomic>

namespace Workbench {

// A thread begins on the module's side unless it enters the host's: the module's own threads are
// not the host's to mark.
enum class Side : unsigned char { kModule, kHost };
Side CurrentSide() noexcept;

// Marks the calling thread as running code of one side for as long as it lives.
class OnSide {
public:
    explicit OnSide(Side side) noexcept;
    ~OnSide();
    OnSide(const OnSide&) = delete;
    OnSide& operator=(const OnSide&) = delete;

private:
    const Side former_;
};

// What becomes of a call into a service object of the host.
enum class CallOutcome {
    kPasses,
    kFails,        // with kInjectedFailure and an error record
    kFailsMutely,  // with that code, and without a record
    kPretends,     // answers 0 (a subscription: cookie 0) and does nothing
    kThrows,       // ends with an exception
};
inline constexpr ResultCode kInjectedFailure = 77;

// Asked at each call that the module makes into a service object, on the calling thread.
class CallHook {
public:
    virtual CallOutcome OutcomeOf(const char* interfaceName, const char* methodName) noexcept = 0;

    // Null removes it. No call may be running meanwhile.
    static void Install(CallHook* hook) noexcept { installed_.store(hook); }
    static CallHook* Installed() noexcept { return installed_.load(std::memory_order_relaxed); }

protected:
    ~CallHook() = default;

private:
    static inline std::atomic<CallHook*> installed_ = nullptr;
};

// What the hook says of a call; kPasses without one, and for the host's own calls.
CallOutcome OutcomeOfCall(const char* interfaceName, const char* methodName) noexcept;

// The result of a call that does not pass. Throws std::runtime_error for kThrows.
ResultCode ResultOfOutcome(CallOutcome outcome);

}  // namespace Workbench
