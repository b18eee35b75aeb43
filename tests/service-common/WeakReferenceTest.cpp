// Reference counts and weak-reference records of a live object, also while threads pull at it.
#include "HostFixture.h"
#include "ProbeObject.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

class WeakRecord : public Fakes::HostFixture {
protected:
    WeakRecord() { EXPECT_EQ(header_->GetWeakReference(header_, &record_), kResultOk); }
    ~WeakRecord() override
    {
        EXPECT_EQ(deaths_, 1);
        EXPECT_FALSE(record_->functions.IsAlive(record_));
        EXPECT_EQ(record_->object.load(), nullptr);
        EXPECT_EQ(record_->functions.Lock(record_), nullptr);
        EXPECT_EQ(record_->spinLock.load(), 0u);
        EXPECT_EQ(record_->functions.ReleaseHolder(record_), 0u);
    }

    std::atomic<int> deaths_ = 0;
    ServiceObject* header_ = ProbeObject::Create(deaths_).Detach()->AsInterface();
    WeakReferenceRecord* record_ = nullptr;
};

TEST_F(WeakRecord, IsOneForAllHoldersAndOutlivesItsObject)
{
    EXPECT_EQ(header_->GetWeakReference(header_, nullptr), kResultNullArgument);
    EXPECT_EQ(record_->holderCount.load(), 2u);  // the object's hold and the test's
    WeakReferenceRecord* again = nullptr;
    EXPECT_EQ(header_->GetWeakReference(header_, &again), kResultOk);
    EXPECT_EQ(again, record_);
    EXPECT_EQ(record_->functions.GetHolderCount(record_), 3u);
    EXPECT_EQ(record_->functions.AddHolder(record_), 4u);
    EXPECT_EQ(record_->functions.ReleaseHolder(record_), 3u);
    EXPECT_EQ(record_->functions.ReleaseHolder(record_), 2u);
    EXPECT_EQ(record_->object.load(), header_);

    EXPECT_TRUE(record_->functions.IsAlive(record_));
    EXPECT_EQ(record_->functions.Lock(record_), header_);
    EXPECT_EQ(header_->GetRefCount(header_), 2u);
    EXPECT_EQ(header_->Release(header_), 1u);
    EXPECT_EQ(header_->AddRef(header_), 2u);
    EXPECT_EQ(header_->Release(header_), 1u);
    EXPECT_EQ(deaths_, 0);
    EXPECT_EQ(header_->Release(header_), 0u);
    EXPECT_EQ(deaths_, 1);
    EXPECT_EQ(record_->holderCount.load(), 1u);
}

TEST_F(WeakRecord, RevivesAnObjectBetweenItsLastDecrementAndItsDestruction)
{
    for (const bool revived : {true, false}) {
        std::uint32_t remaining = 99;
        {
            std::jthread releasing;
            const SODetails::SpinLockGuard guard(record_->spinLock);
            releasing = std::jthread([&] { remaining = header_->Release(header_); });
            while (header_->GetRefCount(header_) != 0) {
                std::this_thread::yield();  // the releasing thread is bound to ask for the lock
            }
            EXPECT_EQ(deaths_, 0);
            if (revived) {
                header_->AddRef(header_);  // what Lock does while it has the lock
            }
            // The guard goes first, then the thread is joined.
        }
        EXPECT_EQ(remaining, revived ? 1u : 0u);
        EXPECT_EQ(deaths_, revived ? 0 : 1);
        EXPECT_EQ(record_->functions.IsAlive(record_), revived);
        EXPECT_EQ(record_->holderCount.load(), revived ? 2u : 1u);
    }
}

TEST(WeakReference, EveryObjectDiesOnceHoweverManyThreadsLockAndReleaseIt)
{
    constexpr int kRounds = 1500;
    constexpr int kThreads = 3;
    std::atomic<int> deaths = 0;
    std::atomic<int> locks = 0;
    std::atomic<int> begun = 0;
    std::atomic<int> ended = 0;
    const auto waitFor = [](const std::atomic<int>& count, int wanted) {
        while (count.load() < wanted) {
            std::this_thread::yield();
        }
    };
    BasicServiceObjectPtr<ProbeObject> object;
    WeakServiceObjectPtr<ProbeObject> weak;
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 1; round <= kRounds; ++round) {
                waitFor(begun, round);
                for (int attempt = 0; attempt < 40; ++attempt) {
                    const auto locked = weak.Lock();
                    if (!locked) {
                        break;
                    }
                    ++locks;
                    const WeakServiceObjectPtr<ProbeObject> further(locked.Get());
                }
                ++ended;
            }
        });
    }
    for (int round = 1; round <= kRounds; ++round) {
        object = ProbeObject::Create(deaths);
        weak = WeakServiceObjectPtr<ProbeObject>(object.Get());
        const int locksBefore = locks;
        ++begun;
        waitFor(locks, locksBefore + 1);  // the threads are at it
        object.Reset();
        waitFor(ended, round * kThreads);
        EXPECT_EQ(deaths, round);
    }
}

// What an event does that is still running when its handler is destroyed.
struct AskingWhileItDies : SODetails::ServiceObjectBase<ProbeInterface> {
    ~AskingWhileItDies() { *asked = WeakServiceObjectPtr<ProbeInterface>(AsInterface()); }
    static AskingWhileItDies* FromInterface(ServiceObject* header) noexcept
    {
        return static_cast<AskingWhileItDies*>(FromHeader(header));
    }
    WeakServiceObjectPtr<ProbeInterface>* asked = nullptr;
};

TEST(WeakReference, IsThatOfADeadObjectWhileItsObjectIsDestroyed)
{
    using Object = SODetails::ServiceObjectCppTheConcrete<AskingWhileItDies>;
    for (const bool hasRecord : {true, false}) {
        WeakServiceObjectPtr<ProbeInterface> asked;
        auto object = Object::Create();
        object->asked = &asked;
        if (hasRecord) {
            asked = WeakServiceObjectPtr<ProbeInterface>(object->AsInterface());
        }
        object.Reset();
        EXPECT_FALSE(asked.Lock()) << hasRecord;
    }
}

TEST(WeakReference, ThreadsThatAskFirstAgreeOnOneRecord)
{
    constexpr int kThreads = 3;
    std::atomic<int> deaths = 0;
    for (int round = 0; round < 100; ++round) {
        const auto object = ProbeObject::Create(deaths);
        std::vector<WeakReferenceRecord*> records(kThreads);
        {
            std::atomic<int> arrived = 0;
            std::vector<std::jthread> threads;
            for (auto& record : records) {
                threads.emplace_back([&] {
                    for (++arrived; arrived < kThreads;) {
                        std::this_thread::yield();
                    }
                    ServiceObject* header = object->AsInterface();
                    header->GetWeakReference(header, &record);
                });
            }
        }
        EXPECT_EQ(records, std::vector<WeakReferenceRecord*>(kThreads, records[0]));
        EXPECT_EQ(records[0]->holderCount.load(), kThreads + 1u);
        for (auto* record : records) {
            record->functions.ReleaseHolder(record);
        }
    }
}

}  // namespace
