#include "services/EventSource.h"

#include "ui-engine/BLDocumentView.SO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Event = BLDocumentView::OnFocusPageChanged;
using Source = Workbench::EventSource<Event>;

// Subscribes the way a module does: a heap copy that the source frees.
std::uint64_t Subscribe(Source& source, Event::Callable callable)
{
    return source.Subscribe(&Event::Forward, &Event::Release,
                            Event::Hold(std::move(callable)).release());
}

TEST(EventSource, CallsInOrderOfSubscription)
{
    Source source;
    std::vector<int> calls;
    std::vector<std::uint64_t> cookies;
    for (int i = 0; i < 4; ++i) {
        cookies.push_back(
            Subscribe(source, [&calls, i](unsigned page) { calls.push_back(i * 10 + int(page)); }));
    }
    EXPECT_TRUE(source.Unsubscribe(cookies[1]));
    Subscribe(source, [&calls](unsigned) { calls.push_back(99); });
    source.Fire(3);
    EXPECT_THAT(calls, ElementsAre(3, 23, 33, 99));
    EXPECT_FALSE(source.Unsubscribe(cookies[1]));
    EXPECT_FALSE(source.Unsubscribe(0));
}

TEST(EventSource, MayBeUnsubscribedInsideItsOwnCallback)
{
    Source source;
    std::vector<int> calls;
    std::uint64_t own = 0;
    const auto held = std::make_shared<int>();
    own = Subscribe(source, [&, held](unsigned) {
        calls.push_back(1);
        EXPECT_TRUE(source.Unsubscribe(own));
        EXPECT_EQ(*held, 0);  // the callable lives on while it runs
    });
    Subscribe(source, [&](unsigned) { calls.push_back(2); });
    source.Fire(0);
    source.Fire(0);
    EXPECT_THAT(calls, ElementsAre(1, 2, 2));
    EXPECT_EQ(held.use_count(), 1);
}

TEST(EventSource, LeavesOutWhoUnsubscribesAndWhoComesDuringAFiring)
{
    Source source;
    std::vector<int> calls;
    std::uint64_t later = 0;
    Subscribe(source, [&](unsigned) {
        calls.push_back(1);
        source.Unsubscribe(later);
        if (calls.size() == 1) {
            Subscribe(source, [&](unsigned) { calls.push_back(3); });
        }
    });
    later = Subscribe(source, [&](unsigned) { calls.push_back(2); });
    source.Fire(0);
    EXPECT_THAT(calls, ElementsAre(1));
    source.Fire(0);
    EXPECT_THAT(calls, ElementsAre(1, 1, 3));
}

TEST(EventSource, TellsWhatSubscribersThrowAndGoesOn)
{
    Source source;
    bool reached = false;
    Subscribe(source, {});  // an empty callable
    Subscribe(source, [&](unsigned) { reached = true; });
    const Workbench::FireFailures failures = source.Fire(0);
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_THROW(std::rethrow_exception(failures[0]), std::bad_function_call);
    EXPECT_TRUE(reached);
}

TEST(EventSource, WaitsForACallThatRunsOnAnotherThread)
{
    Source source;
    std::promise<void> entered;
    std::promise<void> mayLeave;
    std::atomic<bool> left = false;
    const std::uint64_t cookie = Subscribe(source, [&](unsigned) {
        entered.set_value();
        mayLeave.get_future().wait();
        left = true;
    });
    std::thread firing([&] { source.Fire(0); });
    entered.get_future().wait();
    auto unsubscribed = std::async(std::launch::async, [&] {
        source.Unsubscribe(cookie);
        return left.load();
    });
    // It cannot have come back yet; the call inside is let go only now.
    EXPECT_EQ(unsubscribed.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    mayLeave.set_value();
    EXPECT_TRUE(unsubscribed.get());
    firing.join();
}

// After Unsubscribe nothing of the subscriber may be touched, whatever the others do.
TEST(EventSource, NeverCallsAfterUnsubscribingUnderAStormOfFirings)
{
    Source source;
    std::atomic<bool> ends = false;
    std::vector<std::thread> firing;
    for (int i = 0; i < 2; ++i) {
        firing.emplace_back([&] {
            while (!ends) {
                EXPECT_THAT(source.Fire(1), IsEmpty());
            }
        });
    }
    for (int i = 0; i < 2'000; ++i) {
        auto target = std::make_unique<int>(0);
        const std::uint64_t cookie = Subscribe(source, [pointer = target.get()](unsigned) {
            std::atomic_ref<int>(*pointer).fetch_add(1);
        });
        source.Unsubscribe(cookie);
        target.reset();
    }
    ends = true;
    for (std::thread& thread : firing) {
        thread.join();
    }
    EXPECT_EQ(source.SubscriberCount(), 0u);
}

}  // namespace
