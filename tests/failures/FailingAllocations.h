// Allocations of this program that fail on purpose while they are armed: those of the module, which
// shares the program's operator new. [any-thread]
#pragma once

#include <cstdint>

namespace FailingAllocations {

// `count` allocations fail from the 0-based `first` on, which are counted from here. Not armed yet.
void Plan(std::uint64_t first, std::uint64_t count);
void Arm(bool armed);
// Allocations of the module while armed, since Plan.
std::uint64_t Count();

}  // namespace FailingAllocations
