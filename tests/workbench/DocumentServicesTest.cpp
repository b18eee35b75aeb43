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

}  // namespace
