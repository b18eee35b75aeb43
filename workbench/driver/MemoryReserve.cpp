#include "driver/MemoryReserve.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace Workbench {

namespace {

constexpr std::size_t kReserveBytes = std::size_t{32} << 20;

std::atomic<void*> reserve = nullptr;
std::atomic<bool> isSpent = false;

[[noreturn]] void GiveReserveUp()
{
    isSpent = true;
    std::free(reserve.exchange(nullptr));
    throw std::bad_alloc();
}

}  // namespace

MemoryReserve::MemoryReserve() : former_(std::set_new_handler(GiveReserveUp))
{
    reserve = std::malloc(kReserveBytes);
    isSpent = false;
}

MemoryReserve::~MemoryReserve()
{
    std::set_new_handler(former_);
    std::free(reserve.exchange(nullptr));
}

// Not by operator new, whose failure would call the handler.
void MemoryReserve::Refill() noexcept
{
    if (!isSpent) {
        return;
    }
    if (void* const memory = std::malloc(kReserveBytes); memory != nullptr) {
        std::free(reserve.exchange(memory));
        isSpent = false;
    }
}

bool MemoryReserve::IsSpent() noexcept
{
    return isSpent;
}

void ShareHeap() noexcept
{
#if defined(__GLIBC__)
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

void RequireMemory()
{
    if (MemoryReserve::IsSpent()) {
        throw std::bad_alloc();
    }
}

}  // namespace Workbench
