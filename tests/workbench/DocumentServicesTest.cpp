#include "documents/MemoryDocument.h"
#include "services/BLDocumentObject.h"
#include "services/BLDocumentViewObject.h"
#include "services/BLServiceObject.h"
#include "services/UIDocumentsCollectionObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace Workbench;

Documents::MemoryEntry Annotation(const char* subtype, std::uint32_t flags = 0)
{
    Documents::AnnotationProperties properties;
    properties.subtype = subtype;
    properties.rect = _PDRect{1, 2, 3, 4};
    properties.flags = flags;
    return Documents::MakeEntry(std::move(properties));
}

Documents::MemoryPage Page(std::vector<Documents::MemoryEntry> annotations)
{
    Documents::MemoryPage page;
    page.annotations = std::move(annotations);
    return page;
}

// A document of three pages in a view, and everything that its events say.
class DocumentServices : public ::testing::Test {
protected:
    DocumentServices()
    {
        view->Connect();
        subscriptions = {
            BLDocument::Subscribe_OnAnnotChanged(
                document->AsInterface(),
                [this](PDAnnotOperation operation, unsigned page, _PDAnnotRec* annotation) {
                    EXPECT_NE(annotation, nullptr);
                    Note("annot " + std::to_string(static_cast<unsigned>(operation)) + " on " +
                         std::to_string(page));
                }),
            BLDocument::Subscribe_OnPagesChanged(
                document->AsInterface(),
                [this](PDPageOperation operation, const _PDPageRange* range) {
                    std::string text =
                        "pages " + std::to_string(static_cast<unsigned>(operation)) + ":";
                    for (std::uint32_t i = 0; i < range->count; ++i) {
                        text += " " + std::to_string(range->pages[i]);
                    }
                    Note(text);
                }),
            BLDocumentView::Subscribe_OnInputHandleFocusAnnot(
                view->AsInterface(), [this](unsigned page, _PDAnnotRec* annotation) {
                    Note(annotation == nullptr ? "focus none" : "focus " + std::to_string(page));
                    EXPECT_EQ(annotation == nullptr, page == kPDNoPage);
                })};
    }

    void Note(const std::string& what)
    {
        events.push_back(what);
        eventThreads.push_back(std::this_thread::get_id());
    }
    std::vector<std::string> TakeEvents() { return std::exchange(events, {}); }

    Documents::AnnotationRef At(std::uint32_t page, std::uint32_t position) const
    {
        return content->AnnotationAt(page, position);
    }

    ResultCode Delete(std::uint32_t page, const Documents::AnnotationRef& annotation)
    {
        Atom command = kAtomNone;
        VxGetAtomFromString("Annot_Delete", &command);
        const BLAnnotCommandArguments arguments{document->AsInterface(), page, 0, annotation.Get()};
        return CallMethodUnchecked<BLDocument::ExecuteCommand>(document->AsInterface(), command,
                                                               &arguments)
            .code;
    }

    const HostStatePtr state = std::make_shared<HostState>();
    const std::shared_ptr<Documents::MemoryDocument> content = Documents::MemoryDocument::Make(
        "three pages", {Page({Annotation("Text"), nullptr, Annotation("Square")}),
                        Page({Annotation("Ink", Documents::kFlagLocked),
                              Annotation("Ink", Documents::kFlagReadOnly), Annotation("Ink")}),
                        Page({})});
    const BasicServiceObjectPtr<BLDocumentObject> document = BLDocumentObject::Make(state, content);
    const BasicServiceObjectPtr<BLDocumentViewObject> view =
        BLDocumentViewObject::Make(state, document);
    std::vector<std::string> events;
    std::vector<std::thread::id> eventThreads;
    std::vector<SOEvent::SubscriptionHandle> subscriptions;
};

TEST_F(DocumentServices, HandOutPagesWithinTheCount)
{
    std::int32_t count = 0;
    EXPECT_TRUE(CallMethod<BLDocument::GetPageCount>(document->AsInterface(), &count).Succeeded());
    EXPECT_EQ(count, 3);
    _PDPageRec* page = nullptr;
    EXPECT_TRUE(
        CallMethod<BLDocument::AcquirePage>(document->AsInterface(), 2u, &page).Succeeded());
    EXPECT_TRUE(Documents::PageRef::Adopt(page));
    EXPECT_EQ(CallMethodUnchecked<BLDocument::AcquirePage>(document->AsInterface(), 3u, &page).code,
              kResultOutOfRange);
    EXPECT_EQ(page, nullptr);
}

