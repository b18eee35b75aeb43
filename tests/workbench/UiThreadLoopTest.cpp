#include "services/UiThreadLoop.h"

#include "platform/Threads.h"
#include "services/ForeignThread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Workbench::FailureLog;
using Workbench::ForeignThread;
using Workbench::UiThreadLoop;

class Loop : public ::testing::Test {
protected:
    // Posts as a module does, with a record that its runner frees.
    bool PostNumber(int number)
    {
        struct Record {
            std::vector<int>* numbers;
            int number;
        };
        auto record = std::make_unique<Record>(Record{&numbers, number});
        const bool accepted = loop.Post(
            [](void* data) {
                const std::unique_ptr<Record> taken(static_cast<Record*>(data));
                taken->numbers->push_back(taken->number);
            },
            record.get());
        if (accepted) {
            (void)record.release();
        }
        return accepted;
    }

    void OnOtherThread(const std::function<void()>& work) { std::thread(work).join(); }

    FailureLog failures;
    UiThreadLoop loop{failures};
    std::vector<int> numbers;
};

TEST_F(Loop, RunsCallsInTheOrderOfPostingIncludingThosePostedByCalls)
{
    PostNumber(1);
    loop.Post([this] {
        EXPECT_TRUE(loop.IsUiThread());
        PostNumber(4);
    });
    OnOtherThread([this] {
        EXPECT_FALSE(loop.IsUiThread());
        PostNumber(3);
    });
    EXPECT_THAT(numbers, IsEmpty());
    EXPECT_EQ(loop.WaitingCount(), 3u);
    EXPECT_EQ(loop.RunWaiting(), 4u);
    EXPECT_THAT(numbers, ElementsAre(1, 3, 4));
    EXPECT_FALSE(loop.RunNext());
}

TEST_F(Loop, HoldsBackOnlyWhatThreadsOfAModulePost)
{
    ForeignThread foreign(loop, failures);
    const auto postAll = [&](int first) {
        PostNumber(first);
        OnOtherThread([&] { PostNumber(first + 1); });  // a thread that the host does not know
        foreign.Run([&] { PostNumber(first + 2); });
        while (!foreign.IsIdle()) {
            std::this_thread::yield();
        }
    };
    loop.Hold(true);
    postAll(10);
    postAll(20);
    EXPECT_EQ(loop.HeldCount(), 2u);
    loop.RunWaiting();
    EXPECT_THAT(numbers, ElementsAre(10, 12, 20, 22));
    loop.Hold(false);
    EXPECT_EQ(loop.HeldCount(), 0u);
    loop.RunWaiting();
    EXPECT_THAT(numbers, ElementsAre(10, 12, 20, 22, 11, 21));
}

TEST_F(Loop, NotesWhatACallThrowsAndGoesOn)
{
    loop.Post([] { throw std::runtime_error("broken task"); });
    PostNumber(1);
    loop.RunWaiting();
    EXPECT_THAT(numbers, ElementsAre(1));
    const auto noted = failures.Take();
    ASSERT_EQ(noted.size(), 1u);
    EXPECT_EQ(noted[0].message, "broken task");
    EXPECT_THAT(failures.Take(), IsEmpty());
}

TEST_F(Loop, WaitsForCallsOfOtherThreadsAndGivesUpInTime)
{
    std::atomic<bool> done = false;
    std::thread poster([&] {
        for (int i = 0; i < 100; ++i) {
            PostNumber(i);
        }
        loop.Post([&] { done = true; });
    });
    const auto soon = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    EXPECT_TRUE(loop.RunUntil([&] { return done.load(); }, soon));
    poster.join();
    EXPECT_EQ(numbers.size(), 100u);

    const auto now = std::chrono::steady_clock::now();
    EXPECT_FALSE(loop.RunUntil([] { return false; }, now + std::chrono::milliseconds(30)));
    // A chain of calls that never ends must not keep it from giving up.
    std::function<void()> again = [&] { loop.Post(again); };
    again();
    EXPECT_FALSE(loop.RunUntil([] { return false; },
                               std::chrono::steady_clock::now() + std::chrono::milliseconds(30)));
    again = [] {};
    loop.RunWaiting();
}

TEST_F(Loop, ForeignThreadFinishesItsWorkBeforeItStops)
{
    std::vector<int> done;
    ForeignThread foreign(loop, failures);
    std::uint32_t threadId = 0;
    for (int i = 0; i < 50; ++i) {
        foreign.Run([&, i] {
            done.push_back(i);
            threadId = Platform::CurrentThreadId();
            if (i == 10) {
                throw std::runtime_error("one of them fails");
            }
        });
    }
    foreign.Stop();
    foreign.Run([&] { done.push_back(99); });
    foreign.Stop();
    EXPECT_EQ(done.size(), 50u);
    EXPECT_EQ(done.back(), 49);
    EXPECT_NE(threadId, Platform::CurrentThreadId());
    EXPECT_EQ(failures.Take().size(), 1u);
}

}  // namespace
