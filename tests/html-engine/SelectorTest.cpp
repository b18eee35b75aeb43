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

}  // namespace
}  // namespace HtmlEngine::Test
