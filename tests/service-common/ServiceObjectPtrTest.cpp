// Owning and weak handles: who holds how many references, and who drops them.
#include "HostFixture.h"
#include "ProbeObject.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using Fakes::Fake;
using Handle = BasicServiceObjectPtr<ProbeInterface>;
using WeakHandle = WeakServiceObjectPtr<ProbeInterface>;

class ObjectHandle : public Fakes::HostFixture {
protected:
    std::uint32_t References() const { return probe_->References(); }

    Fake<ProbeInterface> probe_;
};

TEST_F(ObjectHandle, HoldsOneReferenceHoweverItIsPassedOn)
{
    {
        Handle held = Handle::Retain(probe_.Get());
        EXPECT_EQ(References(), 2u);
        Handle copy = held;
        EXPECT_EQ(References(), 3u);
        const BasicServiceObjectPtr<ServiceObject> asBase = copy;
        EXPECT_EQ(References(), 4u);
        Handle moved = std::move(copy);
        EXPECT_FALSE(copy);  // NOLINT: a handle moved from is empty
        EXPECT_EQ(References(), 4u);
        Handle& alias = held;
        held = alias;
        held = std::move(alias);
        EXPECT_EQ(held.Get(), probe_.Get());
        EXPECT_EQ(References(), 4u);
        moved = nullptr;
        EXPECT_EQ(References(), 3u);
        held = Handle::Adopt(moved.Detach());
        EXPECT_EQ(References(), 2u);
        *held.Receive() = probe_.HandOut();
        EXPECT_EQ(References(), 3u);
        *held.Receive() = nullptr;
        held.Reset();
        EXPECT_EQ(References(), 2u);
    }
    EXPECT_EQ(References(), 1u);
}

TEST_F(ObjectHandle, ToleratesObjectsWithoutCountingEntries)
{
    const auto addRef = std::exchange(probe_.Get()->AddRef, nullptr);
    const auto release = std::exchange(probe_.Get()->Release, nullptr);
    const auto getWeak = std::exchange(probe_.Get()->GetWeakReference, nullptr);
    {
        const Handle held = Handle::Retain(probe_.Get());
        EXPECT_TRUE(held);
        EXPECT_TRUE(WeakHandle(probe_.Get()).IsEmpty());
        EXPECT_FALSE(WeakHandle(probe_.Get()).Lock());
        EXPECT_FALSE(WeakHandle(nullptr).Lock());
    }
    EXPECT_EQ(References(), 1u);
    probe_.Get()->AddRef = addRef;
    probe_.Get()->Release = release;
    probe_.Get()->GetWeakReference = getWeak;
}

class WeakObjectHandle : public ObjectHandle {
protected:
    // The fake's record, with one holder added for the caller.
    WeakReferenceRecord* Record()
    {
        WeakReferenceRecord* record = nullptr;
        EXPECT_EQ(probe_.Get()->GetWeakReference(probe_.Get(), &record), kResultOk);
        return record;
    }
};

TEST_F(WeakObjectHandle, IsOneHolderOfTheRecordHoweverItIsPassedOn)
{
    WeakReferenceRecord* record = Record();
    const auto holders = [&] { return record->functions.GetHolderCount(record); };
    const std::uint32_t before = holders();
    {
        WeakHandle weak(probe_.Get());
        EXPECT_EQ(holders(), before + 1);
        WeakHandle copy = weak;
        EXPECT_EQ(holders(), before + 2);
        const WeakHandle moved = std::move(copy);
        EXPECT_EQ(holders(), before + 2);
        weak = moved;
        WeakHandle& alias = weak;
        weak = alias;
        EXPECT_EQ(holders(), before + 2);
        EXPECT_EQ(References(), 1u);
        EXPECT_EQ(weak.Lock()->interfaceName, probe_.Get()->interfaceName);

        {
            const Handle locked = weak.Lock();
            probe_.Reset();
            EXPECT_TRUE(weak.Lock());
        }
        EXPECT_EQ(holders(), before + 1);  // the object's own hold is gone
        EXPECT_FALSE(weak.Lock());
        const WeakHandle late = weak;
        EXPECT_TRUE(late.IsEmpty());
        weak.Reset();
        weak.Reset();
        EXPECT_EQ(holders(), before);
    }
    EXPECT_EQ(record->functions.ReleaseHolder(record), before - 2);
}

}  // namespace
