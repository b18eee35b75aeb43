// Keys and clicks: what they do to the list, and what they ask of the view and the document.
#include "PanelFixture.h"

#include "platform-libraries/ServiceProviderHost.h"

namespace PanelTests {
namespace {

using namespace Workbench;

// Showing an annotation of the standard rectangle in the view.
std::string Shown(const std::string& page, const std::string& place)
{
    return "GoTo(" + page + ",4,[20.0,40.0,20.0,40.0]) ShowHighlight(true) FocusAnnotation(" +
           page + ",\"" + place + "\")";
}
std::string Deleted(const std::string& page, const std::string& place)
{
    return "EndEditing(1) ClearSelection(0) ExecuteCommand(\"Annot_Delete\"," + page + ",\"" +
           place + "\")";
}

struct Row {
    const char* name;
    const char* before;  // steps from the list as it was loaded
    const char* outlineBefore;
    const char* action;
    const char* outline;
    std::string calls = {};
    const char* failure = "";
};

class Commands : public PanelTest {
protected:
    void Check(const ViewPtr& view, const Row& row)
    {
        SCOPED_TRACE(row.name);
        Do(view, row.before);
        EXPECT_EQ(OutlineOf(view), row.outlineBefore);
        TakeCalls();
        Do(view, row.action);
        EXPECT_EQ(OutlineOf(view), row.outline);
        EXPECT_EQ(TakeCalls(), row.calls);
        EXPECT_EQ(TakeFailures(), row.failure);
        if (*row.failure != '\0') {
            EXPECT_NE(TakeError(), "");
        }
    }
    void CheckAll(const std::vector<Row>& rows, const Pages& pages,
                  const Documents::MemoryOptions& options = {})
    {
        Start();
        for (const Row& row : rows) {
            const ViewPtr view = Open(MakeDocument(pages, options));
            Check(view, row);
            host.CloseView(view);
        }
    }
};

constexpr const char* kLoaded = "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]";
constexpr const char* kLast = "0:0_0,0_1 2:2_0 3:3_0,3_1* [ECRDT]";
constexpr const char* kCollapsed = "0-:0_0*,0_1 2-:2_0 3-:3_0,3_1 [ERB]";
constexpr const char* kInPage2 = "0:0_0,0_1 2:2_0* 3:3_0,3_1 [ECRDTB]";

TEST_F(Commands, KeysMoveTheCurrentItemAndNavigateOnlyOnEnter)
{
    CheckAll(
        {
            {"down", "", kLoaded, "Down", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]"},
            {"down at the end of a page", "Down", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]", "Down",
             "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]"},
            {"down in a collapsed page", "click #collapse-all", kCollapsed, "Down",
             "0+:0_0,0_1* 2-:2_0 3-:3_0,3_1 [ECRDTB]"},
            {"up", "Down", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]", "Up",
             "0+:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]"},
            {"up on the first item", "", kLoaded, "Up", "0+:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]"},
            {"page down", "", kLoaded, "PageDown", kInPage2},
            {"page down goes to the first item", "Down; PageDown",
             "0+:0_0,0_1 2:2_0* 3:3_0,3_1 [ECRDTB]", "PageDown",
             "0+:0_0,0_1 2:2_0 3:3_0*,3_1 [ECRDTB]"},
            {"page down into a collapsed page", "click div.icon @1",
             "0:0_0*,0_1 2-:2_0 3:3_0,3_1 [ECRDB]", "PageDown",
             "0:0_0,0_1 2-:2_0* 3:3_0,3_1 [ECRTB]"},
            {"page down out of a collapsed page", "click div.icon",
             "0-:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRB]", "PageDown",
             "0-:0_0,0_1 2:2_0* 3:3_0,3_1 [ECRDTB]"},
            {"page down on the last page", "End", kLast, "PageDown", kLast},
            {"page up goes to the last item", "PageDown", kInPage2, "PageUp",
             "0:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]"},
            {"page up on the first page", "", kLoaded, "PageUp", kLoaded},
            {"end", "", kLoaded, "End", kLast},
            {"home", "End", kLast, "Home", kLoaded},
            {"left", "PageDown", kInPage2, "Left", kInPage2},
            {"right", "PageDown", kInPage2, "Right", kInPage2},
            {"enter", "PageDown", kInPage2, "Enter", "0:0_0,0_1 2+:2_0* 3:3_0,3_1 [ECRDTB]",
             Shown("2", "2_0")},
            {"enter in a collapsed page", "click #collapse-all", kCollapsed, "Enter",
             "0+:0_0*,0_1 2-:2_0 3-:3_0,3_1 [ECRDB]", Shown("0", "0_0")},
            {"enter again", "PageDown; Enter; click div.icon @1",
             "0:0_0,0_1 2-:2_0* 3:3_0,3_1 [ECRTB]", "Enter", "0:0_0,0_1 2-:2_0* 3:3_0,3_1 [ECRTB]",
             Shown("2", "2_0")},  // focused already
            {"delete", "Down", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]", "Delete",
             "0:0_0* 2:2_0 3:3_0,3_1 [ECRDB]", Deleted("0", "0_1")},
            {"delete the only item of a page", "PageDown", kInPage2, "Delete",
             "0:0_0*,0_1 3:3_0,3_1 [ECRDB]", Deleted("2", "2_0")},
            {"delete in a collapsed page", "click #collapse-all", kCollapsed, "Delete",
             "0:0_0* 2-:2_0 3-:3_0,3_1 [ECRDB]", Deleted("0", "0_0")},
        },
        FivePages());
}

