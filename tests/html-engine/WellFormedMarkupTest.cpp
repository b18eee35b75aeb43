// Markup that needs no repair: the tree is the one of the HTML standard.

#include "RandomPage.h"
#include "RandomWellFormedMarkup.h"
#include "StandardParser.h"
#include "html-engine/internal/Utf8.h"

#include <fstream>
#include <iterator>

namespace HtmlEngine::Test {
namespace {

constexpr std::string_view kContents[] = {
    "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82<br/>\xD0\xBC\xD0\xB8\xD1\x80",
    "\xE4\xB8\xAD\xE6\x96\x87 & \xF0\x9F\x98\x80 &amp; <b>bold</b>",
    "a < b, R&D. ",
};

// A template of the panel with its place-holders filled.
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

TEST(WellFormedMarkup, OfThePanelIsReadAsTheStandardSays)
{
    for (const std::string_view contents : kContents) {
        for (const char* const name :
             {"template-annot-item.htm", "template-annot-tooltip.htm", "template-page-item.htm",
              "template-comments-container.htm", "template-simple-annot-item.htm"}) {
            const bool isItem = std::string_view(name).ends_with("annot-item.htm");
            const std::string html = FilledTemplate(name, contents);
            for (const std::string_view context : {"div", "ul", "body", "li"}) {
                EXPECT_EQ(DifferenceFromStandard(html, context), "") << html;
                if (isItem) {
                    break;
                }
            }
        }
    }
    EXPECT_EQ(DifferenceFromStandard(ListHtml(20, 5), "div"), "");
}

TEST(WellFormedMarkup, IsReadAsTheStandardSays)
{
    constexpr std::string_view kRows[] = {
        "<ul><li>a<li><p>b<p>c<li>d</ul>e",
        "<dl><dt>a<dd>b<dt>c</dl>",
        "<details><dl><dd><p>a<p>b</dl></details><table><tr><td><p>c</table>d",
        "<table><caption>a<colgroup><col><col><thead><tr><th>b<tbody><tr><td>c<td>d<tr></table>e",
        "<table><col><tr><td><table><tr><td>a</table>b</table>",
        "<table> <tr> <td>a</td> </tr> </table>",
        "<table><template><tr><td>a</td></tr></template></table>",
        "<select><optgroup><option>a<option>b<optgroup><option>c</select>",
        "<ruby>a<rp>(<rt>b<rp>)<rtc><rt>c</ruby>",
        "<math><annotation-xml><apply><ci>x</ci></apply></annotation-xml></math>",
        "<p>a<ul><li>b</ul><p>c<table></table><p>d<pre>e</pre>",
        "<pre>\n\na</pre><textarea>\n<b>&amp;</textarea><pre>\r\nb</pre>",
        "<style>a<b>&amp;</style><script>if (a<b) \"</p>\"</script><title>a<b>&lt;</title>",
        "<!-- a -- <b> --><!----><!DOCTYPE html>",
        "<svg viewBox=\"0 0 1 1\"><linearGradient/><a xlink:href='#'/><title><b>a</b></title>"
        "<foreignObject><p>b</p></foreignObject><![CDATA[<c>]]></svg><math><mi>x</mi></math>",
        "&zwnj;&alpha;&NotEqualTilde;&amp;lt; <b title='&quot;&hearts;&#65;'></b>",
        "<a href=a/b?c=d&amp;e>f</a> R&D, a & b",
    };
    for (const std::string_view row : kRows) {
        EXPECT_EQ(DifferenceFromStandard(row, "div"), "") << row;
    }
    EXPECT_EQ(DifferenceFromStandard("<tr><td>a<tr><td>b", "tbody"), "");
    EXPECT_EQ(DifferenceFromStandard("<td>a<td>b", "tr"), "");
    ForEachSeed(8, [&](unsigned seed) {
        Random random(seed);
        RandomWellFormedMarkup source(random);
        for (int round = 0; round < 400; ++round) {
            const std::string html = source.Next();
            ASSERT_EQ(DifferenceFromStandard(html, "div"), "") << html;
        }
    });
}

}  // namespace
}  // namespace HtmlEngine::Test
