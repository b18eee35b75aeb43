// The faults in force, as the table's entries see them. Included by the documents only.
#pragma once

#include "documents/FaultInjection.h"

#include <atomic>

namespace Documents {

inline std::atomic<std::uint32_t> faultsInForce{0};

// Looks the call up among the faults in force; 0 when none matches.
ResultCode TakeFault(TableEntry entry, const _PDAnnotRec* annotation) noexcept;

// One relaxed load as long as no fault is in force.
inline ResultCode CheckFault(TableEntry entry, const _PDAnnotRec* annotation = nullptr) noexcept
{
    if (faultsInForce.load(std::memory_order_relaxed) == 0) [[likely]] {
        return kResultOk;
    }
    return TakeFault(entry, annotation);
}

}  // namespace Documents