TEST_F(Commands, ClicksActOnTheirTargets)
{
    CheckAll(
        {
            {"caption", "", kLoaded, "click div.icon", "0-:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRB]"},
            {"caption again", "click div.icon", "0-:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRB]",
             "click div.icon", "0+:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]"},
            {"caption a third time", "click div.icon; click div.icon",
             "0+:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]", "click div.icon",
             "0-:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRB]"},
            {"caption of the last page in view", "click div.icon; click div.icon @1",
             "0-:0_0*,0_1 2-:2_0 3:3_0,3_1 [ECRB]", "click div.icon @2", kCollapsed},
            {"item", "", kLoaded, "click li[annot-name] @4", "0:0_0,0_1 2:2_0 3+:3_0,3_1* [ECRDT]",
             Shown("3", "3_1")},
            {"what is inside an item", "", kLoaded, "click li[annot-name=\"2_0\"] p",
             "0:0_0,0_1 2+:2_0* 3:3_0,3_1 [ECRDTB]", Shown("2", "2_0")},
            {"item in a collapsed page is not there", "click #collapse-all", kCollapsed,
             "click li[annot-name] @4", kCollapsed},
            {"expand all", "", kLoaded, "click #expand-all",
             "0+:0_0*,0_1 2+:2_0 3+:3_0,3_1 [CRDB]"},
            {"expand all but one already", "click #collapse-all; Up",
             "0+:0_0*,0_1 2-:2_0 3-:3_0,3_1 [ECRDB]", "click #expand-all",
             "0+:0_0*,0_1 2+:2_0 3+:3_0,3_1 [CRDB]"},
            {"one page collapsed after expanding all", "click #expand-all",
             "0+:0_0*,0_1 2+:2_0 3+:3_0,3_1 [CRDB]", "click div.icon @1",
             "0+:0_0*,0_1 2-:2_0 3+:3_0,3_1 [ECRDB]"},
            {"collapse all", "", kLoaded, "click #collapse-all", kCollapsed},
            {"collapse all after expanding", "click #expand-all",
             "0+:0_0*,0_1 2+:2_0 3+:3_0,3_1 [CRDB]", "click #collapse-all", kCollapsed},
            {"reply is never shown", "", kLoaded, "click #reply", kLoaded},
            {"delete", "End", kLast, "click #delete", "0:0_0*,0_1 2:2_0 3:3_0 [ECRDB]",
             Deleted("3", "3_1")},
            {"delete is disabled in a collapsed page", "click #collapse-all", kCollapsed,
             "click #delete", kCollapsed},
            {"move top within a page", "End", kLast, "click #move-top",
             "0:0_0,0_1 2:2_0 3+:3_0*,3_1 [ECRDTB]", Shown("3", "3_0")},
            {"move top to the page before", "PageDown", kInPage2, "click #move-top",
             "0+:0_0,0_1* 2+:2_0 3:3_0,3_1 [ECRDTB]", Shown("0", "0_1")},
            {"move top on the first item", "", kLoaded, "click #move-top", kLoaded},
            {"move bottom within a page", "", kLoaded, "click #move-bottom",
             "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]", Shown("0", "0_1")},
            {"move bottom to the next page", "Down", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]",
             "click #move-bottom", "0+:0_0,0_1 2+:2_0* 3:3_0,3_1 [ECRDTB]", Shown("2", "2_0")},
            {"move bottom on the last item", "End", kLast, "click #move-bottom", kLast},
        },
        FivePages());
}

