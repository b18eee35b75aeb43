// The reader of plain markup against the full parser: where it does not refuse, the trees are the
// same, and what is plain it does not refuse.

#include <fstream>
#include <iterator>

#include <html-engine/internal/Utf8.h>

#include "RandomPage.h"
#include "RandomPlainMarkup.h"
#include "ReaderComparison.h"

namespace HtmlEngine::Test {
namespace {

constexpr std::string_view kContents[] = {
    "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82<br/>\xD0\xBC\xD0\xB8\xD1\x80",
    "\xE4\xB8\xAD\xE6\x96\x87 & \xF0\x9F\x98\x80 &amp; <b>bold</b>",
    "a < b, R&D. ",
};

/// A template of the panel with its place-holders filled.
std::string FilledTemplate(const std::string& name, std::string_view filling)
{
    std::ifstream file(std::string(PANEL_TEMPLATES) + "/" + name, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    const auto byte = [&](std::size_t at) -> std::uint32_t {
        return static_cast<unsigned char>(bytes[at]);
    };
    std::string html;
    bool isInPlaceHolder = false;
    // Behind the byte-order mark stand two bytes for each character.
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
        const std::uint32_t character = byte(at) | (byte(at + 1) << 8U);
        const bool isCapital = character >= 'A' && character <= 'Z';
        if (isCapital && !isInPlaceHolder) {
            html += html.ends_with('"') ? "0_1" : html.ends_with(' ') ? ".highlight" : filling;
        }
        isInPlaceHolder = isCapital || (isInPlaceHolder && character == '_');
        if (!isInPlaceHolder) {
            Internal::AppendUtf8(character, html);
        }
    }
    EXPECT_GT(html.size(), 50U) << name;
    return html;
}

TEST(PlainMarkup, IsWhatThePanelWrites)
{
    for (const std::string_view contents : kContents) {
        for (const char* const name :
             {"template-annot-item.htm", "template-annot-tooltip.htm", "template-page-item.htm",
              "template-comments-container.htm", "template-simple-annot-item.htm"}) {
            const bool isItem = std::string_view(name).ends_with("annot-item.htm");
            const std::string html = FilledTemplate(name, contents);
            for (const std::string_view context : {"div", "ul", "body", "li", "popup"}) {
                const ReaderComparison comparison = CompareReaders(html, context);
                EXPECT_TRUE(comparison.isPlain) << html;
                EXPECT_EQ(comparison.difference, "") << html;
                if (isItem) {
                    break;
                }
            }
        }
    }
    const ReaderComparison list = CompareReaders(ListHtml(20, 5), "div");
    EXPECT_TRUE(list.isPlain);
    EXPECT_EQ(list.difference, "");
}

TEST(PlainMarkup, RefusesWhatAParserWouldRepairOrReadInAnotherMode)
{
    const struct {
        std::string_view html;
        bool isPlain;
        std::string_view context = "div";
    } rows[] = {
        {"", true},
        {"<", true},
        {"a<", true},
        {"<<b></b>", true},
        {"a <> b", true},
        {"a </> b", false},
        {"</br>", false},
        {"</p>", false},
        {"<p>", false},
        {"<p>a<p>b</p></p>", false},
        {"<p><div></div></p>", false},
        {"<p><button><div></div></button></p>", false},
        {"<b><i></b></i>", false},
        {"<b><b><b></b></b></b>", true},
        {"<b><b><b><b></b></b></b></b>", false},
        {"<b><p>a</p></b>", true},
        {"<a><span><a></a></span></a>", false},
        {"<h1><h2></h2></h1>", false},
        {"<h1><span><h2></h2></span></h1>", true},
        {"<li>a</li>", true},
        {"<ul><li><ul><li></li></ul></li></ul>", true},
        {"<ul><li><span><li></li></span></li></ul>", false},
        {"<popup><li></li></popup>", false},
        {"<br></br>", false},
        {"<div/>", false},
        {"<BR/><Div></dIV>", true},
        {"<table> <tr> <td>a</td> </tr> </table>", true},
        {"<table><tr><td><table><tr></tr></table>a</td></tr></table>", true},
        {"<table><tbody><tr></tr></table>", true},
        {"<table><tr></tr></tbody><tr></tr></table>", true},
        {"<table><tr></tr> <thead></thead><tfoot><tbody></table>", true},
        {"<table>a<tr></tr></table>", false},
        {"<table>&#32;<tr></tr></table>", true},
        {"<table><tr><td></tr></table>", false},
        {"<table><td></td></table>", false},
        {"<table><tr><td></table>", false},
        {"<table><div></div></table>", false},
        {"<table><br></table>", false},
        {"<td></td>", false},
        {"<tr></tr>", false, "tbody"},
        {"a", false, "table"},
        {"a", false, "textarea"},
        {"a", false, "select"},
        {"a", false, "html"},
        {"a", true, "body"},
        {"a", true, "unheard-of"},
        {"<i x=1 X=2></i>", false},
        {"<i .a .A></i>", false},
        {"<i x x></i>", false},
        {"<i x='1'y=2></i>", false},
        {"<i x=></i>", false},
        {"<i x=a\"></i>", false},
        {"<i / x></i>", false},
        {"<i x", false},
        {"<i x='", false},
        {"</i", false},
        {"<i></i x>", false},
        {"&copy;&copy &amp", false},
        {"&copy;", true},
        {"&copyright;", false},
        {"&ampere", false},
        {"&zwnj;", false},
        {"&here we go; &D; &", false},
        {"&here we go, &D, &", true},
        {"&#9;&#x9;&#X1F600;&#150;", true},
        {"&#65", false},
        {"&#x;", false},
        {"&#99999999999;", false},
        {"&#9999999;", true},
        {"a\x01", false},
        {std::string_view("a\0", 2), false},
        {"a\xC2\x80", false},
        {"a\xEF\xBF\xBE", false},
        {"\xEF\xBB\xBF"
         "a",
         true},
        {"a\xD0", false},
        {"<!-- a -->", false},
        {"<!DOCTYPE html>", false},
        {"<?a?>", false},
        {"<pre>\na</pre>", false},
        {"<svg></svg>", false},
        {"<title>a</title>", false},
        {"<form></form>", false},
    };
    for (const auto& row : rows) {
        const ReaderComparison comparison = CompareReaders(row.html, row.context);
        EXPECT_EQ(comparison.isPlain, row.isPlain) << row.html;
        EXPECT_EQ(comparison.difference, "") << row.html;
    }
    std::string deep;
    for (int depth = 0; depth < 10000; ++depth) {
        deep = "<i>" + std::move(deep) + "</i>";
    }
    EXPECT_FALSE(CompareReaders(deep, "div").isPlain);
}

TEST(PlainMarkup, BecomesTheSameTreeAsTheParserMakes)
{
    constexpr std::string_view kContexts[] = {"div", "li", "ul", "p", "body", "h3", "td", "popup"};
    std::size_t doubtful = 0;
    std::size_t accepted = 0;
    ForEachSeed(8, [&](unsigned seed) {
        Random random(seed);
        RandomPlainMarkup source(random);
        for (int round = 0; round < 400; ++round) {
            const std::string plain = source.Plain();
            const ReaderComparison whole = CompareReaders(plain, "div");
            ASSERT_TRUE(whole.isPlain) << plain;
            ASSERT_EQ(whole.difference, "") << plain;
            for (const std::string& html : {source.Careless(), source.Damaged()}) {
                const ReaderComparison rest =
                    CompareReaders(html, kContexts[Pick(random, std::size(kContexts))]);
                ASSERT_EQ(rest.difference, "") << html;
                ++doubtful;
                accepted += rest.isPlain ? 1 : 0;
            }
        }
    });
    RecordProperty("accepted", static_cast<int>(accepted));
    EXPECT_GT(accepted, doubtful / 10);
    EXPECT_LT(accepted, doubtful);
}

}  // namespace
}  // namespace HtmlEngine::Test
