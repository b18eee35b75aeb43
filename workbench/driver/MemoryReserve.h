// A reserve for the moment when the process runs out of memory: the allocation that fails throws
// std::bad_alloc, as without a reserve, but what is destroyed on the way to the handler finds
// memory. Destructors that allocate would otherwise end the process without a word.
#pragma once

#include <new>

namespace Workbench {

class MemoryReserve {
public:
    // Sets the process's new-handler. One object at a time.
    MemoryReserve();
    ~MemoryReserve();
    MemoryReserve(const MemoryReserve&) = delete;
    MemoryReserve& operator=(const MemoryReserve&) = delete;

    // Takes the reserve again, if it was spent and there is memory. [any-thread]
    static void Refill() noexcept;

    // Whether memory has run out since the last refill. [any-thread]
    static bool IsSpent() noexcept;

private:
    const std::new_handler former_;
};

// Makes all threads that start from here on take memory from one heap, where the system's allocator
// would reserve 64 MiB of addresses for each thread: under a limit that has no room for that, it
// takes every piece of memory from the system by itself, which makes a list hundreds of times
// slower. For runs whose threads work by turns.
void ShareHeap() noexcept;

// Throws std::bad_alloc when it is spent: where memory ran out, somebody may have gone on without
// what did not fit.
void RequireMemory();

}  // namespace Workbench