TEST_F(Commands, AnEmptyListHasNothingToActOn)
{
    constexpr const char* kEmpty = "(There are no items to show) []";
    std::vector<Row> rows = {
        {"enter", "", kEmpty, "Enter", kEmpty, "", "UIHandler::HandleKey 2"},
        {"delete", "", kEmpty, "Delete", kEmpty, "", "UIHandler::HandleKey 2"},
    };
    for (const char* harmless :
         {"Up", "Down", "PageUp", "PageDown", "Home", "End", "click #expand-all",
          "click #collapse-all", "click #delete", "click #move-top", "click #move-bottom"}) {
        rows.push_back({harmless, "", kEmpty, harmless, kEmpty});
    }
    CheckAll(rows, {{}, {Comment("Link")}});
}

TEST_F(Commands, WithoutACurrentItemMostDoNothing)
{
    // As an engine may leave it; the buttons are still those of the first item.
    constexpr const char* kNone = "0:0_0,0_1 2:2_0 3:3_0,3_1 [ECRDB]";
    std::vector<Row> rows = {
        {"enter", "", kNone, "Enter", kNone, "", "UIHandler::HandleKey 2"},
        {"delete key", "", kNone, "Delete", kNone, "", "UIHandler::HandleKey 2"},
        {"delete", "", kNone, "click #delete", kNone, "", "UIHandler::HandleEvent 2"},
        {"home", "", kNone, "Home", kLoaded},
        {"end", "", kNone, "End", kLast},
        {"caption", "", kNone, "click div.icon @1", "0:0_0,0_1 2-:2_0 3:3_0,3_1 [ECRB]"},
    };
    for (const char* harmless : {"Up", "Down", "PageUp", "PageDown", "click #move-bottom"}) {
        rows.push_back({harmless, "", kNone, harmless, kNone});
    }
    Start();
    for (const Row& row : rows) {
        const ViewPtr view = Open(MakeDocument(FivePages()));
        host.Panel().Document()->SetState(Find(view, "li[annot-name]"), 0,
                                          HtmlEngine::ElementState::kCurrent);
        Check(view, row);
        host.CloseView(view);
    }
}

