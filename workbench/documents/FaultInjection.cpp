#include "documents/FaultInjection.h"

#include "documents/FaultPlan.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace Documents {

namespace {

struct PlannedFault {
    std::uint64_t id;
    Fault fault;
    std::uint32_t failures;
};

std::mutex planMutex;
std::uint64_t nextId = 1;

std::vector<PlannedFault>& Plan()
{
    static std::vector<PlannedFault> plan;
    return plan;
}

std::vector<PlannedFault>::iterator Find(std::uint64_t id)
{
    return std::find_if(Plan().begin(), Plan().end(),
                        [id](const PlannedFault& planned) { return planned.id == id; });
}

}  // namespace

FaultInjection::FaultInjection(Fault fault)
{
    const std::lock_guard lock{planMutex};
    id_ = nextId++;
    Plan().push_back({id_, std::move(fault), 0});
    faultsInForce.fetch_add(1);
}

FaultInjection::~FaultInjection()
{
    Fault released;  // its record is released after the lock
    const std::lock_guard lock{planMutex};
    const auto found = Find(id_);
    released = std::move(found->fault);
    Plan().erase(found);
    faultsInForce.fetch_sub(1);
}

std::uint32_t FaultInjection::Failures() const noexcept
{
    const std::lock_guard lock{planMutex};
    return Find(id_)->failures;
}

ResultCode TakeFault(TableEntry entry, const _PDAnnotRec* annotation) noexcept
{
    const std::lock_guard lock{planMutex};
    ResultCode code = kResultOk;
    for (PlannedFault& planned : Plan()) {
        Fault& fault = planned.fault;
        const bool isMeant = fault.entry == entry || fault.entry == TableEntry::kAny;
        if (!isMeant || (fault.annotation && fault.annotation.Get() != annotation)) {
            continue;
        }
        if (fault.skip > 0) {
            --fault.skip;
        } else if (fault.times > 0 && code == kResultOk) {
            fault.times -= fault.times == Fault::kEveryTime ? 0 : 1;
            ++planned.failures;
            code = fault.code;
        }
    }
    return code;
}

}  // namespace Documents
