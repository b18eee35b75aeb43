#include "FailingAllocations.h"

#include "services/ModuleBoundary.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> g_armed = false;
std::atomic<std::uint64_t> g_allocations = 0;
std::uint64_t g_first = 0;
std::uint64_t g_count = 0;

bool IsToFail() noexcept
{
    if (!g_armed.load(std::memory_order_relaxed) ||
        Workbench::CurrentSide() == Workbench::Side::kHost) {
        return false;
    }
    const std::uint64_t allocation = g_allocations++;
    return allocation >= g_first && allocation - g_first < g_count;
}

void* Allocate(std::size_t size) noexcept
{
    return IsToFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size)
{
    if (void* const memory = Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace FailingAllocations {

void Plan(std::uint64_t first, std::uint64_t count)
{
    g_allocations = 0;
    g_first = first;
    g_count = count;
}

void Arm(bool armed)
{
    g_armed = armed;
}

std::uint64_t Count()
{
    return g_allocations;
}

}  // namespace FailingAllocations