TEST_F(Commands, DeletionNeedsAWritableDocumentAndPermission)
{
    struct Case {
        const char* name;
        Documents::MemoryOptions options;
        const char* outline;
    };
    const Case cases[] = {
        {"read-only", {.readOnly = true}, "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRB]"},
        {"not permitted", {.deletionPermitted = false}, kLoaded},
    };
    Start();
    for (const Case& refused : cases) {
        const ViewPtr view = Open(MakeDocument(FivePages(), refused.options));
        for (const char* action : {"Delete", "click #delete"}) {
            Check(view, {refused.name, "", refused.outline, action, refused.outline});
        }
        Check(view, {refused.name, "", refused.outline, "Enter",
                     refused.options.readOnly ? "0+:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRB]"
                                              : "0+:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]",
                     Shown("0", "0_0")});
        host.CloseView(view);
    }
    const ViewPtr locked =
        Open(MakeDocument({{Comment("Ink", u"", Documents::kFlagLocked), Comment("Ink")}}));
    Check(locked, {"locked", "", "0:0_0*,0_1 [ECRDB]", "Delete", "0:0_0*,0_1 [ECRDB]",
                   Deleted("0", "0_0"), "UIHandler::HandleKey 196609"});
    Check(locked, {"locked", "", "0:0_0*,0_1 [ECRDB]", "click #delete", "0:0_0*,0_1 [ECRDB]",
                   Deleted("0", "0_0"), "UIHandler::HandleEvent 196609"});
}

TEST_F(Commands, ALockedViewIsNotNavigated)
{
    host.State().interactionLocked = true;
    CheckAll(
        {
            {"enter", "", kLoaded, "Enter", kLoaded},
            {"click", "", kLoaded, "click li[annot-name] @2", kInPage2},
            {"move", "", kLoaded, "click #move-bottom", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]"},
            {"delete", "End", kLast, "Delete", "0:0_0*,0_1 2:2_0 3:3_0 [ECRDB]",
             Deleted("3", "3_1")},
        },
        FivePages());
}

TEST_F(Commands, NavigationThatFailsLeavesTheCurrentItem)
{
    Documents::AnnotationProperties properties;
    properties.subtype = "Ink";
    const Pages pages = {{Comment("Text"), Documents::MakeEntry(properties)}};  // no rectangle
    CheckAll(
        {
            {"enter", "Down", "0+:0_0,0_1* [CRDT]", "Enter", "0+:0_0,0_1* [CRDT]", "",
             "UIHandler::HandleKey 8"},
            // The move buttons are brought up to date after navigating.
            {"click", "", "0:0_0*,0_1 [ECRDB]", "click li[annot-name] @1", "0:0_0,0_1* [ECRDB]", "",
             "UIHandler::HandleEvent 8"},
        },
        pages);
    VxHostUnregisterService("BLService");
    const ViewPtr view = Open(MakeDocument(FivePages()));
    Check(view, {"no service", "", kLoaded, "Enter", kLoaded, "", "UIHandler::HandleKey 2"});
}

TEST_F(Commands, AViewWithoutADocumentOrGoneIsLeftAlone)
{
    Start();
    const auto viewOf = [&](DocumentPtr document) {
        const auto view = BLDocumentViewObject::Make(
            state, document ? BLDocumentObject::Make(state, document) : nullptr);
        view->Connect();
        const ViewPtr made = UIDocumentViewObject::Make(view);
        using Collection = UIDocumentsCollection;
        host.State().Fire(host.Collection().Event<Collection::OnDocumentViewCreated>(),
                          made->AsInterface());
        host.State().Fire(host.Collection().Event<Collection::OnDocumentViewActivated>(),
                          made->AsInterface());
        Settle();
        return made;
    };
    const ViewPtr none = viewOf(nullptr);
    Check(none, {"enter", "", "[]", "Enter", "[]", "", "UIHandler::HandleKey 2"});
    for (const char* harmless : {"Delete", "Up", "Down", "Home", "End", "PageUp", "PageDown"}) {
        Check(none, {harmless, "", "[]", harmless, "[]"});
    }

    ViewPtr dead = viewOf(MakeDocument(FivePages()));
    const std::string key = KeyOf(dead);
    const ElementHandle list = Find(dead, "div.results-container");
    const ElementHandle item = Find(dead, "li[annot-name]", 2);
    const ElementHandle bottom = Find(dead, "#move-bottom");
    dead.Reset();
    for (const std::uint32_t code : {kKeyEnter, kKeyDelete}) {
        host.Panel().PressKey(list, code);
        Settle();
        EXPECT_EQ(Outline(*ReadPanelView(*host.Panel().Document(), key)), kLoaded);
    }
    host.Panel().PressKey(list, kKeyDownArrow);
    EXPECT_EQ(Outline(*ReadPanelView(*host.Panel().Document(), key)),
              "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]");
    host.Panel().Click(item);
    host.Panel().Click(bottom);
    EXPECT_EQ(Outline(*ReadPanelView(*host.Panel().Document(), key)),
              "0+:0_0,0_1 2+:2_0 3:3_0*,3_1 [ECRDTB]");
    EXPECT_EQ(TakeCalls(), "");
}