TEST_F(DocumentServices, DeleteWhatMayBeDeletedAndSayWhyNot)
{
    struct Row {
        std::uint32_t page;
        std::uint32_t position;
        std::function<void()> before;
        ResultCode code;
        std::string reason;
    };
    const auto nothing = [] {};
    const std::vector<Row> rows = {
        {1, 0, nothing, kResultCommandRefused, "locked"},
        {1, 1, nothing, kResultCommandRefused, "read-only"},
        {1, 2, [this] { content->ForceReadOnly(true); }, kResultCommandRefused, "read-only"},
        {1, 2,
         [this] {
             content->ForceReadOnly(false);
             content->ForceAnnotationDeletionPermitted(false);
         },
         kResultCommandRefused, "permit"},
        {1, 2, [this] { content->ForceAnnotationDeletionPermitted(true); }, kResultOk, ""},
    };
    for (const Row& row : rows) {
        row.before();
        EXPECT_EQ(Delete(row.page, At(row.page, row.position)), row.code);
        if (row.code != kResultOk) {
            ASSERT_NE(ThreadLastError(), nullptr);
            EXPECT_THAT(ServiceObjectException(*ThreadLastError()).what(), HasSubstr(row.reason));
            EXPECT_THAT(TakeEvents(), IsEmpty());
        }
        ClearThreadLastError();
    }
    EXPECT_THAT(TakeEvents(), ElementsAre("annot 1 on 1"));
    EXPECT_FALSE(At(1, 2));
    EXPECT_EQ(Delete(0, At(1, 0)), kResultNotFound) << "on another page";
    EXPECT_EQ(Delete(1, {}), kResultNotFound);
    EXPECT_EQ(
        CallMethodUnchecked<BLDocument::ExecuteCommand>(document->AsInterface(), 1u, nullptr).code,
        kResultNotFound);
    ClearThreadLastError();
}

TEST_F(DocumentServices, FireFocusOnlyWhenItChanges)
{
    const Documents::AnnotationRef square = At(0, 2);
    const auto focus = [&](std::uint32_t page, const Documents::AnnotationRef& annotation) {
        CallMethod<BLDocumentView::FocusAnnotation>(view->AsInterface(), page, annotation.Get());
    };
    focus(0, square);
    EXPECT_EQ(view->FocusedPlace(), "0_2");
    focus(0, square);
    EXPECT_THAT(TakeEvents(), ElementsAre("focus 0"));
    CallMethod<BLDocumentView::ClearSelection>(view->AsInterface(), 1u);
    EXPECT_THAT(TakeEvents(), IsEmpty());
    CallMethod<BLDocumentView::ClearSelection>(view->AsInterface(), 0u);
    CallMethod<BLDocumentView::ClearSelection>(view->AsInterface(), 0u);
    EXPECT_THAT(TakeEvents(), ElementsAre("focus none"));
    EXPECT_EQ(view->FocusedPlace(), std::nullopt);
}

TEST_F(DocumentServices, KeepTheFocusWithItsAnnotation)
{
    view->SetFocus(1, At(1, 2));
    struct Row {
        std::function<Documents::EditResult()> edit;
        const char* place;  // null: the focus is lost
        std::vector<std::string> fired;
    };
    const std::vector<Row> rows = {
        {[this] { return content->InsertPage(0); }, "2_2", {"pages 0: 0"}},
        {[this] { return content->InsertPage(3); }, "2_2", {"pages 0: 3"}},
        {[this] { return content->MovePage(0, 4); }, "1_2", {"pages 2: 0 4"}},
        {[this] { return content->MovePage(1, 3); }, "3_2", {"pages 2: 1 3"}},
        {[this] { return content->MovePage(4, 0); }, "4_2", {"pages 2: 4 0"}},
        {[this] { return content->DeletePage(0); }, "3_2", {"pages 1: 0"}},
        {[this] { return content->RemoveAnnotation(3, 0); }, "3_1", {"annot 1 on 3"}},
        {[this] { return content->AddAnnotation(3, "Text", u"new"); }, "3_1", {"annot 0 on 3"}},
        {[this] { return content->RemoveAnnotation(3, 1); },
         nullptr,
         {"focus none", "annot 1 on 3"}},
    };
    TakeEvents();
    for (const Row& row : rows) {
        EXPECT_EQ(document->Publish(row.edit()), "");
        EXPECT_EQ(TakeEvents(), row.fired);
        if (row.place == nullptr) {
            EXPECT_EQ(view->FocusedPlace(), std::nullopt);
        } else {
            EXPECT_EQ(view->FocusedPlace(), row.place);
        }
    }
    view->SetFocus(3, At(3, 0));
    TakeEvents();
    document->Publish(content->DeletePage(3));
    EXPECT_THAT(TakeEvents(), ElementsAre("focus none", "pages 1: 3"));
}

TEST_F(DocumentServices, FireOnTheForeignThreadInTheOrderOfTheEdits)
{
    state->firesOnForeignThread = true;
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(document->Publish(content->AddAnnotation(i % 3 == 0 ? 0 : 2, "Text", u"x")), "");
    }
    EXPECT_THAT(document->Publish(content->AddAnnotation(99, "Text", u"x")), HasSubstr("99"));
    state->foreignThread.Stop();
    ASSERT_EQ(events.size(), 20u);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(events[static_cast<std::size_t>(i)],
                  i % 3 == 0 ? "annot 0 on 0" : "annot 0 on 2");
    }
    EXPECT_THAT(eventThreads, ::testing::Each(::testing::Ne(std::this_thread::get_id())));
}

