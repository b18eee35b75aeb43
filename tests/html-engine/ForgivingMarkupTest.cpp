// Markup with mistakes: what becomes of each, and that a mistake stays where it was made.

#include "Containment.h"
#include "RandomPage.h"

namespace HtmlEngine::Test {
namespace {

TEST(ForgivingMarkup, IsRepairedWhereTheMistakeIs)
{
    const struct {
        std::string_view html;
        std::string_view read;
        std::string_view context = "div";
    } rows[] = {
        // What begins no sound tag of a known name is text.
        {"<", "&lt;"},
        {"x<y, a<<b>c</b>", "x&lt;y, a&lt;<b>c</b>"},
        {"List<String> #include <stdio.h>", "List&lt;String&gt; #include &lt;stdio.h&gt;"},
        {"Jane <jane@example.org></jane>", "Jane &lt;jane@example.org&gt;&lt;/jane&gt;"},
        {"i<b&&c>d i<b, c>d", "i&lt;b&amp;&amp;c&gt;d i&lt;b, c&gt;d"},
        {"a </> b </ b> c </b x> <?pi?> <!x>",
         "a &lt;/&gt; b &lt;/ b&gt; c &lt;/b x&gt; &lt;?pi?&gt; &lt;!x&gt;"},
        {"<i x='1'y=2>a", "&lt;i x='1'y=2&gt;a"},
        {"<i x=>a<i x=a\"b>b<i / x>c", "&lt;i x=&gt;a&lt;i x=a\"b&gt;b&lt;i / x&gt;c"},
        {"<i x <b>a</b>", "&lt;i x <b>a</b>"},
        {"<i x", "&lt;i x"},
        {"<i x='<b>a</b>", "&lt;i x='<b>a</b>"},
        {"</i", "&lt;/i"},
        {"&copy 2 &bogus; &#x; &#65 &", "&amp;copy 2 &amp;bogus; &amp;#x; &amp;#65 &amp;"},
        // Two faults that do no harm.
        {"<i x=1 X=2 .a .A>b</i>", "<i class=\"a\" x=\"1\">b</i>"},
        {"<div/>a</div>b", "<div>a</div>b"},
        // What is never ended swallows nothing.
        {"<style>a<b>c</b>", "&lt;style&gt;a<b>c</b>"},
        {"<!-- a <b>c</b>", "&lt;!-- a <b>c</b>"},
        {"<textarea>&amp;<b>c</b>", "&lt;textarea&gt;&amp;<b>c</b>"},
        {"<plaintext><b>c</b>", "&lt;plaintext&gt;<b>c</b>"},
        {"<svg><![CDATA[a</svg>b", "<svg>&lt;![CDATA[a</svg>b"},
        // What is left open ends with its holder, and is not opened again.
        {"<p>a<b>b</p>c", "<p>a<b>b</b></p>c"},
        {"<b>1<i>2</b>3</i>4", "<b>1<i>2</i></b>34"},
        {"<b>1<p>2</b>3</p>", "<b>1<p>2</p></b>3"},
        {"<p><b>1<div>2</div>3</b></p>", "<p><b>1<div>2</div>3</b></p>"},
        {"<a>1<a>2", "<a>1<a>2</a></a>"},
        {"<h1>1<h2>2</h1>3", "<h1>1<h2>2</h2></h1>3"},
        // End tags reach their element, but not past a list, an item, a table or a cell.
        {"a</b></p></br>b", "ab"},
        {"<b><ul></b><li></b>1</li></ul>2</b>", "<b><ul><li>1</li></ul>2</b>"},
        {"<div><table><tr><td><b></div></tr>1</b></td></tr></table></div>",
         "<div><table><tbody><tr><td><b>1</b></td></tr></tbody></table></div>"},
        {"<ul><li><b></ul>1</b></li></ul>", "<ul><li><b>1</b></li></ul>"},
        {"<td>1</td>", "1"},
        {"<table>1<b>2</b><td>3</table>",
         "<table>1<b>2</b><tbody><tr><td>3</td></tr></tbody></table>"},
        {"<li><tr>1</li>", "<li>1</li>"},
        {"<table><td><ul><td>1</table>",
         "<table><tbody><tr><td><ul>1</ul></td></tr></tbody></table>"},
        {"<html class=a><body class=b><head><frameset>1", "1"},
        // Each element is read as what it stands in wants it.
        {"<td>1<tr><td>2", "<tr><td>1</td></tr><tr><td>2</td></tr>", "tbody"},
        {"<b>&amp;</b>", "&lt;b&gt;&amp;&lt;/b&gt;", "textarea"},
        {"<b>&amp;</b>", "<b>&amp;</b>", "style"},
        {"<svg><p><B/>1</p></svg>", "<svg><p><B></B>1</p></svg>"},
    };
    for (const auto& row : rows) {
        TestPage page(
            "<table><tbody></tbody></table><div></div><textarea></textarea><style></style>");
        const ElementHandle place = page.Find(row.context);
        page->SetHtml(place, row.html, InsertPosition::ReplaceContent);
        EXPECT_EQ(page->InnerHtml(place), row.read) << row.html;
    }
}

TEST(ForgivingMarkup, PagesHaveAHeadAndABody)
{
    const struct {
        std::string_view html;
        std::string_view read;
    } rows[] = {
        {"", "<head></head><body></body>"},
        {" a", "<head></head><body>a</body>"},
        {"<title>a</title> <b>c</b>", "<head><title>a</title> </head><body><b>c</b></body>"},
        {"<!DOCTYPE html>\n<html lang=a>\n<head>\n<meta></head>\n<body class=b>c</body>\n</html>\n",
         "<head>\n<meta></head>\n<body class=\"b\">c\n\n</body>"},
        {"<p>a<body class=b><body class=c></body><p>d",
         "<head></head><body class=\"b\"><p>a</p><p>d</p></body>"},
    };
    for (const auto& row : rows) {
        TestPage page;
        page->Load(row.html);
        EXPECT_EQ(page->InnerHtml(page->Root()), row.read) << row.html;
    }
}

constexpr std::string_view kTellingTexts[] = {
    "List<String>, x<y, #include <stdio.h>",
    "Jane Roe <jane@example.org>",
    "if a<b and c>d then stop",
    "<b><i><u>",
    "</b></p></div></h3></td></tr></table></popup>",
    "<p><div><p>",
    "<ul>",
    "<ul><li>",
    "<ul><li><p>",
    "<li>",
    "<li annot-name=\"0_0\" titleid=\"a\"><popup id=\"a\">",
    "</li>",
    "</li></ul>",
    "</li></ul></div></li></ul>",
    "<ol></li><dl><dd></ul>",
    "<table>",
    "<table><tr><td><ul><li>",
    "</table><ul><li>",
    "<td><tr><tbody><caption>",
    "</td></tr></table></popup><table><td><ul><li><p>",
    "</td></tr></table></popup><li>",
    "<popup>",
    "<popup><table><tr><td>",
    "<style>",
    "<script>x</scrip>",
    "<textarea><title>",
    "</style></script></textarea></title> --> ]]> \" '",
    "<!--",
    "<!-- --",
    "<a href=\"",
    "<a href='x> <b title=\"",
    "<a b",
    "<svg><style>",
    "<svg><td><popup><li><![CDATA[",
    "<math><mi><ul>",
    "<select><option>",
    "<body class=a><html><frameset>",
    "<plaintext>",
    "<template><td>",
    "<",
    "</",
    "&",
    "&#",
};

// The text in every place of an item.
std::vector<ItemTexts> Everywhere(const std::string& text)
{
    ItemTexts name, simple, contents, subject, title;
    name.name = simple.name = contents.contents = subject.subject = title.title = text;
    simple.contents.clear();
    return {name, simple, contents, subject, title};
}

TEST(ForgivingMarkup, NoTextSpoilsWhatFollowsItsItem)
{
    for (const std::string_view text : kTellingTexts) {
        for (const ItemTexts& texts : Everywhere(std::string(text))) {
            EXPECT_EQ(SpoiltBy(texts), "") << text;
        }
    }
    constexpr std::string_view kPieces[] = {"<ul>",
                                            "<li>",
                                            "<table>",
                                            "<tr>",
                                            "<td>",
                                            "<p>",
                                            "<b>",
                                            "<div>",
                                            "<popup>",
                                            "<h3>",
                                            "<dl><dd>",
                                            "<tbody>",
                                            "<svg>",
                                            "<math>",
                                            "<select>",
                                            "<option>",
                                            "</ul>",
                                            "</li>",
                                            "</table>",
                                            "</tr>",
                                            "</td>",
                                            "</p>",
                                            "</b>",
                                            "</div>",
                                            "</popup>",
                                            "</h3>",
                                            "</dl>",
                                            "</tbody>",
                                            "</svg>",
                                            "<br/>",
                                            "<style>",
                                            "</style>",
                                            "<!--",
                                            "-->",
                                            "<a b=\"",
                                            "\">",
                                            "<a b='",
                                            "'>",
                                            "<",
                                            ">",
                                            "</",
                                            "/>",
                                            "&amp",
                                            "<title>",
                                            "</title>",
                                            "text",
                                            " ",
                                            "\r\n",
                                            "<popup id=\"a\">",
                                            "<li titleid=\"a\">",
                                            "<i x=1>",
                                            "<![CDATA[",
                                            "]]>",
                                            "\xE2\x82",
                                            "<caption>"};
    ForEachSeed(4, [&](unsigned seed) {
        Random random(seed);
        const auto anyText = [&] {
            std::string text;
            for (std::size_t count = Pick(random, 9); count > 0; --count) {
                text += kPieces[Pick(random, std::size(kPieces))];
            }
            return text;
        };
        for (int round = 0; round < 1500; ++round) {
            const ItemTexts texts{anyText(), anyText(), anyText(), anyText()};
            ASSERT_EQ(SpellsOutItsEnd(texts) ? "" : SpoiltBy(texts), "") << texts.name << "\n"
                                                                         << texts.contents << "\n"
                                                                         << texts.subject << "\n"
                                                                         << texts.title;
        }
    });
}

}  // namespace
}  // namespace HtmlEngine::Test
