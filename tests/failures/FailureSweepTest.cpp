// Every call of the module into a service object fails: once, and from then on, in each way in
// which a host can fail.
#include "SweptPanel.h"

#include "platform-libraries/AtomLibraryHost.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"

#include <atomic>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace PanelTests {
namespace {

using namespace Workbench;

// Fails the n-th call of a stretch, or all from there on, and counts the uses of elements.
class FailingCall final : public CallHook {
public:
    FailingCall(std::uint64_t n, bool fromThenOn, CallOutcome outcome)
        : n_(n), fromThenOn_(fromThenOn), outcome_(outcome)
    {
        Install(this);
    }
    ~FailingCall() { Install(nullptr); }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    void Arm() { armed_ = true; }
    SweptPanel::Expected Disarm()
    {
        armed_ = false;
        // What a host pretends to have done cannot be seen through.
        const bool isKnown = !refusedEvents_ && outcome_ != CallOutcome::kPretends;
        return isKnown ? SweptPanel::Expected::kMendsItself : SweptPanel::Expected::kStands;
    }
    bool HasFailed() const { return calls_ > n_; }
    const char* Where() const { return where_; }
    std::int64_t OpenUses() const { return uses_; }

    CallOutcome OutcomeOf(const char*, const char* methodName) noexcept override
    {
        CallOutcome outcome = CallOutcome::kPasses;
        const std::string_view method = methodName;
        // A posted call that the host takes and forgets is its own loss.
        const bool isSpared = method == "UnuseElement" ||
                              (method == "PostCall" && outcome_ == CallOutcome::kPretends);
        if (armed_ && !isSpared) {
            const std::uint64_t call = calls_++;
            if (fromThenOn_ ? call >= n_ : call == n_) {
                outcome = outcome_;
                where_ = methodName;
                refusedEvents_ = refusedEvents_ || method.starts_with("On");
            }
        }
        if (outcome == CallOutcome::kPasses || outcome == CallOutcome::kPretends) {
            uses_ += method == "UseElement" ? 1 : method == "UnuseElement" ? -1 : 0;
        }
        return outcome;
    }

private:
    const std::uint64_t n_;
    const bool fromThenOn_;
    const CallOutcome outcome_;
    std::atomic<bool> armed_ = false;
    std::atomic<bool> refusedEvents_ = false;
    std::atomic<std::uint64_t> calls_ = 0;
    std::atomic<std::int64_t> uses_ = 0;
    std::atomic<const char*> where_ = "";
};

struct Way {
    const char* name;
    CallOutcome outcome;
    bool fromThenOn;
};
constexpr Way kWays[] = {
    {"fails", CallOutcome::kFails, false},
    {"fails from then on", CallOutcome::kFails, true},
    {"fails without a record", CallOutcome::kFailsMutely, false},
    {"fails without a record from then on", CallOutcome::kFailsMutely, true},
    {"throws", CallOutcome::kThrows, false},
    {"pretends", CallOutcome::kPretends, false},
    {"pretends from then on", CallOutcome::kPretends, true},
};

TEST(FailureSweep, ThePanelStandsWhateverCallFails)
{
    std::uint64_t points = 0;
    for (std::size_t way = 0; way < std::size(kWays); ++way) {
        const char* const name = kWays[way].name;
        points += SweepPoints(way, [&](const SweptPanel::Operation& operation, std::uint64_t n) {
            FailingCall call(n, kWays[way].fromThenOn, kWays[way].outcome);
            {
                SweptPanel panel;
                testing::ScopedTrace trace(__FILE__, __LINE__,
                                           std::string(operation.name) + ": call " +
                                               std::to_string(n) + " " + name);
                panel.Run(
                    operation, [&] { call.Arm(); }, [&] { return call.Disarm(); });
            }
            EXPECT_EQ(call.OpenUses(), 0) << operation.name << " " << n << " " << name;
            EXPECT_FALSE(HasFailure()) << call.Where();
            return call.HasFailed();
        });
        ASSERT_FALSE(HasFailure());
    }
    std::cout << points << " failing calls\n";
    EXPECT_GT(points, 100u);
}

TEST(FailureSweep, ThePanelStandsWhateverQueryOfThePdfLibraryFails)
{
    using Documents::Fault;
    std::uint64_t points = 0;
    for (const std::uint32_t times : {1u, Fault::kEveryTime}) {
        points += SweepPoints(times, [&](const SweptPanel::Operation& operation, std::uint64_t n) {
            bool failed = false;
            std::optional<Documents::FaultInjection> fault;
            SweptPanel panel;
            testing::ScopedTrace trace(__FILE__, __LINE__,
                                       std::string(operation.name) + ": query " +
                                           std::to_string(n) + ", times " + std::to_string(times));
            panel.Run(
                operation,
                [&] {
                    fault.emplace(Fault{Documents::TableEntry::kAny, kInjectedFailure,
                                        static_cast<std::uint32_t>(n), times});
                },
                [&] {
                    failed = fault->Failures() != 0;
                    fault.reset();
                    // A library that fails the same query again counts as one that always does.
                    return times == 1 ? SweptPanel::Expected::kMendsItself
                                      : SweptPanel::Expected::kMendsWithLoading;
                });
            return failed;
        });
        ASSERT_FALSE(HasFailure());
    }
    std::cout << points << " failing queries\n";
    EXPECT_GT(points, 10u);
}

TEST(FailureSweep, ThePanelStandsWhateverAtomIsRefused)
{
    const std::uint64_t points = SweepPoints(
        0,
        [&](const SweptPanel::Operation& operation, std::uint64_t n) {
            bool refused = false;
            SweptPanel panel;
            testing::ScopedTrace trace(__FILE__, __LINE__,
                                       std::string(operation.name) + ": atom " + std::to_string(n));
            panel.Run(
                operation, [&] { VxHostRefuseAtomRequest(n + 1); },
                [&] {
                    refused = VxHostRefuseAtomRequest(0) != 0;
                    return SweptPanel::Expected::kMendsItself;
                });
            return refused;
        },
        1);
    std::cout << points << " refused atoms\n";
    EXPECT_GT(points, 20u);
}

TEST(FailureSweep, ThePanelStandsWhateverServiceIsRefused)
{
    for (const char* const name :
         {"UIEngine", "UIService", "LocaleManager", "BLService", "PDModelService"}) {
        for (const SweptPanel::Operation& operation : SweptPanel::Operations()) {
            if (operation.endsHost) {
                continue;
            }
            SweptPanel panel;
            testing::ScopedTrace trace(__FILE__, __LINE__,
                                       std::string(operation.name) + " without " + name);
            BasicServiceObjectPtr<ServiceObject> service;
            panel.Run(
                operation,
                [&] {
                    ServiceProviderGetServiceObject(AtomService::Resolve(name), service.Receive());
                    VxHostRefuseService(name, kResultFactoryFailed, 0);
                },
                [&] {
                    VxHostRegisterService(name, service.Get());
                    service.Reset();
                    return SweptPanel::Expected::kMendsItself;
                });
            ASSERT_FALSE(testing::Test::HasFailure());
        }
    }
}

}  // namespace
}  // namespace PanelTests