TEST_F(DocumentServices, WriteDownWhatTheyWereAskedFor)
{
    const BLGoToRequest request{1, kGoToModeRectangle, {1.5, 2, 1.5, 2}};
    CallMethod<BLDocumentView::GoTo>(view->AsInterface(), &request);
    CallMethod<BLDocumentView::FocusAnnotation>(view->AsInterface(), 1u, At(1, 1).Get());
    CallMethod<BLDocumentView::EndEditing>(view->AsInterface(), 1u);
    Delete(1, At(1, 2));
    bool permitted = false;
    CallMethod<BLDocumentView::IsPermitted>(view->AsInterface(), 4u, 2u, 1u, &permitted);
    EXPECT_TRUE(permitted);
    CallMethod<BLDocumentView::IsPermitted>(view->AsInterface(), 4u, 2u, 2u, &permitted);
    EXPECT_FALSE(permitted);
    EXPECT_EQ(state->calls.Take().dump(),
              R"([["BLDocumentView.GoTo",1,4,[1.5,2.0,1.5,2.0]],)"
              R"(["BLDocumentView.FocusAnnotation",1,"1_1"],["BLDocumentView.EndEditing",1],)"
              R"(["BLDocument.ExecuteCommand","Annot_Delete",1,"1_2"]])");
    state->calls.LogQueries(true);
    CallMethod<BLDocumentView::IsPermitted>(view->AsInterface(), 4u, 2u, 1u, &permitted);
    EXPECT_EQ(state->calls.Take().dump(), R"([["BLDocumentView.IsPermitted",4,2,1]])");
}

TEST_F(DocumentServices, ShowHighlightsThatTheNavigatorMakes)
{
    const auto service = BLServiceObject::Make();
    BasicServiceObjectPtr<BLAnnotNavigator> navigator;
    CallMethod<BLService::GetAnnotNavigator>(service->AsInterface(), navigator.Receive());
    const Documents::AnnotationRef square = At(0, 2);
    const BLGoToRequest target{0, kGoToModeRectangle, {}};
    const BLHighlightArguments arguments{document->AsInterface(), &target, square.Get(), 1, 0, 0};
    BasicServiceObjectPtr<ServiceObject> highlight;
    CallMethod<BLAnnotNavigator::BuildHighlight>(navigator.Get(), &arguments, highlight.Receive());
    ASSERT_EQ(CheckServiceObject(highlight.Get(), "BLHighlight"), kResultOk);
    CallMethod<BLDocumentView::ShowHighlight>(view->AsInterface(), highlight.Get());
    highlight.Reset();
    ASSERT_TRUE(view->Highlight());
    _PDAnnotRec* marked = nullptr;
    double scale = 0;
    CallMethod<BLHighlight::GetAnnotation>(static_cast<BLHighlight*>(view->Highlight().Get()),
                                           &marked, &scale);
    EXPECT_EQ(Documents::AnnotationRef::Adopt(marked), square);
}

TEST_F(DocumentServices, TellTheLifeOfViews)
{
    const auto collection = UIDocumentsCollectionObject::Make(state);
    std::vector<UIDocumentsCollectionObject::ViewPtr> views;
    for (int i = 0; i < 3; ++i) {
        views.push_back(UIDocumentViewObject::Make(BLDocumentViewObject::Make(state, document)));
    }
    const auto note = [&](const char* what) {
        return [&, what](UIDocumentView* told) {
            for (std::size_t i = 0; i < views.size(); ++i) {
                if (views[i]->AsInterface() == told) {
                    Note(what + std::to_string(i));
                }
            }
        };
    };
    using Collection = UIDocumentsCollection;
    const std::vector<SOEvent::SubscriptionHandle> handles = {
        Collection::Subscribe_OnDocumentViewCreated(collection->AsInterface(), note("created ")),
        Collection::Subscribe_OnDocumentViewActivated(collection->AsInterface(),
                                                      note("activated ")),
        Collection::Subscribe_OnDocumentViewDeactivated(collection->AsInterface(),
                                                        note("deactivated ")),
        Collection::Subscribe_OnDocumentViewDestroyed(collection->AsInterface(),
                                                      note("destroyed "))};
    for (const auto& opened : views) {
        collection->Add(opened);
    }
    collection->Activate(views[1]);
    collection->Activate(views[1]);
    EXPECT_THAT(TakeEvents(), ElementsAre("created 0", "created 1", "created 2", "activated 1"));
    EXPECT_TRUE(collection->Close(views[1]));
    EXPECT_FALSE(collection->Close(views[1]));
    EXPECT_THAT(TakeEvents(), ElementsAre("deactivated 1", "destroyed 1", "activated 2"));
    EXPECT_TRUE(collection->Close(views[0]));
    EXPECT_TRUE(collection->Close(collection->ActiveView()));
    EXPECT_THAT(TakeEvents(), ElementsAre("destroyed 0", "deactivated 2", "destroyed 2"));
    UIDocumentView* active = views[0]->AsInterface();
    CallMethod<Collection::GetActiveView>(collection->AsInterface(), &active);
    EXPECT_EQ(active, nullptr);
}

}  // namespace
