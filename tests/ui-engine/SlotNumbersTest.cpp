// The slots of methods and events, written out once more: both sides of a call are compiled from
// the same catalogue, and would follow it to a wrong slot together.
#include "ui-engine/BLDocument.SO.h"
#include "ui-engine/BLDocumentView.SO.h"
#include "ui-engine/LocaleManager.SO.h"
#include "ui-engine/UIDocumentView.SO.h"
#include "ui-engine/UIDocumentsCollection.SO.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/UIHandler.SO.h"
#include "ui-engine/UIInplacePlugin.SO.h"
#include "ui-engine/UIMainFrame.SO.h"
#include "ui-engine/UIService.SO.h"
#include "ui-engine/UIWnd.SO.h"
#include "ui/UIDocumentPanelModel.SO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

template <class... Methods>
std::vector<unsigned> Slots()
{
    return {Methods::kSlot...};
}

std::vector<unsigned> FromZero(std::size_t count)
{
    std::vector<unsigned> slots(count);
    std::iota(slots.begin(), slots.end(), 0u);
    return slots;
}

TEST(SlotNumbers, OfWhatTheModuleOffers)
{
    using P = UIInplacePlugin;
    EXPECT_EQ(
        (Slots<P::Handshake, P::RegisterResources, P::InitBegin, P::InitHtml, P::InitSubscription,
               P::InitHandler, P::InitComplete, P::CreateControl, P::GetUIModel, P::Cleanup>()),
        FromZero(10));
    using H = UIHandler;
    EXPECT_EQ((Slots<H::GetElementAttachedTo, H::GetSubscribedEvents, H::HandleMouse, H::HandleKey,
                     H::HandleFocus, H::HandleTimer, H::HandleSize, H::HandleScroll, H::HandleDraw,
                     H::HandleMethodCall, H::HandleScriptCall, H::HandleEvent, H::HandleDataArrived,
                     H::HandleGesture, H::HandleExchange, H::Attached, H::Detached,
                     H::OnDocumentComplete, H::OnInplacePluginsInitialized, H::OnInitComplete,
                     H::OnLocaleChanged, H::GetHandlerName>()),
              FromZero(22));
    using M = UIDocumentPanelModel;
    EXPECT_EQ((Slots<M::SetDocumentsCollection, M::GetConcreteModel, M::ShellDropTarget_OnDragEnter,
                     M::ShellDropTarget_OnDragOver, M::ShellDropTarget_OnDragLeave,
                     M::ShellDropTarget_OnDrop>()),
              FromZero(6));
}

TEST(SlotNumbers, OfWhatTheHostIsAskedFor)
{
    using testing::ElementsAre;
    EXPECT_THAT((Slots<UIEngine::CreateRegistration, UIEngine::Register>()), ElementsAre(4, 7));
    EXPECT_THAT((Slots<UIService::GetThreadObject, UIThread::PostCall>()), ElementsAre(12, 1));
    EXPECT_THAT((Slots<UIWnd::SelectElements>()), ElementsAre(32));
    EXPECT_THAT((Slots<UIDocumentsCollection::GetActiveView, UIDocumentsCollection::EnumerateViews,
                       UIDocumentsCollection::GetActiveSbSView>()),
                ElementsAre(1, 2, 22));
    EXPECT_THAT((Slots<UIDocumentFrame::GetDocumentsCollection, UIDocumentView::GetDocumentView,
                       BLDocumentView::GetViewNumber>()),
                ElementsAre(26, 2, 13));
    EXPECT_THAT((Slots<LocaleManager::GetString, LocaleManager::GetSectionString>()),
                ElementsAre(8, 9));
}

TEST(SlotNumbers, OfTheHostsEvents)
{
    using testing::ElementsAre;
    using V = BLDocumentView;
    EXPECT_THAT(
        (Slots<V::OnLayoutChanged, V::OnFocusPageChanged, V::OnVisibleRangeChanged,
               V::OnPagesChanged, V::OnZoomChanged, V::OnSelectionChanged,
               V::OnAvailableOperationsChanged, V::OnActiveToolChanged, V::OnInputHandleFocusAnnot,
               V::OnScrollChanged, V::OnViewRulerStateChanged, V::OnViewGridStateChanged,
               V::OnLockedStateChanged, V::OnViewStateChanged>()),
        ElementsAre(6, 20, 25, 28, 42, 51, 54, 94, 99, 126, 182, 185, 188, 199));
    using C = UIDocumentsCollection;
    EXPECT_THAT(
        (Slots<C::OnDocumentViewCreated, C::OnDocumentViewActivated, C::OnDocumentViewDeactivated,
               C::OnDocumentViewDestroyed, C::OnSbSViewCreated, C::OnSbSViewActivated,
               C::OnSbSViewDeactivated, C::OnSbSViewDestroyed>()),
        ElementsAre(8, 11, 14, 17, 24, 27, 30, 33));
    EXPECT_THAT((Slots<BLDocument::OnPagesChanged, BLDocument::OnAnnotChanged,
                       UIMainFrame::OnChildDocumentFrameCreated>()),
                ElementsAre(39, 78, 25));
    EXPECT_EQ(V::OnViewStateChanged::kUnsubscribeSlot, 200u);
}

}  // namespace
