// Every allocation of the module fails: alone, a few in a row, and from then on.
#include "FailingAllocations.h"
#include "SweptPanel.h"

#include <iostream>
#include <string>

namespace PanelTests {
namespace {

TEST(AllocationSweep, ThePanelStandsWhereverMemoryRunsOut)
{
    std::uint64_t points = 0;
    for (const std::uint64_t count : {std::uint64_t{1}, std::uint64_t{4}, ~std::uint64_t{0}}) {
        points += SweepPoints(count, [&](const SweptPanel::Operation& operation, std::uint64_t n) {
            FailingAllocations::Plan(n, count);
            SweptPanel panel;
            testing::ScopedTrace trace(__FILE__, __LINE__,
                                       std::string(operation.name) + ": " + std::to_string(count) +
                                           " allocations from " + std::to_string(n));
            panel.Run(
                operation, [] { FailingAllocations::Arm(true); },
                [] {
                    FailingAllocations::Arm(false);
                    return SweptPanel::Expected::kMendsItself;
                });
            return FailingAllocations::Count() > n;
        });
        ASSERT_FALSE(HasFailure());
    }
    std::cout << points << " failing allocations\n";
    EXPECT_GT(points, 100u);
}

}  // namespace
}  // namespace PanelTests
