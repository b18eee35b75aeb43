// Every allocation of the module fails: alone, a few in a row, and from then on.
#include "FailingAllocations.h"
#include "SweptPanel.h"

#include <iostream>
#include <string>

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
                FailingAllocations::Plan(n, way.count);
                const std::string point = std::string(operation.name) + ": allocation " +
                                          std::to_string(n) + " " + way.name;
                {
                    SweptPanel panel;
                    testing::ScopedTrace trace(__FILE__, __LINE__, point);
                    panel.Run(
                        operation, [] { FailingAllocations::Arm(true); },
                        [] {
                            FailingAllocations::Arm(false);
                            return SweptPanel::Expected::kMendsItself;
                        });
                }
                failed = FailingAllocations::Count() > n;
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
