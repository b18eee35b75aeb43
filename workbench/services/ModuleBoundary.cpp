#include "services/ModuleBoundary.h"

#include "service-common/ErrorRecord.h"

#include <stdexcept>

namespace Workbench {
namespace {

thread_local Side t_side = Side::kModule;

}  // namespace

Side CurrentSide() noexcept
{
    return t_side;
}

OnSide::OnSide(Side side) noexcept : former_(t_side)
{
    t_side = side;
}

OnSide::~OnSide()
{
    t_side = former_;
}

CallOutcome OutcomeOfCall(const char* interfaceName, const char* methodName) noexcept
{
    CallHook* const hook = CallHook::Installed();
    return hook == nullptr || CurrentSide() == Side::kHost
               ? CallOutcome::kPasses
               : hook->OutcomeOf(interfaceName, methodName);
}

ResultCode ResultOfOutcome(CallOutcome outcome)
{
    const OnSide host(Side::kHost);
    switch (outcome) {
    case CallOutcome::kFails:
        SetThreadLastError({kInjectedFailure, L"the call was made to fail", {}, {}, 0});
        return kInjectedFailure;
    case CallOutcome::kFailsMutely:
        ClearThreadLastError();
        return kInjectedFailure;
    case CallOutcome::kThrows:
        throw std::runtime_error("the call was made to throw");
    default:
        return kResultOk;
    }
}

}  // namespace Workbench
