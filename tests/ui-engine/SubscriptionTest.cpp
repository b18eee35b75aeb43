// Subscriptions to a host that frees early, refuses, dies or leads back into the module.
#include "FakeEvent.h"
#include "HostFixture.h"

#include "ui-engine/BLDocument.SO.h"
#include "ui-engine/BLDocumentView.SO.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using Fakes::Fake;
using Fakes::FakeEvent;
using Layout = BLDocumentView::OnLayoutChanged;
using Zoom = BLDocumentView::OnZoomChanged;

class Subscription : public Fakes::HostFixture {
protected:
    SOEvent::SubscriptionHandle Subscribe(Layout::Callable callable)
    {
        return BLDocumentView::Subscribe_OnLayoutChanged(view_.Get(), std::move(callable));
    }
    // A callable that counts its calls and shows whether a copy of it still exists.
    Layout::Callable Counting()
    {
        return [token = token_, this](unsigned) { ++delivered_; };
    }
    long Copies() const { return token_.use_count() - 1; }

    Fake<BLDocumentView> view_;
    FakeEvent<Layout> layout_{view_};
    std::shared_ptr<int> token_ = std::make_shared<int>(0);
    int delivered_ = 0;
};

TEST_F(Subscription, DeliversUntilItsLastHandleGoes)
{
    view_->CutTable(0);  // an event is offered by its entry, whatever the table's size
    auto handle = Subscribe(Counting());
    auto second = handle;
    layout_.Fire(1u);
    handle.reset();
    layout_.Fire(1u);
    EXPECT_EQ(delivered_, 2);
    EXPECT_EQ(view_->References(), 1u);
    second.reset();
    second.reset();
    EXPECT_EQ(layout_.Unsubscribed(), std::vector<std::uint64_t>{1});
    EXPECT_EQ(Copies(), 0);
    layout_.Fire(1u);
    EXPECT_EQ(delivered_, 2);
}

TEST_F(Subscription, IsEmptyWhenTheHostMakesNone)
{
    layout_.AnswerCookie(0);
    EXPECT_FALSE(Subscribe(Counting()));
    EXPECT_EQ(layout_.Callables(), 1u);
    EXPECT_EQ(Copies(), 1);  // the callable is the host's all the same
    layout_.FreeAll();

    view_->SetEntry(Layout::kSlot, nullptr);
    EXPECT_FALSE(Subscribe(Counting()));
    EXPECT_FALSE(BLDocumentView::Subscribe_OnLayoutChanged(nullptr, Counting()));
    EXPECT_EQ(Copies(), 0);
    EXPECT_TRUE(layout_.Unsubscribed().empty());
    EXPECT_EQ(view_->References(), 1u);
    Layout::Release(nullptr);  // frees nothing
}

TEST_F(Subscription, SurvivesAHostThatFreesTheCallableAtOnce)
{
    layout_.OnSubscribe([this] { layout_.FreeAll(); });
    const auto handle = Subscribe(Counting());
    EXPECT_TRUE(handle);
    EXPECT_EQ(Copies(), 0);
}

TEST_F(Subscription, SurvivesAHostThatFreesTheCallableDuringItsCall)
{
    std::string seen;
    const auto handle = Subscribe([&, text = std::string(64, 'x')](unsigned) {
        layout_.FreeAll();
        seen = text;  // of a callable that the host has freed
    });
    layout_.Fire(1u);
    EXPECT_EQ(seen, std::string(64, 'x'));
}

TEST_F(Subscription, MayBeReleasedInsideItsOwnCallback)
{
    SOEvent::SubscriptionHandle handle;
    std::string seen;
    handle = Subscribe([&, text = std::string(64, 'x')](unsigned) {
        handle.reset();
        seen = text;
    });
    layout_.Fire(1u);
    EXPECT_EQ(seen.size(), 64u);
    EXPECT_EQ(layout_.Unsubscribed().size(), 1u);
    EXPECT_EQ(layout_.Callables(), 0u);
}

TEST_F(Subscription, MayBeReleasedOnAnotherThread)
{
    auto handle = Subscribe(Counting());
    std::uint32_t releasing = 0;
    std::thread([&] {
        releasing = Platform::CurrentThreadId();
        handle.reset();
    }).join();
    EXPECT_EQ(layout_.UnsubscribingThread(), releasing);
    EXPECT_NE(releasing, Platform::CurrentThreadId());
}

