// Reading and writing HTML: what comes back is what was there, and nothing that comes in does harm.

#include "RandomSelector.h"
#include "TestPage.h"

namespace HtmlEngine::Test {
namespace {

std::string Repeat(std::string_view text, int count)
{
    std::string result;
    for (; count > 0; --count) {
        result += text;
    }
    return result;
}

TEST(Markup, IsReadBackAsItWasWritten)
{
    const struct {
        std::string markup;
        std::string_view html;
    } rows[] = {
        {"a &lt;b&gt; &amp;amp; &nbsp; \"q\"", "a &lt;b&gt; &amp;amp; &nbsp; \"q\""},
        {"<p title='\"<>&amp;&nbsp;'>", "<p title=\"&quot;<>&amp;&nbsp;\"></p>"},
        {"<br><img src=a><hr/>", "<br><img src=\"a\"><hr>"},
        {"<pre>\n\nx</pre>", "<pre>\n\nx</pre>"},
        {"<textarea>\n\n<b></textarea>", "<textarea>\n\n&lt;b&gt;</textarea>"},
        {"<script>a < b && c</script>", "<script>a < b && c</script>"},
        {"<!-- a -- b --><p>x", "<!-- a -- b --><p>x</p>"},
        {"<PoPuP ID=A></popup>", "<popup id=\"A\"></popup>"},
        {"a&#13;b\r\nc", "a&#13;b\nc"},
        {"<template><tr><td>x</template>", "<template><tr><td>x</td></tr></template>"},
        {"<svg viewBox='0'><linearGradient/></svg>",
         "<svg viewBox=\"0\"><linearGradient></linearGradient></svg>"},
        {"<p>a<p>b", "<p>a</p><p>b</p>"},
    };
    for (const auto& row : rows) {
        TestPage page(row.markup);
        EXPECT_EQ(page.BodyHtml(), row.html);
        TestPage again(page.BodyHtml());
        EXPECT_EQ(again.BodyHtml(), row.html);
    }
    TestPage list(ListHtml(3, 4));
    TestPage again(list.BodyHtml());
    EXPECT_EQ(again.BodyHtml(), list.BodyHtml());
    EXPECT_EQ(again->TextContent(again.Body()), list->TextContent(list.Body()));
    EXPECT_EQ(list->TextContent(list.Find("li[annot-name] p")), "onetwo");
}

TEST(Markup, MalformedUtf8IsReplaced)
{
    const struct {
        std::string_view bytes;
        std::string_view text;
    } rows[] = {
        {"\xE2\x82\xAC \xF0\x9F\x98\x80 \xD0\xAF", "\xE2\x82\xAC \xF0\x9F\x98\x80 \xD0\xAF"},
        {"a\x80z", "a\xEF\xBF\xBDz"},
        {"\xE2\x82", "\xEF\xBF\xBD"},
        {"\xE2\x82z", "\xEF\xBF\xBDz"},
        {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {std::string_view("12345678\0x", 10), "12345678\xEF\xBF\xBDx"},
        {"1234567\xFF"
         "12345678",
         "1234567\xEF\xBF\xBD"
         "12345678"},
    };
    for (const auto& row : rows) {
        TestPage page("<p>" + std::string(row.bytes) + "</p><i></i>");
        EXPECT_EQ(page->TextContent(page.Find("p")), row.text);
        page->SetText(page.Find("i"), row.bytes);
        EXPECT_EQ(page->TextContent(page.Find("i")), row.text);
    }
}

TEST(Markup, DeepOrExplodingMarkupIsMastered)
{
    std::string formatting = "<p>";
    std::string attributes = "<a";
    std::string leftOpen;
    for (int number = 0; number < 20000; ++number) {
        formatting += "<b a=" + std::to_string(number) + ">";
        attributes += " a" + std::to_string(number) + "=v";
        leftOpen += "<div><b a=" + std::to_string(number) + "></div>";
    }
    const std::string rows[] = {
        Repeat("<div>", 100000),
        Repeat("<div>", 100000) + Repeat("</div>", 100000),
        Repeat("<b>", 100000),
        Repeat("<popup>", 100000),
        Repeat("<svg><g>", 50000),
        Repeat("<table><tr><td>", 30000),
        Repeat("<ul><li>", 50000),
        Repeat("<div>", 100000) + "<frameset>",
        formatting + Repeat("<p>x", 20000),
        leftOpen,
        attributes + ">",
        "<!-- <a b=\"> -->" + Repeat("<div>", 50000),
        Repeat("<a><div>", 50000),
        Repeat("<", 500000),
        Repeat("<!--", 100000),
        "<svg><style><a b=\"</style><x y='\">" + Repeat("<div>", 30000),
    };
    for (const std::string& row : rows) {
        TestPage page("<div id=before></div><div id=place></div><div id=after></div>");
        ASSERT_EQ(page->SetHtml(page.Find("#place"), row + "end", InsertPosition::ReplaceContent),
                  Result::Success);
        EXPECT_NE(page.BodyHtml().find("id=\"after\""), std::string::npos) << row.substr(0, 40);
        EXPECT_EQ(page.Names(page.Body(), "body > div > x > y"), "") << row.substr(0, 40);
        page->Load(row);
        page->SetText(page->Root(), "gone");
        EXPECT_EQ(page->OuterHtml(page->Root()), "<html>gone</html>");
    }
}

TEST(Markup, WithinTheLimitsLosesNothing)
{
    // Many elements that are never closed, beside each other and not inside.
    TestPage page(Repeat("<p>x", 3000) + Repeat("<ul><li>a<li>b</ul>", 3000));
    EXPECT_EQ(page.All(page.Body(), "p").size(), 3000U);
    EXPECT_EQ(page.All(page.Body(), "ul > li:nth-child(2)").size(), 3000U);
    TestPage deep(Repeat("<div>", 500) + "<i id=i>");
    EXPECT_EQ(deep.All(deep.Body(), "div").size(), 500U);
    // Beyond the limit the content stays, in fewer elements.
    deep->Load(Repeat("<div>", 100000) + "text" + Repeat("</div>", 100000) + "<i id=i>");
    EXPECT_GE(deep.All(deep.Body(), "div").size(), 500U);
    EXPECT_EQ(deep->TextContent(deep.Find("div")), "text");
    EXPECT_EQ(deep->Parent(deep.Find("#i")), deep.Body());
    // A tag with too many attributes keeps the first, and what follows it is unharmed.
    std::string tag = "<i id=j";
    for (int number = 0; number < 600; ++number) {
        tag += " a" + std::to_string(number) + "='>'";
    }
    TestPage wide(tag + " z=1></i><u id=k>t</u>");
    EXPECT_EQ(wide->Attributes(wide.Find("#j")).size(), 512U);
    EXPECT_EQ(wide->TextContent(wide.Find("#k")), "t");
}

TEST(Markup, RandomBytesDoNoHarm)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    constexpr std::string_view kPieces[] = {
        "<",    ">",      "</",    "/>",     "<!--",   "-->",     "=",         "\"",
        "'",    "&",      ";",     " ",      "\n",     ".c",      "id",        "table",
        "tr",   "td",     "ul",    "li",     "p",      "b",       "a",         "svg",
        "math", "mi",     "style", "script", "select", "option",  "template",  "frameset",
        "form", "button", "x",     "amp",    "#0",     "\xE2",    "<table>",   "<td>",
        "</p>", "<b>",    "</b>",  "<li>",   "<svg>",  "<title>", "<template>"};
    TestPage page("<table><tr><td id=cell></td></tr></table><ul><li></li></ul><svg></svg><template "
                  "id=t></template>");
    for (int round = 0; round < 3000; ++round) {
        std::string html;
        for (std::size_t count = Pick(random, 40); count > 0; --count) {
            html += kPieces[Pick(random, std::size(kPieces))];
        }
        const std::vector<ElementHandle> all = page.All(page->Root(), "*");
        if (all.size() > 400 || all.size() < 4) {
            page->Load(html + "<p>");
        } else {
            page->SetHtml(all[Pick(random, all.size())], html,
                          static_cast<InsertPosition>(Pick(random, 6)));
        }
        // The walk by links and the index see the same elements.
        std::size_t elements = 0;
        std::vector<ElementHandle> open{page->Root()};
        while (!open.empty()) {
            const ElementHandle element = open.back();
            open.pop_back();
            for (std::size_t index = 0; index < page->ChildCount(element); ++index, ++elements) {
                open.push_back(page->Child(element, index));
            }
        }
        ASSERT_EQ(page.All(page->Root(), "*").size(), elements) << html;
        ASSERT_EQ(page.All(page->Root(), ":root *:not(nothing)").size(), elements) << html;
    }
}

}  // namespace
}  // namespace HtmlEngine::Test
