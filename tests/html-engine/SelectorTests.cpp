#include "TestPage.h"

namespace HtmlEngine::Test {
namespace {

constexpr std::string_view kBody =
    "<div id=d class='box wide'><p id=p1 lang=en>one</p><p id=p2 lang='' .note>two</p>"
    "<ul id=u><li id=l1 annot-name='0_0'></li> <li id=l2 annot-name='0_1'><!-- c --></li><li "
    "id=l3>t</li></ul>"
    "<ul id=v><li id=m1 annot-name='1_0'></li></ul></div>"
    "<section id=s><div id=e class=box><p id=p3>three</p></div></section>";

TEST(Selector, FindsInDocumentOrder)
{
    TestPage page(kBody);
    page->SetState(page.Find("#l2"), ElementState::kCurrent | ElementState::kDisabled, 0);
    page->SetState(page.Find("#p1"), ElementState::kExpanded | ElementState::kHover, 0);
    const struct {
        std::string_view selector;
        std::string_view names;
    } rows[] = {
        {"p", "p1 p2 p3"},
        {"P", "p1 p2 p3"},
        {"body *", "d p1 p2 u l1 l2 l3 v m1 s e p3"},
        {".box", "d e"},
        {".box.wide", "d"},
        {".Box", ""},
        {"#l2", "l2"},
        {"[lang]", "p1 p2"},
        {"[LANG=en]", "p1"},
        {"[lang=\"\"]", "p2"},
        {"[ lang = 'en' ]", "p1"},
        {"[class=\"box wide\"]", "d"},
        {"[class=wide]", ""},
        {"[annot-name=0_1]", "l2"},
        {"[annot-name=\"0\\_1\"]", "l2"},
        {"[annot-name=\"\\30 _1\"]", "l2"},
        {".note", "p2"},
        {"li:first-child", "l1 m1"},
        {"li:last-child", "l3 m1"},
        {"[annot-name]:last-child", "m1"},
        {".box:first-child", "d e"},
        {".box:last-child", "e"},
        {"li:only-child", "m1"},
        {"li[annot-name]:only-child", "m1"},
        {"li:nth-child(2)", "l2"},
        {"li:nth-child(0)", ""},
        {"li:empty", "l1 l2 m1"},
        {"li:not([annot-name])", "l3"},
        {"p:not(.note):not(:hover)", "p3"},
        {":current", "l2"},
        {"li:disabled", "l2"},
        {"li:enabled", "l1 l3 m1"},
        {":expanded:hover", "p1"},
        {":collapsed, :active, :focus", ""},
        {"div p", "p1 p2 p3"},
        {"section p", "p3"},
        {"body > div p", "p1 p2"},
        {"div > ul > li:first-child", "l1 m1"},
        {"p + p", "p2"},
        {"p + ul", "u"},
        {"p ~ ul", "u v"},
        {"p ~ ul > li:last-child", "l3 m1"},
        {"div ~ section .box p", "p3"},
        {"ul + ul li", "m1"},
        {"p,ul , #e", "p1 p2 u v e p3"},
        {"p, p, .note", "p1 p2 p3"},
        {"  p  ", "p1 p2 p3"},
        {"html body div.box", "d e"},
        {":root > *", "head body"},
        {":root > body > :first-child", "d"},
        {"div :root", ""},
        {"nothing li", ""},
        {"li nothing", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(page.Names(row.selector), row.names) << row.selector;
    }
}

TEST(Selector, CountsAncestorsOutsideTheQueryRootAndGivesOnlyWhatIsInside)
{
    TestPage page(kBody);
    const ElementHandle list = page.Find("#u");
    EXPECT_EQ(page.Names(list, "div li[annot-name]"), "l1 l2");
    EXPECT_EQ(page.Names(list, "div.wide > ul > li:last-child"), "l3");
    EXPECT_EQ(page.Names(list, "p ~ ul > li"), "l1 l2 l3");
    EXPECT_EQ(page.Names(list, "section li"), "");
    EXPECT_EQ(page.Names(list, ":root li[annot-name]:first-child"), "l1");
    EXPECT_EQ(page.Names(list, ":root > li"), "l1 l2 l3");
    EXPECT_EQ(page.Names(list, "div > :root > li"), "l1 l2 l3");
    EXPECT_EQ(page.Names(list, "ul"), "");
    EXPECT_EQ(page.Names(page.Find("#d"), ":root > *"), "p1 p2 u v");
}

TEST(Selector, OfAnAncestorTestTakesThePageRootForRoot)
{
    TestPage page(kBody);
    const struct {
        std::string_view from;
        std::string_view selector;
        std::string_view nearest;
    } rows[] = {
        {"#l2", ":root ul", "u"},        {"#l2", "li", "l2"},
        {"#l2", ":root div.box", "d"},   {"#l2", ":root", "html"},
        {"#p3", "section, div", "e"},    {"#l2", "section", ""},
        {"#l2", ":root > body", "body"},
    };
    for (const auto& row : rows) {
        ElementHandle match = kNoElement;
        EXPECT_EQ(page->Closest(page.Find(row.from), row.selector, match), Result::Success);
        EXPECT_EQ(match == kNoElement ? "" : page.NameOf(match), row.nearest) << row.selector;
        bool matches = false;
        EXPECT_EQ(page->Matches(page.Find(row.from), row.selector, matches), Result::Success);
        EXPECT_EQ(matches, match == page.Find(row.from)) << row.selector;
    }
}

TEST(Selector, RefusesWhatIsMalformedAndSaysWhere)
{
    TestPage page(kBody);
    const struct {
        std::string_view selector;
        std::string_view problem;
    } rows[] = {
        {"", "selector expected at character 1"},
        {"  ", "selector expected at character 3"},
        {"p,", "selector expected at character 3"},
        {", p", "unexpected character at character 1"},
        {"> p", "unexpected character at character 1"},
        {"p >", "selector expected at character 4"},
        {"p > > p", "unexpected character at character 5"},
        {"p)", "unexpected character at character 2"},
        {".", "name expected at character 2"},
        {".1", "name expected at character 2"},
        {"#", "name expected at character 2"},
        {"[a", "']' expected at character 3"},
        {"[a=]", "name expected at character 4"},
        {"[a=\"b]", "unclosed string at character 7"},
        {"[a~=b]", "']' expected at character 3"},
        {"p:first", "unknown pseudo-class at character 8"},
        {"p::first-child", "name expected at character 3"},
        {"p:empty()", "no argument expected at character 8"},
        {":nth-child", "'(' expected at character 11"},
        {":nth-child(x)", "number expected at character 12"},
        {":nth-child(99999999999)", "number expected at character 12"},
        {":not()", "unexpected character at character 6"},
        {":not(a b)", "')' expected at character 8"},
        {":not(:not(a))", ":not inside :not at character 11"},
        {"p\\", "character expected after '\\' at character 3"},
        {"p;", "unexpected character at character 2"},
    };
    for (const auto& row : rows) {
        ElementHandle match = page.Body();
        bool matches = true;
        const auto never = [](ElementHandle) {
            ADD_FAILURE();
            return true;
        };
        EXPECT_EQ(page->SelectFirst(page->Root(), row.selector, match), Result::MalformedSelector)
            << row.selector;
        EXPECT_EQ(match, kNoElement);
        EXPECT_EQ(page->SelectAll(page->Root(), row.selector, never), Result::MalformedSelector);
        EXPECT_EQ(page->Matches(page.Body(), row.selector, matches), Result::MalformedSelector);
        EXPECT_FALSE(matches);
        EXPECT_EQ(Document::DescribeSelectorProblem(row.selector), row.problem) << row.selector;
    }
    EXPECT_EQ(Document::DescribeSelectorProblem("ul > li:not(.a)[b='c'], #d"), "");
    std::string tooLong = "a";
    for (int count = 0; count < 1000; ++count) {
        tooLong += " a";
    }
    EXPECT_NE(Document::DescribeSelectorProblem(tooLong), "");
}

TEST(Selector, FollowsChangesOfTheList)
{
    TestPage page("<div class=results-container></div><div class=other></div>");
    const ElementHandle results = page.Find("div.results-container");
    const ElementHandle body = page.Body();
    page->SetHtml(results, ListHtml(4, 3), InsertPosition::ReplaceContent);
    page->SetHtml(page.Find(".other"), ListHtml(4, 3), InsertPosition::ReplaceContent);
    const auto annotNames = [&](std::string_view selector) {
        std::string names;
        for (const ElementHandle match : page.All(body, selector)) {
            names += names.empty() ? "" : " ";
            names += *page->Attribute(match, "annot-name");
        }
        return names;
    };
    constexpr std::string_view kFirst = "div.results-container ul[page-item]:first-child "
                                        "li[page-index]:first-child li[annot-name]:first-child";
    constexpr std::string_view kLast = "div.results-container ul[page-item]:last-child "
                                       "li[page-index]:last-child li[annot-name]:last-child";
    constexpr std::string_view kCurrent = "div.results-container li[annot-name]:current";
    const auto find = [&](std::string_view selector) { return page.FindIn(results, selector); };

    const struct {
        std::string_view what;
        std::function<void()> change;
        std::string_view first;
        std::string_view last;
        std::string_view current;
    } steps[] = {
        {"loaded", [] {}, "0_0", "3_2", ""},
        {"current", [&] { page->SetState(find("[annot-name='1_1']"), ElementState::kCurrent, 0); },
         "0_0", "3_2", "1_1"},
        {"first item gone", [&] { page->Delete(find("[annot-name='0_0']")); }, "0_1", "3_2", "1_1"},
        {"last page gone", [&] { page->Delete(find("[page-item='3']")); }, "0_1", "2_2", "1_1"},
        {"page before the first",
         [&] { page->SetHtml(results, PageItemHtml(9, 2), InsertPosition::InsertFirst); }, "9_0",
         "2_2", "1_1"},
        {"page after the last",
         [&] {
             page->SetHtml(find("[page-item='2']"), PageItemHtml(7, 2),
                           InsertPosition::InsertAfter);
         },
         "9_0", "7_1", "1_1"},
        {"page with the current item replaced",
         [&] {
             page->SetHtml(find("[page-item='1']"), PageItemHtml(1, 5),
                           InsertPosition::ReplaceElement);
         },
         "9_0", "7_1", ""},
        {"item renamed", [&] { page->SetAttribute(find("[annot-name='9_0']"), "annot-name", "x"); },
         "x", "7_1", ""},
        {"no item any more", [&] { page->RemoveAttribute(find("[annot-name='x']"), "annot-name"); },
         "", "7_1", ""},
        {"something behind the last",
         [&] { page->SetHtml(results, "<p>", InsertPosition::AppendLast); }, "", "", ""},
        {"and away again", [&] { page->Delete(find("p:last-child")); }, "", "7_1", ""},
        {"all gone", [&] { page->SetText(results, ""); }, "", "", ""},
    };
    for (const auto& step : steps) {
        step.change();
        EXPECT_EQ(annotNames(kFirst), step.first) << step.what;
        EXPECT_EQ(annotNames(kLast), step.last) << step.what;
        EXPECT_EQ(annotNames(kCurrent), step.current) << step.what;
    }
    EXPECT_EQ(page.All(body, ".other li[annot-name]").size(), 12U);
}

TEST(Selector, CallbackMayStopAndMayChangeTheTree)
{
    TestPage page("<p id=a></p><p id=b></p><p id=c></p>");
    std::string seen;
    page->SelectAll(page->Root(), "p", [&](ElementHandle match) {
        seen += page.NameOf(match);
        return seen != "ab";
    });
    EXPECT_EQ(seen, "ab");
    seen.clear();
    page->SelectAll(page->Root(), "p", [&](ElementHandle match) {
        seen += page.NameOf(match);
        page->SetHtml(match, "<p id=n></p>", InsertPosition::InsertAfter);
        if (seen == "a") {
            page->Delete(page.Find("#b"));
        }
        return true;
    });
    EXPECT_EQ(seen, "ac");
    EXPECT_EQ(page.Names("p"), "a n c n");
}

TEST(Selector, FindsEachMatchOnceInNestedContainers)
{
    TestPage page("<div class=box><div class=box id=inner></div></div>");
    page->SetHtml(page.Find("#inner"), ListHtml(1, 40), InsertPosition::ReplaceContent);
    page->SetHtml(page.Find(".box"), ListHtml(1, 40), InsertPosition::AppendLast);
    EXPECT_EQ(page.All(page->Root(), ".box li[annot-name]").size(), 80U);
    EXPECT_EQ(page.All(page->Root(), ".box .box li[annot-name]").size(), 40U);
    EXPECT_EQ(page.All(page->Root(), ".box > .box > ul li[annot-name]").size(), 40U);
    EXPECT_EQ(page.All(page.Find("#inner"), ".box li[annot-name]").size(), 40U);
}

TEST(Selector, KnowsTheEdgesOfAListWhileItGrowsAndShrinks)
{
    TestPage page("<ul></ul>");
    const ElementHandle list = page.Find("ul");
    for (int round = 0; round < 200; ++round) {
        page->SetHtml(list, "<li x .c></li><li x .c></li>",
                      round % 2 == 0 ? InsertPosition::InsertFirst : InsertPosition::AppendLast);
        page->Delete(page->Child(list, round % 3 == 0 ? page->ChildCount(list) - 1 : 0));
        if (round % 50 == 49) {
            page->SetHtml(list, "t<li x .c></li>", InsertPosition::ReplaceContent);
        }
        const std::vector<ElementHandle> first{page->Child(list, 0)};
        const std::vector<ElementHandle> last{page->Child(list, page->ChildCount(list) - 1)};
        for (const std::string_view item : {"[x]", ".c"}) {
            const std::string selector(item);
            ASSERT_EQ(page.All(page->Root(), selector + ":first-child"), first) << round;
            ASSERT_EQ(page.All(page->Root(), selector + ":last-child"), last) << round;
        }
    }
}

TEST(Selector, KeepsDocumentOrderUnderInsertionsAtOnePlace)
{
    TestPage page("<ul><li class=x id=first></li><li class=x id=last></li></ul>");
    const ElementHandle last = page.Find("#last");
    constexpr std::size_t kCount = 3000;
    for (std::size_t count = 0; count < kCount; ++count) {
        page->SetHtml(last, "<li class=x><b class=x></b></li>",
                      count % 2 == 0 ? InsertPosition::InsertBefore : InsertPosition::InsertAfter);
    }
    const ElementHandle list = page.Find("ul");
    std::vector<ElementHandle> expected;
    for (std::size_t index = 0; index < page->ChildCount(list); ++index) {
        const ElementHandle item = page->Child(list, index);
        EXPECT_EQ(page->IndexInParent(item), index);
        expected.push_back(item);
        if (page->ChildCount(item) == 1) {
            expected.push_back(page->Child(item, 0));
        }
    }
    EXPECT_EQ(expected.size(), 2 * kCount + 2);
    EXPECT_EQ(page.All(page->Root(), ".x"), expected);
}

}  // namespace
}  // namespace HtmlEngine::Test