TEST_F(Commands, TheViewMayBeClosedInTheMiddleOfOne)
{
    Start();
    for (const char* action :
         {"Enter", "click li[annot-name] @2", "click #move-bottom", "Delete", "click #delete"}) {
        SCOPED_TRACE(action);
        const ViewPtr view = host.OpenView(MakeDocument(FivePages()));
        // Before the panel's own, so that its subscriptions end while their event is fired.
        bool closed = false;
        const auto close = [&](auto...) { closed = closed || (host.CloseView(view), true); };
        const SOEvent::SubscriptionHandle subscriptions[] = {
            BLDocumentView::Subscribe_OnFocusPageChanged(view->View().AsInterface(), close),
            BLDocument::Subscribe_OnAnnotChanged(view->View().Document()->AsInterface(), close)};
        Settle();
        EXPECT_EQ(OutlineOf(view), kLoaded);
        Do(view, action);
        EXPECT_TRUE(closed);
        EXPECT_EQ(CountMatches(".panel-content"), 0u);
    }
}

TEST_F(Commands, OnlyTheRightEventsCount)
{
    const ViewPtr view = StartWith(FivePages());
    const ElementHandle list = Find(view, "div.results-container");
    const ElementHandle item = Find(view, "li[annot-name]", 2);
    const ElementHandle deleteButton = Find(view, "#delete");
    const auto key = [](std::uint32_t kind) { return UIKeyEvent{nullptr, kind, kKeyEnd, 0, 0}; };
    const auto click = [](std::uint32_t kind) { return UIBehaviourEvent{nullptr, kind, 0}; };
    for (const std::uint32_t kind : {kKeyUp, kKeyCharacter, 3u}) {
        Raise(list, key(kind));
    }
    Raise(deleteButton, key(kKeyDown));
    Raise(Find(view, "div.buttons-container"), key(kKeyDown));
    for (const std::uint32_t kind : {1u, 2u, 10u, 12u, 0x8000u}) {
        Raise(item, click(kind));
        Raise(deleteButton, click(kind));
    }
    Raise(Find(view, "#reply"), click(kBehaviourClick));
    Raise(list, click(kBehaviourClick));
    Raise(Find(view, "ul.comments"), click(kBehaviourClick));
    Raise(Find(view, "li[page-index]"), click(kBehaviourClick));
    EXPECT_EQ(OutlineOf(view), kLoaded);
    EXPECT_EQ(TakeCalls(), "");

    Raise(item, click(kBehaviourActivated));
    EXPECT_EQ(OutlineOf(view), "0:0_0,0_1 2+:2_0* 3:3_0,3_1 [ECRDTB]");
    EXPECT_EQ(TakeCalls(), Shown("2", "2_0"));
    Raise(item, key(kKeyDown));  // the target may be inside the list
    EXPECT_EQ(OutlineOf(view), "0:0_0,0_1 2+:2_0 3:3_0,3_1* [ECRDT]");
}