TEST_F(Subscription, OfADeadHostCallsNothingAndDropsItsHolderOnce)
{
    WeakReferenceRecord* record = nullptr;
    ASSERT_EQ(view_.Get()->GetWeakReference(view_.Get(), &record), kResultOk);
    const auto holders = [&] { return record->functions.GetHolderCount(record); };
    const std::uint32_t before = holders();
    auto handle = Subscribe(Counting());
    auto copy = handle;
    EXPECT_EQ(holders(), before + 1);
    view_.Reset();
    EXPECT_EQ(holders(), before);
    handle.reset();
    EXPECT_EQ(holders(), before);
    copy.reset();
    EXPECT_EQ(holders(), before - 1);
    EXPECT_TRUE(layout_.Unsubscribed().empty());
    record->functions.ReleaseHolder(record);
}

TEST_F(Subscription, ReportsAnEmptyCallableWhenItFires)
{
    const auto handle = Subscribe({});
    EXPECT_TRUE(handle);
    EXPECT_THROW(layout_.Fire(1u), std::bad_function_call);
}

// Fires event `E` with `arguments` and tells whether the callable received the same.
template <class E, class... Args>
void ExpectDelivery(SOEvent::SubscriptionHandle (*subscribe)(typename E::Interface*,
                                                             typename E::Callable),
                    Args... arguments)
{
    SCOPED_TRACE(E::kName);
    Fake<typename E::Interface> host;
    FakeEvent<E> event(host);
    std::tuple<Args...> received{};
    const auto handle =
        subscribe(host.Get(), [&](Args... values) { received = std::tuple(values...); });
    event.Fire(arguments...);
    EXPECT_EQ(received, std::tuple(arguments...));
}

TEST_F(Subscription, DeliversAllSixShapesOfArguments)
{
    int place = 0;
    const auto* range = reinterpret_cast<const _BLPageRange*>(&place);
    const _PDPageRange pages{};
    auto* annotation = reinterpret_cast<_PDAnnotRec*>(&place);
    using View = BLDocumentView;
    ExpectDelivery<Layout>(&View::Subscribe_OnLayoutChanged, 0xFFFFFFFFu);
    ExpectDelivery<View::OnVisibleRangeChanged>(&View::Subscribe_OnVisibleRangeChanged, range);
    ExpectDelivery<View::OnViewGridStateChanged>(&View::Subscribe_OnViewGridStateChanged, true);
    ExpectDelivery<Zoom>(&View::Subscribe_OnZoomChanged, BLZoomType{0xFFFFFFFF}, -1.5f);
    ExpectDelivery<BLDocument::OnPagesChanged>(&BLDocument::Subscribe_OnPagesChanged,
                                               PDPageOperation::kMoved, &pages);
    ExpectDelivery<BLDocument::OnAnnotChanged>(&BLDocument::Subscribe_OnAnnotChanged,
                                               PDAnnotOperation::kRemoved, 0x80000000u, annotation);
}

TEST_F(Subscription, ListReleasesInOrderAndOnlyWhatItHolds)
{
    SOEvent::SubscriptionList list;
    auto outside = Subscribe(Counting());
    list.Append(Subscribe(Counting()));
    list.Append(nullptr);
    list.Append(outside);
    list.Append(Subscribe(Counting()));
    EXPECT_EQ(list.Size(), 3u);
    list.Clear();
    EXPECT_EQ(layout_.Unsubscribed(), (std::vector<std::uint64_t>{2, 3}));
    list.Clear();
    EXPECT_EQ(layout_.Unsubscribed().size(), 2u);
    outside.reset();
    EXPECT_EQ(layout_.Unsubscribed().back(), 1u);
}

// Its end leads back into the list that let it go.
struct Reentering : SOEvent::SubscriptionBase {
    explicit Reentering(std::function<void()> action) : onEnd(std::move(action)) {}
    ~Reentering() override { onEnd(); }
    std::function<void()> onEnd;
};

TEST_F(Subscription, ListMayBeClearedAndFilledAgainWhileItIsCleared)
{
    SOEvent::SubscriptionList list;
    int ended = 0;
    std::size_t sizeInside = 99;
    list.Append(std::make_shared<Reentering>([&] {
        ++ended;
        sizeInside = list.Size();
        list.Clear();
        list.Append(std::make_shared<Reentering>([&] { ++ended; }));
    }));
    list.Append(std::make_shared<Reentering>([&] { ++ended; }));
    list.Clear();
    EXPECT_EQ(sizeInside, 0u);
    EXPECT_EQ(ended, 2);
    EXPECT_EQ(list.Size(), 1u);
    list.Clear();
    EXPECT_EQ(ended, 3);
}

}  // namespace
