// The slot pair of every event, found by subscribing: a host knows an event by nothing else.
#include "HostFixture.h"

#include "ui-engine/BLDocument.SO.h"
#include "ui-engine/BLDocumentView.SO.h"
#include "ui-engine/UIDocumentsCollection.SO.h"
#include "ui-engine/UIMainFrame.SO.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using Fakes::Fake;
using Fakes::FakeObject;

int g_calledSlot;

template <unsigned Slot>
std::uint64_t Subscribe(ServiceObject*, void (*)(), void (*release)(void*), void* callable)
{
    g_calledSlot = Slot;
    release(callable);
    return 0x8000000000000001u;
}

template <unsigned Slot>
ResultCode Unsubscribe(ServiceObject*, std::uint64_t cookie)
{
    g_calledSlot = cookie == 0x8000000000000001u ? int{Slot} : -1;
    return kResultOk;
}

template <unsigned... Slots>
void Fill(FakeObject& object, bool subscribing, std::integer_sequence<unsigned, Slots...>)
{
    (object.SetEntry(Slots, subscribing ? reinterpret_cast<MethodEntry>(&Subscribe<Slots>)
                                        : reinterpret_cast<MethodEntry>(&Unsubscribe<Slots>)),
     ...);
}

template <class I, class Callable>
void ExpectSlots(int slot, SOEvent::SubscriptionHandle (*subscribe)(I*, Callable))
{
    using AllSlots = std::make_integer_sequence<unsigned, FakeObject::kSlotCount>;
    SCOPED_TRACE(testing::Message() << I::kName << " " << slot);
    Fake<I> host;
    g_calledSlot = -1;
    Fill(*host.operator->(), true, AllSlots());
    auto handle = subscribe(host.Get(), {});
    EXPECT_EQ(g_calledSlot, slot);
    Fill(*host.operator->(), false, AllSlots());
    handle.reset();
    EXPECT_EQ(g_calledSlot, slot + 1);
}

using EventCatalogue = Fakes::HostFixture;

TEST_F(EventCatalogue, EachEventStandsOnItsSlotPair)
{
    ExpectSlots(39, &BLDocument::Subscribe_OnPagesChanged);
    ExpectSlots(78, &BLDocument::Subscribe_OnAnnotChanged);

    ExpectSlots(6, &BLDocumentView::Subscribe_OnLayoutChanged);
    ExpectSlots(20, &BLDocumentView::Subscribe_OnFocusPageChanged);
    ExpectSlots(25, &BLDocumentView::Subscribe_OnVisibleRangeChanged);
    ExpectSlots(28, &BLDocumentView::Subscribe_OnPagesChanged);
    ExpectSlots(42, &BLDocumentView::Subscribe_OnZoomChanged);
    ExpectSlots(51, &BLDocumentView::Subscribe_OnSelectionChanged);
    ExpectSlots(54, &BLDocumentView::Subscribe_OnAvailableOperationsChanged);
    ExpectSlots(94, &BLDocumentView::Subscribe_OnActiveToolChanged);
    ExpectSlots(99, &BLDocumentView::Subscribe_OnInputHandleFocusAnnot);
    ExpectSlots(126, &BLDocumentView::Subscribe_OnScrollChanged);
    ExpectSlots(182, &BLDocumentView::Subscribe_OnViewRulerStateChanged);
    ExpectSlots(185, &BLDocumentView::Subscribe_OnViewGridStateChanged);
    ExpectSlots(188, &BLDocumentView::Subscribe_OnLockedStateChanged);
    ExpectSlots(199, &BLDocumentView::Subscribe_OnViewStateChanged);

    ExpectSlots(25, &UIMainFrame::Subscribe_OnChildDocumentFrameCreated);

    ExpectSlots(8, &UIDocumentsCollection::Subscribe_OnDocumentViewCreated);
    ExpectSlots(11, &UIDocumentsCollection::Subscribe_OnDocumentViewActivated);
    ExpectSlots(14, &UIDocumentsCollection::Subscribe_OnDocumentViewDeactivated);
    ExpectSlots(17, &UIDocumentsCollection::Subscribe_OnDocumentViewDestroyed);
    ExpectSlots(24, &UIDocumentsCollection::Subscribe_OnSbSViewCreated);
    ExpectSlots(27, &UIDocumentsCollection::Subscribe_OnSbSViewActivated);
    ExpectSlots(30, &UIDocumentsCollection::Subscribe_OnSbSViewDeactivated);
    ExpectSlots(33, &UIDocumentsCollection::Subscribe_OnSbSViewDestroyed);
}

}  // namespace
