// The one call path: which methods are called, and what becomes of their result codes.
#include "HostFixture.h"
#include "ProbeObject.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

// A catalogue that forgets a declaration is noticed wherever the interface is used.
struct ForgetfulInterface : ServiceObject {
    SO_METHOD(ForgetfulInterface, First, 0, void);
    SO_METHOD(ForgetfulInterface, Forgotten, 255, void);
    using Catalogue = SODetails::MethodCatalogue<First>;
};
static_assert(!SODetails::kCatalogueIsComplete<ForgetfulInterface>);
static_assert(SODetails::kCatalogueIsComplete<ProbeInterface>);

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;

class MethodCall : public Fakes::HostFixture {
protected:
    MethodCall()
    {
        probe_.On<ProbeInterface::First>([this](int value) { return Answer(value); });
        probe_.On<ProbeInterface::Second>([this](int value) { return Answer(value); });
        probe_.On<ProbeInterface::Distant>([this](int value) { return Answer(value); });
    }
    ResultCode Answer(int value)
    {
        received_ = value;
        return code_;
    }

    Fake<ProbeInterface> probe_;
    ResultCode code_ = kResultOk;
    int received_ = 0;
};

TEST_F(MethodCall, NeedsATableThatReachesBeyondTheSlotsStart)
{
    ProbeInterface* object = probe_.Get();
    for (std::uint32_t bytes = 0; bytes <= 264; ++bytes) {
        probe_->CutTable(bytes);
        EXPECT_EQ(CallMethod<ProbeInterface::First>(object, 1).called, bytes > 0) << bytes;
        EXPECT_EQ(CallMethod<ProbeInterface::Second>(object, 1).called, bytes > 8) << bytes;
        EXPECT_EQ(CallMethod<ProbeInterface::Distant>(object, 1).called, bytes > 248) << bytes;
        EXPECT_EQ(HasMethod<ProbeInterface::Distant>(object), bytes > 248) << bytes;
    }
}

TEST_F(MethodCall, SkipsMissingObjectsAndEntries)
{
    probe_->SetEntry(0, nullptr);
    code_ = kResultUnexpected;
    probe_->error = ErrorRecord{6, L"not asked for", "", "", 0};
    EXPECT_FALSE(CallMethod<ProbeInterface::First>(probe_.Get(), 1).called);
    EXPECT_FALSE(HasMethod<ProbeInterface::First>(probe_.Get()));
    EXPECT_FALSE(CallMethod<ProbeInterface::First>(nullptr, 1).Succeeded());
    EXPECT_FALSE(HasMethod<ProbeInterface::First>(nullptr));
    EXPECT_EQ(probe_->errorRequests, 0u);
}

TEST_F(MethodCall, CheckRuleThrowsOnlyWhatTheObjectCanTell)
{
    struct Row {
        ResultCode code;
        bool hasEntry;
        bool hasRecord;
        bool throws;
    };
    const Row rows[] = {
        {0, true, true, false},   {1, true, true, false},         {10, true, true, false},
        {2, true, true, true},    {9, true, true, true},          {11, true, true, true},
        {5, true, false, false},  {0xFFFFFFFF, true, true, true}, {5, false, true, false},
        {5, false, false, false},
    };
    const auto entry = probe_.Get()->GetLastErrorInfo;
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.code << row.hasEntry << row.hasRecord);
        code_ = row.code;
        probe_->errorRequests = 0;
        probe_.Get()->GetLastErrorInfo = row.hasEntry ? entry : nullptr;
        probe_->error.reset();
        if (row.hasRecord) {
            // The record's own code is the one that counts.
            probe_->error = ErrorRecord{0x4711, L"host \u20ac", "Host::F", "host.h", 42};
        }
        CallResult result;
        const auto thrown =
            ThrownBy([&] { result = CallMethod<ProbeInterface::First>(probe_.Get(), 7); });
        EXPECT_EQ(std::exchange(received_, 0), 7);
        ASSERT_EQ(thrown.has_value(), row.throws);
        if (!thrown) {
            EXPECT_TRUE(result.called);
            EXPECT_EQ(result.code, row.code);
            EXPECT_EQ(result.Succeeded(), row.code == 0);
            EXPECT_EQ(probe_->errorRequests, row.hasEntry && row.code == 5 ? 1u : 0u);
            continue;
        }
        EXPECT_EQ(thrown->Code(), 0x4711u);
        EXPECT_EQ(thrown->Message(), L"host \u20ac");
        EXPECT_STREQ(thrown->what(), "host \xE2\x82\xAC");
        EXPECT_EQ(thrown->Function(), "Host::F");
        EXPECT_EQ(thrown->File(), "host.h");
        EXPECT_EQ(thrown->Line(), 42u);
        EXPECT_FALSE(thrown->ErrorObject());
    }
}

TEST_F(MethodCall, ErrorObjectIsReleasedOnceWithTheLastCopyOfTheException)
{
    Fake<ProbeInterface> errorObject;
    probe_->error = ErrorRecord{6, L"m", "f", "h", 1};
    probe_->errorObject = BasicServiceObjectPtr<ServiceObject>::Retain(errorObject.Get());
    code_ = 6;
    auto thrown = ThrownBy([&] { CallMethod<ProbeInterface::First>(probe_.Get(), 1); });
    probe_->errorObject.Reset();
    ASSERT_TRUE(thrown);
    EXPECT_EQ(thrown->ErrorObject().Get(), errorObject.Get());
    EXPECT_EQ(errorObject->References(), 2u);
    static_assert(std::is_nothrow_copy_constructible_v<ServiceObjectException>);
    {
        const ServiceObjectException copy = *thrown;
        thrown.reset();
        EXPECT_EQ(errorObject->References(), 2u);
        EXPECT_EQ(copy.Message(), L"m");
    }
    EXPECT_EQ(errorObject->References(), 1u);
}

TEST(ValidityTest, NamesTheFirstThingThatIsWrong)
{
    std::vector<std::byte> memory(kMethodTableOffset + 400);
    auto* object = reinterpret_cast<ServiceObject*>(memory.data());
    struct Row {
        std::uint32_t id;
        std::uint32_t size;
        std::uint32_t tagAt;  // table size that the end tag fits
        ResultCode expected;
    };
    const std::uint32_t id = CalculateSequenceHash("UIWnd", 5);
    const Row rows[] = {
        {id, 0, 0, 0},     {id, 264, 264, 0},        {id, 376, 376, 0},
        {id, 377, 377, 5}, {id, 0xFFFFFFF8, 264, 5}, {id, 264, 256, 5},
        {id, 264, 265, 5}, {id ^ 1, 264, 264, 4},    {0, 264, 264, 4},
        {0, 377, 377, 4},
    };
    for (const Row& row : rows) {
        std::fill(memory.begin(), memory.end(), std::byte{0xCC});
        object->interfaceId = row.id;
        object->methodTableSize = row.size;
        std::memcpy(memory.data() + 64 + row.tagAt, "EOFT", 4);
        EXPECT_EQ(CheckServiceObject(object, "UIWnd"), row.expected)
            << row.id << " " << row.size << " " << row.tagAt;
    }
    EXPECT_EQ(CheckServiceObject(nullptr, "UIWnd"), 2u);
}

}  // namespace
