// Posting to the UI thread: the record as the host sees it, and who frees it.
#include "HostFixture.h"

#include "platform/Threads.h"
#include "ui-engine/UIThreadDispatcher.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;

class Dispatcher : public Fakes::HostFixture {
protected:
    Dispatcher()
    {
        service_.On<UIService::GetThreadObject>([this](std::uint32_t id, UIThread** out) {
            askedFor_ = id;
            *out = hasThread_ ? thread_.HandOut() : nullptr;
            return serviceCode_;
        });
        thread_.On<UIThread::PostCall>([this](UIThread::Runner runner, void* record) {
            if (postCode_ == kResultOk) {
                posted_.emplace_back(runner, record);
            }
            return postCode_;
        });
        Provide(service_);
    }

    void RunPosted()
    {
        for (const auto& [runner, record] : std::exchange(posted_, {})) {
            runner(record);
        }
    }
    std::function<void()> Counting()
    {
        return [this, token = token_] { ++calls_; };
    }
    long Copies() const { return token_.use_count() - 1; }

    Fake<UIService> service_;
    Fake<UIThread> thread_;
    UIThreadDispatcher dispatcher_;
    bool hasThread_ = true;
    ResultCode serviceCode_ = kResultOk;
    ResultCode postCode_ = kResultOk;
    std::uint32_t askedFor_ = 0;
    std::vector<std::pair<UIThread::Runner, void*>> posted_;
    std::shared_ptr<int> token_ = std::make_shared<int>(0);
    int calls_ = 0;
};

TEST_F(Dispatcher, PostsATaggedRecordThatRunsAndFreesItselfOnce)
{
    dispatcher_.Start();
    EXPECT_EQ(askedFor_, Platform::CurrentThreadId());
    EXPECT_TRUE(dispatcher_.Post(Counting()));
    ASSERT_EQ(posted_.size(), 1u);
    const auto* bytes = static_cast<const char*>(posted_[0].second);
    EXPECT_EQ(std::string(bytes, 4), "ININ");
    std::uint32_t size = 0;
    std::memcpy(&size, bytes + 4, sizeof size);
    EXPECT_EQ(size, 40u);
    EXPECT_EQ(Copies(), 1);
    EXPECT_EQ(calls_, 0);  // later, not now
    RunPosted();
    EXPECT_EQ(calls_, 1);
    EXPECT_EQ(Copies(), 0);
}

TEST_F(Dispatcher, FreesARecordThatTheHostDidNotTake)
{
    struct Row {
        ResultCode code;
        bool hasRecord;
        bool throws;
    };
    const Row rows[] = {
        {1, true, false}, {10, true, false}, {5, false, false}, {5, true, true}, {2, true, true},
    };
    dispatcher_.Start();
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.code << row.hasRecord);
        postCode_ = row.code;
        thread_->error.reset();
        if (row.hasRecord) {
            thread_->error = ErrorRecord{0x99, L"queue is full", "", "", 0};
        }
        bool accepted = true;
        const auto thrown = ThrownBy([&] { accepted = dispatcher_.Post(Counting()); });
        EXPECT_EQ(thrown.has_value(), row.throws);
        EXPECT_EQ(accepted, row.throws);
        if (thrown) {
            EXPECT_EQ(thrown->Message(), L"queue is full");
        }
        EXPECT_EQ(Copies(), 0);
        EXPECT_EQ(calls_, 0);
    }
}

TEST_F(Dispatcher, StaysDetachedWhenItsServiceFails)
{
    dispatcher_.Start();
    EXPECT_TRUE(dispatcher_.IsStarted());
    serviceCode_ = 5;
    service_->error = ErrorRecord{5, L"no threads", "", "", 0};
    EXPECT_EQ(ThrownBy([&] { dispatcher_.Start(); })->Message(), L"no threads");
    EXPECT_FALSE(dispatcher_.IsStarted());
    EXPECT_FALSE(dispatcher_.IsUIThread());
    EXPECT_EQ(thread_->References(), 1u);
    ProvideAs("UIService", nullptr);
    dispatcher_.Start();
    EXPECT_TRUE(dispatcher_.IsUIThread());
    EXPECT_FALSE(dispatcher_.Post(Counting()));
}

TEST_F(Dispatcher, AsksAgainForWhatWasMissing)
{
    ProvideAs("UIService", nullptr);
    dispatcher_.EnsureStarted();  // knows its thread now
    service_->error = ErrorRecord{5, L"no threads", "", "", 0};
    Provide(service_);
    serviceCode_ = 5;
    EXPECT_TRUE(ThrownBy([&] { dispatcher_.EnsureStarted(); }));
    EXPECT_TRUE(dispatcher_.IsUIThread()) << "as it was";
    serviceCode_ = kResultOk;
    for (int call = 0; call < 2; ++call) {
        dispatcher_.EnsureStarted();
        EXPECT_EQ(dispatcher_.ThreadObject().Get(), thread_.Get());
    }
    EXPECT_EQ(service_.Calls<UIService::GetThreadObject>(), 2u) << "not when nothing is missing";
}

TEST_F(Dispatcher, PostsNothingWhenDetachedOrWithoutACall)
{
    EXPECT_FALSE(dispatcher_.Post(Counting()));
    dispatcher_.Start();
    EXPECT_FALSE(dispatcher_.Post({}));
    EXPECT_FALSE(UIThreadDispatcher::PostTo(nullptr, Counting()));
    dispatcher_.Detach();
    dispatcher_.Detach();
    EXPECT_EQ(thread_->References(), 1u);
    EXPECT_FALSE(dispatcher_.IsUIThread());
    EXPECT_FALSE(dispatcher_.Post(Counting()));
    EXPECT_EQ(thread_.Calls<UIThread::PostCall>(), 0u);
    EXPECT_EQ(Copies(), 0);
}

TEST_F(Dispatcher, MayBePostedToAndDetachedAtTheSameTime)
{
    std::atomic<int> taken = 0;
    thread_.On<UIThread::PostCall>([&](UIThread::Runner runner, void* record) {
        ++taken;
        runner(record);
        return kResultOk;
    });
    std::atomic<int> accepted = 0;
    std::atomic<int> ran = 0;
    for (int round = 0; round < 50; ++round) {
        dispatcher_.Start();
        std::vector<std::jthread> threads;
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([&] {
                EXPECT_FALSE(dispatcher_.IsUIThread());
                for (int call = 0; call < 20; ++call) {
                    accepted += dispatcher_.Post([&] { ++ran; }) ? 1 : 0;
                }
            });
        }
        dispatcher_.Detach();
    }
    EXPECT_EQ(accepted, taken);
    EXPECT_EQ(ran, taken);
    EXPECT_EQ(thread_->References(), 1u);
}

TEST(PostedCall, LeavesForeignRecordsAlone)
{
    int calls = 0;
    const auto record = std::make_unique<SODetails::PostedCall>(
        SODetails::PostedCall{0x4E494E48, 40, [&] { ++calls; }});
    SODetails::RunPostedCall(record.get());  // neither run nor freed
    EXPECT_TRUE(record->call);
    EXPECT_EQ(record->tag, 0x4E494E48u);
    SODetails::RunPostedCall(nullptr);
    EXPECT_EQ(calls, 0);

    auto empty = std::make_unique<SODetails::PostedCall>(
        SODetails::PostedCall{SODetails::kPostedCallTag, 40, {}});
    EXPECT_THROW(SODetails::RunPostedCall(empty.release()), std::bad_function_call);
}

}  // namespace
