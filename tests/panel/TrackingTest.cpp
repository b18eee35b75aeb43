// A list that follows its document: whatever changes, it becomes what a fresh rendering would be.
#include "PanelFixture.h"

#include <atomic>
#include <locale>
#include <thread>
#include <vector>

namespace PanelTests {
namespace {

using namespace Workbench;
using Documents::Document;
using Documents::EditResult;

class Tracking : public PanelTest {
protected:
    void FireAnnot(const ViewPtr& view, std::uint32_t operation, std::uint32_t page,
                   const Documents::AnnotationRef& annotation)
    {
        host.State().Fire(view->View().Document()->Event<BLDocument::OnAnnotChanged>(),
                          static_cast<PDAnnotOperation>(operation), page, annotation.Get());
        Settle();
    }
    void FirePages(const ViewPtr& view, std::uint32_t operation)
    {
        const std::uint32_t page = 0;
        const _PDPageRange range{1, 0, &page};
        host.State().Fire(view->View().Document()->Event<BLDocument::OnPagesChanged>(),
                          static_cast<PDPageOperation>(operation), &range);
        Settle();
    }
};

TEST_F(Tracking, EveryEditLeavesTheListOfAFreshRendering)
{
    struct Row {
        const char* name;
        std::function<EditResult(Document&)> edit;
        const char* before;  // steps
        const char* outline;
    };
    const Row rows[] = {
        {"added to a page with an item",
         [](Document& document) { return document.AddAnnotation(2, "Ink", u""); }, "",
         "0:0_0*,0_1 2:2_0,2_1 3:3_0,3_1 [ECRDB]"},
        {"added between two page items",
         [](Document& document) { return document.AddAnnotation(1, "Ink", u""); }, "",
         "0:0_0*,0_1 1:1_0 2:2_0 3:3_0,3_1 [ECRDB]"},
        {"added to the current item's page, which loses its states",
         [](Document& document) { return document.AddAnnotation(0, "Ink", u""); }, "Down",
         "0:0_0*,0_1,0_2 2:2_0 3:3_0,3_1 [ECRDB]"},
        {"the only one of a page removed",
         [](Document& document) { return document.RemoveAnnotation(2, 0); }, "PageDown",
         "0:0_0*,0_1 3:3_0,3_1 [ECRDB]"},
        {"contents given to an item in the simple form",
         [](Document& document) { return document.ChangeContents(0, 1, u"new <u>text</u>\n"); },
         "Down", "0+:0_0,0_1* 2:2_0 3:3_0,3_1 [ECRDTB]"},
        {"contents taken away",
         [](Document& document) { return document.ChangeContents(2, 0, u""); }, "click div.icon @1",
         "0:0_0*,0_1 2-:2_0 3:3_0,3_1 [ECRDB]"},
        {"page inserted", [](Document& document) { return document.InsertPage(2); }, "End",
         "0:0_0*,0_1 3:3_0 4:4_0,4_1 [ECRDB]"},
        {"page deleted", [](Document& document) { return document.DeletePage(0); }, "",
         "1:1_0* 2:2_0,2_1 [ECRDB]"},
    };
    Start();
    for (const bool foreign : {false, true}) {
        host.State().firesOnForeignThread = foreign;
        for (const Row& row : rows) {
            SCOPED_TRACE(testing::Message() << row.name << (foreign ? ", foreign thread" : ""));
            const ViewPtr view = Open(MakeDocument(FivePages()));
            Do(view, row.before);
            const std::string before = OutlineOf(view);
            Publish(view, row.edit(DocumentOf(view)));
            if (foreign) {
                EXPECT_EQ(OutlineOf(view), before) << "until the loop runs";
            }
            Settle();
            EXPECT_EQ(OutlineOf(view), row.outline);
            ExpectFresh(view);
            host.CloseView(view);
        }
    }
}

TEST_F(Tracking, TheNoItemsMessageAndPageItemsAreNeverShownTogether)
{
    const ViewPtr view = StartWith({{Comment("Ink")}, {}});
    Document& document = DocumentOf(view);
    struct Row {
        std::function<EditResult()> edit;
        const char* outline;
    };
    const char* const kEmpty = "(There are no items to show) []";
    const Row rows[] = {
        {[&] { return document.RemoveAnnotation(0, 0); }, kEmpty},
        {[&] { return document.AddAnnotation(0, "Link", u""); }, kEmpty},
        {[&] { return document.AddAnnotation(1, "Ink", u""); }, "1:1_0* [ECRD]"},
        {[&] { return document.AddAnnotation(0, "Ink", u""); }, "0:0_1 1:1_0* [ECRDT]"},
        {[&] { return document.RemoveAnnotation(1, 0); }, "0:0_1* [ECRD]"},
        {[&] { return document.DeletePage(0); }, kEmpty},
    };
    for (const Row& row : rows) {
        Publish(view, row.edit());
        Settle();
        EXPECT_EQ(OutlineOf(view), row.outline);
        ExpectFresh(view);
    }
    host.SwitchLanguage("de");
    Settle();
    EXPECT_EQ(OutlineOf(view), "(Es sind keine Elemente vorhanden) []");
    EXPECT_EQ(host.Panel().Document()->Attribute(Find(view, "#NoItemsMessage"),
                                                 "__l_o_c_a_l_e__t_o_k_e_n__"),
              "There are no items to show");
}

TEST_F(Tracking, UpdatesLeaveNothingBehind)
{
    const ViewPtr view = StartWith(FivePages());
    Document& document = DocumentOf(view);
    const auto playRounds = [&](int count) {
        for (int round = 0; round < count; ++round) {
            Publish(view, document.ChangeContents(0, 0, u"changed"));
            Publish(view, document.AddAnnotation(1, "Ink", u""));
            Publish(view, document.AddAnnotation(2, "Ink", u""));
            Publish(view, document.RemoveAnnotation(1, 0));
            Publish(view, document.RemoveAnnotation(2, 1));
            Publish(view, document.ChangeContents(0, 0, u"a"));
            Settle();
        }
        return host.Panel().Document()->InnerHtml(Find(view, "div.results-container")).size();
    };
    const std::size_t once = playRounds(2);
    EXPECT_EQ(playRounds(20), once);
    ExpectFresh(view);
}

TEST_F(Tracking, OtherOperationsAndStrangeEventsChangeNothing)
{
    const ViewPtr view = StartWith(FivePages());
    Document& document = DocumentOf(view);
    const auto first = document.AnnotationAt(0, 0);
    document.ChangeContents(0, 0, u"not announced yet");
    const auto changes = [&](auto&& fire) {
        const std::uint64_t before = host.Panel().Document()->ChangeCount();
        fire();
        return host.Panel().Document()->ChangeCount() != before;
    };
    for (const std::uint32_t operation : {3u, 5u, 6u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(changes([&] { FireAnnot(view, operation, 0, first); })) << operation;
        EXPECT_FALSE(changes([&] { FirePages(view, operation); })) << operation;
    }
    EXPECT_FALSE(changes([&] { FirePages(view, 4); }));
    for (const std::uint32_t operation : {0u, 1u, 2u, 4u}) {
        EXPECT_FALSE(changes([&] { FireAnnot(view, operation, 0, {}); })) << operation;
        EXPECT_FALSE(changes([&] { FireAnnot(view, operation, 5, first); })) << operation;
        EXPECT_FALSE(changes([&] { FireAnnot(view, operation, kPDNoPage, first); })) << operation;
    }
    EXPECT_NE(ListHtml(view), FreshListHtml(view));
    for (const std::uint32_t operation : {0u, 1u, 2u, 4u}) {
        document.ChangeContents(0, 0, std::u16string(operation + 1, u'x'));
        EXPECT_TRUE(changes([&] { FireAnnot(view, operation, 0, first); })) << operation;
        ExpectFresh(view);
    }
    for (const std::uint32_t operation : {0u, 1u, 2u}) {
        document.ChangeContents(0, 0, std::u16string(operation + 1, u'y'));
        EXPECT_TRUE(changes([&] { FirePages(view, operation); })) << operation;
        ExpectFresh(view);
    }
    EXPECT_FALSE(changes([&] { FireAnnot(view, 4, 2, first); })) << "not on that page";
    EXPECT_EQ(TakeError(), "Annot not found");
}

TEST_F(Tracking, WhatIsNotListedStillMovesItsNeighbours)
{
    const ViewPtr view =
        StartWith({{Comment("Link"), Comment("Ink"), Comment("Stamp")}, {Comment("Text")}});
    Do(view, "Down");
    EXPECT_EQ(OutlineOf(view), "0+:0_1,0_2* 1:1_0 [ECRDTB]");
    Publish(view, DocumentOf(view).RemoveAnnotation(0, 0));
    Settle();
    EXPECT_EQ(OutlineOf(view), "0+:0_0,0_1* 1:1_0 [ECRDTB]") << "nothing that is listed changed";
    ExpectFresh(view);
    Do(view, "Delete");
    EXPECT_EQ(OutlineOf(view), "0:0_0* 1:1_0 [ECRDB]");
    EXPECT_EQ(DocumentOf(view).AnnotationAt(0, 1).Get(), nullptr) << "the right one";
    ExpectFresh(view);
}

TEST_F(Tracking, AnAnnotationInSeveralPlacesIsFollowedInAllOfThem)
{
    const MemoryEntry shared = Comment("Ink", u"shared");
    const ViewPtr view =
        StartWith({{shared, Comment("Text"), shared}, {shared}, {Comment("Text")}});
    Do(view, "Down; Down");
    Publish(view, DocumentOf(view).ChangeContents(0, 2, u"changed"));
    Settle();
    ExpectFresh(view);
    EXPECT_EQ(CountMatches("li[annot-name]:current"), 1u);
    Publish(view, DocumentOf(view).RemoveAnnotation(0, 0));
    Settle();
    EXPECT_EQ(OutlineOf(view), "0:0_0* 1:1_0 2:2_0 [ECRDB]");
    ExpectFresh(view);
}

TEST_F(Tracking, APopUpGoesWithItsAnnotation)
{
    Documents::AnnotationProperties properties;
    properties.subtype = "Text";
    const MemoryEntry popup = Comment("Popup");
    const ViewPtr view = StartWith(
        {{popup, Documents::MakeEntry(properties, popup), Comment("Ink"), Comment("Stamp")}});
    Publish(view, DocumentOf(view).RemoveAnnotation(0, 1));
    Settle();
    EXPECT_EQ(OutlineOf(view), "0:0_0*,0_1 [ECRDB]");
    ExpectFresh(view);
}

TEST_F(Tracking, TheViewsFocusMakesAnItemCurrentAndShowsIt)
{
    Pages pages = FivePages();
    pages[2].push_back(Comment("Link"));
    const ViewPtr view = StartWith(pages);
    Do(view, "click #collapse-all");
    struct Row {
        std::uint32_t page, position;
        const char* outline;
    };
    const Row rows[] = {
        {2, 0, "0-:0_0,0_1 2+:2_0* 3-:3_0,3_1 [ECRDTB]"},
        {2, 1, "0-:0_0,0_1 2+:2_0* 3-:3_0,3_1 [ECRDTB]"},  // not listed
        {1, 0, "0-:0_0,0_1 2+:2_0* 3-:3_0,3_1 [ECRDTB]"},  // none
        {3, 1, "0-:0_0,0_1 2+:2_0 3+:3_0,3_1* [ECRDT]"},
        {0, 0, "0+:0_0*,0_1 2+:2_0 3+:3_0,3_1 [CRDB]"},
    };
    for (const Row& row : rows) {
        view->View().SetFocus(row.page, DocumentOf(view).AnnotationAt(row.page, row.position));
        Settle();
        EXPECT_EQ(OutlineOf(view), row.outline);
    }
    EXPECT_EQ(TakeCalls(), "") << "the view shows it already";

    const auto second = DocumentOf(view).AnnotationAt(0, 1);
    view->View().FireFocus(kPDNoPage, second.Get());  // no page
    view->View().FireFocus(0, nullptr);
    Settle();
    EXPECT_EQ(OutlineOf(view), rows[4].outline);
    std::thread([&] { view->View().FireFocus(0, second.Get()); }).join();
    EXPECT_EQ(OutlineOf(view), rows[4].outline) << "nothing is done on that thread";
    Settle();
    EXPECT_EQ(OutlineOf(view), "0+:0_0,0_1* 2+:2_0 3+:3_0,3_1 [CRDTB]");
    view->View().FireFocus(3, second.Get());  // not on that page
    EXPECT_EQ(OutlineOf(view), "0+:0_0,0_1* 2+:2_0 3+:3_0,3_1 [CRDTB]");
    EXPECT_EQ(TakeError(), "Annot not found");
}

TEST_F(Tracking, TwoViewsOfOneDocumentHaveStatesOfTheirOwn)
{
    Start();
    const auto document = BLDocumentObject::Make(state, MakeDocument(FivePages()));
    std::vector<ViewPtr> views;
    for (int i = 0; i < 2; ++i) {
        const auto view = BLDocumentViewObject::Make(state, document);
        view->Connect();
        views.push_back(UIDocumentViewObject::Make(view));
        host.Collection().Add(views.back());
        host.Collection().Activate(views.back());
        Settle();
    }
    Do(views[1], "End");
    Publish(views[0], document->Content().ChangeContents(3, 1, u"seen in both"));
    Publish(views[0], document->Content().AddAnnotation(1, "Ink", u""));
    Settle();
    EXPECT_EQ(OutlineOf(views[0]), "0:0_0*,0_1 1:1_0 2:2_0 3:3_0,3_1 [ECRDB]");
    EXPECT_EQ(OutlineOf(views[1]), "0:0_0,0_1 1:1_0 2:2_0 3:3_0,3_1* [ECRDT]");
    ExpectFresh(views[0]);
    ExpectFresh(views[1]);
    host.CloseView(views[1]);
    Publish(views[0], document->Content().RemoveAnnotation(0, 0));
    Settle();
    ExpectFresh(views[0]);
}

// Nothing is loaded anew, neighbours and the user's place stay, and the list is a fresh one: no
// rendering of a whole list could land meanwhile.
TEST_F(Tracking, TextsThatLookLikeMarkupAreUpdatedInPlace)
{
    const ViewPtr view = StartWith(
        {{Comment("Ink", u"a"), Comment("Ink", u"b"), Comment("Ink", u"c"), Comment("Ink", u"d")},
         {Comment("Text")}});
    Document& document = DocumentOf(view);
    Do(view, "click div.icon @1");
    view->View().SetFocus(0, document.AnnotationAt(0, 2));
    host.State().loop.Hold(true);
    const std::string outline = "0+:0_0,0_1,0_2*,0_3 1-:1_0 [ECRDTB]";
    for (const char16_t* text :
         {u"List<String>, x<y", u"if a<b and c>d then stop", u"<b>open", u"</b></p>", u"</li>",
          u"</li></ul></div>", u"<ul><li>", u"<table><tr><td>", u"<li annot-name='0_0'>",
          u"<style>", u"<b x=a' y='>one</b>", u"<i a=\"'\" b=\">'", u"<u", u"a<!--",
          u"<button id=delete>x</button><p id=NoItemsMessage>"}) {
        Publish(view, document.ChangeContents(0, 1, text));
        Settle();
        EXPECT_EQ(OutlineOf(view), outline) << testing::PrintToString(text);
        ExpectFresh(view);
        Publish(view, document.ChangeContents(0, 3, text));
        Settle();
        EXPECT_EQ(OutlineOf(view), outline) << testing::PrintToString(text);
        ExpectFresh(view);
    }
    Publish(view, document.RemoveAnnotation(0, 0));
    Settle();
    ExpectFresh(view);
    host.State().loop.Hold(false);
}

TEST_F(Tracking, ViewsMayComeAndGoWhileAnotherThreadEdits)
{
    Start();
    const auto document = BLDocumentObject::Make(state, MakeDocument(FivePages()));
    const auto makeView = [&] {
        const auto view = BLDocumentViewObject::Make(state, document);
        view->Connect();
        const ViewPtr made = UIDocumentViewObject::Make(view);
        host.Collection().Add(made);
        host.Collection().Activate(made);
        return made;
    };
    std::atomic<bool> ends = false;
    std::thread editor([&] {
        Document& content = document->Content();
        for (std::uint32_t round = 0; !ends; ++round) {
            document->Publish(content.ChangeContents(0, 0, std::u16string(1 + round % 9, u'x')));
            document->Publish(content.AddAnnotation(1, "Ink", u""));
            document->Publish(content.RemoveAnnotation(1, 0));
        }
    });
    for (int round = 0; round < 60; ++round) {
        const ViewPtr view = makeView();
        for (int call = 0; call < round; ++call) {
            host.State().loop.RunNext();
        }
        host.Collection().Close(view);
    }
    const ViewPtr last = makeView();
    for (int call = 0; call < 300; ++call) {
        host.State().loop.RunNext();
    }
    ends = true;
    editor.join();
    Settle();
    ExpectFresh(last);
    TakeLateErrors();
}

TEST_F(Tracking, EditsOfSeveralThreadsAtOnceAreAllInTheListInTheEnd)
{
    Pages pages(8);
    pages[0] = {Comment("Ink")};
    const ViewPtr view = StartWith(pages);
    Document& document = DocumentOf(view);
    std::vector<std::thread> threads;
    for (std::uint32_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (std::uint32_t round = 0; round < 25; ++round) {
                const std::uint32_t page = thread * 2 + round % 2;
                const auto publish = [&](EditResult edit) {
                    EXPECT_EQ(view->View().Document()->Publish(std::move(edit)), "");
                };
                publish(document.AddAnnotation(page, "Ink", u"a"));
                publish(document.ChangeContents(page, 0, std::u16string(round + 1, u'b')));
                if (round % 3 == 0) {
                    publish(document.RemoveAnnotation(page, 0));
                }
                if (round % 10 == thread) {
                    publish(document.InsertPage(8));
                }
            }
        });
    }
    for (int round = 0; round < 200; ++round) {
        host.State().loop.RunNext();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    Settle();
    ExpectFresh(view);
    EXPECT_EQ(Read(view).pages.size(), 8u);
    EXPECT_EQ(CountMatches("li[annot-name]:current"), 1u);
    TakeLateErrors();
}

// A host may speak its user's language in C++ streams too.
TEST_F(Tracking, NumbersAreThoseOfNoLocale)
{
    struct Grouping : std::numpunct<char> {
        std::string do_grouping() const override { return "\3"; }
    };
    struct WideGrouping : std::numpunct<wchar_t> {
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale former = std::locale::global(
        std::locale(std::locale(std::locale(), new Grouping), new WideGrouping));
    constexpr std::uint32_t kPage = 1000;
    Pages pages(kPage + 1);
    Documents::AnnotationProperties note;
    note.subtype = "Text";
    pages[kPage] = {Documents::MakeEntry(note)};
    const ViewPtr view = StartWith(pages);
    EXPECT_EQ(Outline(Read(view)), "1000:1000_0* [ECRD]");
    EXPECT_EQ(Read(view).pages.at(0).caption, "Page 1001");

    auto* const document = view->View().Document();
    document->Publish(document->Content().AddAnnotation(kPage, "Ink", u""));
    Settle();
    EXPECT_EQ(Outline(Read(view)), "1000:1000_0*,1000_1 [ECRDB]");
    document->Publish(document->Content().RemoveAnnotation(kPage, 0));
    document->Publish(document->Content().RemoveAnnotation(kPage, 0));
    Settle();
    EXPECT_TRUE(Read(view).noItems.has_value());
    std::locale::global(former);
}

}  // namespace
}  // namespace PanelTests