TEST_F(Commands, MarkupInContentsCannotReachAnythingElse)
{
    const ViewPtr view = StartWith(
        {{Comment("Text", u"<div class=\"icon\">fake caption</div>"),
          Comment("Text", u"<ul class=\"comments\"><li annot-name=\"1_0\">fake item</li></ul>"),
          Comment("Text", u"<button id=\"delete\">fake button</button>"),
          Comment("Text", u"<p id=\"NoItemsMessage\">fake</p></li></ul></div>")},
         {Comment("Ink")}});
    const auto pagesAndCount = [&] {
        std::string text;
        for (const PanelPage& page : Read(view).pages) {
            text += std::to_string(page.index) +
                    (page.state == PanelPageState::kNone       ? ""
                     : page.state == PanelPageState::kExpanded ? "+"
                                                               : "-") +
                    " ";
        }
        return text + std::to_string(DocumentOf(view).AnnotationAt(0, 3).Get() != nullptr);
    };
    ASSERT_EQ(pagesAndCount(), "0 1 1");
    EXPECT_EQ(host.Panel().Document()->TextContent(Find(view, "#NoItemsMessage")), "fake");

    Raise(Find(view, "li[annot-name] div.icon"), UIBehaviourEvent{nullptr, kBehaviourClick, 0});
    EXPECT_EQ(pagesAndCount(), "0 1 1") << "a caption inside an item collapses no page";
    Raise(Find(view, "li[annot-name] #delete"), UIBehaviourEvent{nullptr, kBehaviourClick, 0});
    EXPECT_EQ(TakeCalls(), "") << "a button inside an item deletes nothing";
    Raise(Find(view, "li li[annot-name=\"1_0\"]"), UIBehaviourEvent{nullptr, kBehaviourClick, 0});
    EXPECT_EQ(TakeCalls(), Shown("0", "0_1")) << "an item inside an item is that item";
    Do(view, "Home; End; Up; PageUp; Down; Enter");
    TakeFailures();
    TakeError();
    Publish(view, DocumentOf(view).ChangeContents(0, 3, u"harmless"));
    Settle();
    Publish(view, DocumentOf(view).AddAnnotation(1, "Ink", u""));
    Settle();
    EXPECT_THAT(OutlineOf(view), testing::HasSubstr("1:1_0,1_1"));
}

// Items, pages and captions inside a comment of an earlier page, named as real ones are.
TEST_F(Commands, WhatLooksLikeAnotherPageTakesNothingFromIt)
{
    Documents::AnnotationProperties forger;
    forger.subtype = "Text";
    forger.contents =
        u"<ul page-item=\"1\"><li page-index=\"1\"><div class=\"icon\">x</div><div>"
        u"<ul class=\"comments\"><li annot-name=\"1_1\">fake</li></ul></div></li></ul>";
    forger.title = u"a</td></tr></table></popup></li><li annot-name=\"1_0\">forged";
    forger.rect = _PDRect{1, 2, 3, 4};
    const ViewPtr view = StartWith({{Documents::MakeEntry(forger), Comment("Ink")},
                                    {Comment("Ink"), Comment("Ink"), Comment("Ink")}});
    Documents::Document& document = DocumentOf(view);
    view->View().SetFocus(1, document.AnnotationAt(1, 1));
    EXPECT_EQ(OutlineOf(view), "0:0_0,0_1 1+:1_0,1_1*,1_2 [ECRDTB]");
    Do(view, "End");
    EXPECT_EQ(OutlineOf(view), "0:0_0,0_1 1+:1_0,1_1,1_2* [ECRDT]");
    Do(view, "PageUp");
    EXPECT_EQ(OutlineOf(view), "0:0_0,0_1* 1+:1_0,1_1,1_2 [ECRDTB]");
    Do(view, "click #expand-all");
    EXPECT_EQ(OutlineOf(view), "0+:0_0,0_1* 1+:1_0,1_1,1_2 [CRDTB]");
    Publish(view, document.RemoveAnnotation(1, 0));
    Publish(view, document.ChangeContents(1, 0, u"changed"));
    Publish(view, document.ChangeContents(0, 1, u"changed"));
    Settle();
    EXPECT_EQ(OutlineOf(view), "0+:0_0,0_1* 1:1_0,1_1 [ECRDTB]");
    ExpectFresh(view);
}

}  // namespace
}  // namespace PanelTests
