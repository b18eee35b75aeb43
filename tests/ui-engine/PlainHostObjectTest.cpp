// Objects of a host made of functions: what their functions answer, and who hears their events.
#include "ui-engine/PlainHostObject.h"

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "ui-engine/BLDocument.SO.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using Document = PlainHostObject<BLDocument>;
using Changed = BLDocument::OnAnnotChanged;

void Fire(const BasicServiceObjectPtr<Document>& document, std::uint32_t page)
{
    document->Fire<Changed>(PDAnnotOperation::kAdded, page, nullptr);
}

TEST(PlainHostObject, AnswersWithWhatItsFunctionsReturnOrThrow)
{
    const auto document = Document::Make();
    const auto pageCount = [&](std::int32_t& count) {
        return CallMethodUnchecked<BLDocument::GetPageCount>(document->Get(), &count);
    };
    std::int32_t count = 0;
    EXPECT_FALSE(pageCount(count).called);
    document->Offer<BLDocument::GetPageCount>([](std::int32_t* out) { *out = 3; });
    EXPECT_TRUE(pageCount(count).Succeeded());
    EXPECT_EQ(count, 3);
    document->Offer<BLDocument::GetPageCount>([](std::int32_t*) { return kResultOutOfRange; });
    EXPECT_EQ(pageCount(count).code, kResultOutOfRange);
    document->Offer<BLDocument::GetPageCount>([](std::int32_t*) { throw std::runtime_error(""); });
    EXPECT_EQ(pageCount(count).code, kResultUnexpected);
    try {
        CallMethod<BLDocument::GetPageCount>(document->Get(), &count);
        ADD_FAILURE() << "the object has no record of its failure";
    } catch (const ServiceObjectException& failure) {
        EXPECT_STREQ(failure.what(), "BLDocument::GetPageCount() failed, code: 6");
    }
    ClearThreadLastError();
}

TEST(PlainHostObject, CallsListenersOfAnEventInOrderUntilTheyEnd)
{
    const auto document = Document::Make();
    std::vector<std::uint32_t> heard;
    SOEvent::SubscriptionHandle second;
    const auto first = BLDocument::Subscribe_OnAnnotChanged(
        document->Get(), [&](PDAnnotOperation, unsigned page, _PDAnnotRec*) {
            heard.push_back(page);
            if (page == 2) {
                second.reset();  // its turn would be next
            }
        });
    second = BLDocument::Subscribe_OnAnnotChanged(
        document->Get(),
        [&](PDAnnotOperation, unsigned page, _PDAnnotRec*) { heard.push_back(10 * page); });
    auto other = BLDocument::Subscribe_OnPagesChanged(
        document->Get(), [&](PDPageOperation, const _PDPageRange*) { heard.push_back(0); });
    Fire(document, 1);
    Fire(document, 2);
    EXPECT_EQ(heard, (std::vector<std::uint32_t>{1, 10, 2}));
    EXPECT_EQ(document->ListenerCount(), 2u);
    other.reset();  // and not the first one of another event
    Fire(document, 3);
    EXPECT_EQ(heard.back(), 3u);
}

TEST(PlainHostObject, FreesItsFunctionsAndCallablesAndOutlivesNoReference)
{
    const auto content = std::make_shared<int>(0);
    auto document = Document::Make();
    document->Offer<BLDocument::GetPageCount>([content](std::int32_t* out) { *out = *content; });
    const auto subscription = BLDocument::Subscribe_OnAnnotChanged(
        document->Get(), [content](PDAnnotOperation, unsigned, _PDAnnotRec*) {});
    BasicServiceObjectPtr<ServiceObject> handedOut;
    document->HandOut(handedOut.Receive());
    document.Reset();
    EXPECT_EQ(content.use_count(), 3);
    handedOut.Reset();
    EXPECT_EQ(content.use_count(), 1);
}

}  // namespace
