// Every allocation of the module fails: alone, a few in a row, and from then on.
#include "SweptPanel.h"

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>

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

namespace PanelTests {
namespace {

TEST(AllocationSweep, ThePanelStandsWhereverMemoryRunsOut)
{
    struct Way {
        const char* name;
        std::uint64_t count;
    };
    constexpr Way kWays[] = {{"alone", 1}, {"and three more", 4}, {"and all later ones", ~0ull}};
    std::uint64_t points = 0;
    std::uint64_t skipped = 0;
    for (const Way& way : kWays) {
        for (const SweptPanel::Operation& operation : SweptPanel::Operations()) {
            const std::uint64_t stride = SweepStride();
            bool failed = true;
            for (std::uint64_t n = stride < 2 ? 0 : skipped++ % stride; failed; n += stride) {
                g_allocations = 0;
                g_first = n;
                g_count = way.count;
                const std::string point = std::string(operation.name) + ": allocation " +
                                          std::to_string(n) + " " + way.name;
                {
                    SweptPanel panel;
                    testing::ScopedTrace trace(__FILE__, __LINE__, point);
                    panel.Run(
                        operation, [] { g_armed = true; },
                        [] {
                            g_armed = false;
                            return SweptPanel::Expected::kMendsItself;
                        });
                }
                failed = g_allocations > n;
                points += failed ? 1 : 0;
                if (testing::Test::HasFailure()) {
                    FAIL() << point;
                }
            }
        }
    }
    std::cout << points << " failing allocations\n";
    EXPECT_GT(points, 100u);
}

}  // namespace
}  // namespace PanelTests
