#include "RandomWellFormedMarkup.h"

#include "html-engine/internal/Ascii.h"

#include <algorithm>
#include <utility>

namespace HtmlEngine::Test {

namespace {

constexpr std::string_view kInline[] = {"span", "popup", "b", "i",      "u",   "strong", "em",
                                        "font", "code",  "a", "button", "kbd", "label"};
constexpr std::string_view kFormatting[] = {"b", "i", "u", "strong", "em", "font", "code"};
constexpr std::string_view kBlocks[] = {"div", "p", "section", "h1", "h3", "blockquote"};
constexpr std::string_view kSpace[] = {" ", "\n", "\r\n", "\t", "\r", "  \r\n\t", "\f"};
constexpr std::string_view kText[] = {"one",
                                      "two words",
                                      "1 < 2",
                                      "<3 ",
                                      "a & b",
                                      "R&D, Q&A",
                                      "&1",
                                      "&",
                                      "\xD0\x9F\xD1\x80\xD0\xB8",
                                      "\xE4\xB8\xAD\xE6\x96\x87",
                                      "\xF0\x9F\x98\x80",
                                      "\xEF\xBF\xBD",
                                      "\xEF\xBB\xBF",
                                      "&amp;",
                                      "&lt;b&gt;",
                                      "&nbsp;",
                                      "&#1071;",
                                      "&#x2014;",
                                      "&#128;",
                                      "&#0;",
                                      "&#xD800;",
                                      "&#13;",
                                      "&#11;",
                                      "&hellip;",
                                      "&eacute;",
                                      "&apos;",
                                      "\"'",
                                      "]]>",
                                      "-->",
                                      "/>",
                                      "=",
                                      "\r\n",
                                      "\r",
                                      "\xC2\xA0"};
constexpr std::string_view kAttributes[] = {"annot-name", "titleid",  "class", ".highlight",
                                            ".New",       ".a.b",     "..",    "disabled",
                                            "style",      "localize", "x:y"};
constexpr std::string_view kValues[] = {"",          "0_1", "a b  a",      "display:none;",
                                        "1 < 2 > 1", "a&b", "&amp;&quot;", "\xD1\x8F",
                                        "\r\n",      "/"};

}  // namespace

std::string RandomWellFormedMarkup::Next()
{
    AddContent(4);
    return std::exchange(html_, {});
}

bool RandomWellFormedMarkup::IsOpen(std::string_view name, std::size_t times) const
{
    return static_cast<std::size_t>(std::ranges::count(open_, name)) >= times;
}

void RandomWellFormedMarkup::AddContent(int depth)
{
    for (std::size_t count = Pick(random_, 4) + (depth == 4 ? 1 : 0); count > 0; --count) {
        const std::size_t choice = Pick(random_, depth > 0 ? 10 : 5);
        const bool mayHoldBlocks = !IsOpen("p");
        if (choice < 3) {
            AddText();
        } else if (choice == 3) {
            constexpr std::string_view kVoids[] = {"br", "img", "wbr", "input"};
            AddVoid(AnyOf(kVoids));
        } else if (choice == 4) {
            AddSpace();
        } else if (choice < 7) {
            AddElement(AnyOf(kInline), depth - 1);
        } else if (!mayHoldBlocks) {
            AddText();
        } else if (choice == 7) {
            AddElement(AnyOf(kBlocks), depth - 1);
        } else if (choice == 8) {
            AddList(depth - 1);
        } else {
            AddTable(depth - 1);
        }
    }
}

void RandomWellFormedMarkup::AddElement(std::string_view name, int depth)
{
    const bool isHeading = name.size() == 2 && name[0] == 'h';
    const bool isHeadingInside = !open_.empty() && open_.back()[0] == 'h';
    const bool isFormatting = std::ranges::find(kFormatting, name) != std::end(kFormatting);
    if ((isHeading && isHeadingInside) || ((name == "a" || name == "button") && IsOpen(name)) ||
        (isFormatting && IsOpen(name, 3))) {
        name = "span";
    }
    AddStartTag(name, ">");
    open_.push_back(name);
    AddContent(depth);
    open_.pop_back();
    const bool mayStayOpen =
        name == "li" || name == "dt" || name == "dd" || name == "td" || name == "th";
    if (!mayStayOpen || Coin()) {
        AddEndTag(name);
    }
}

void RandomWellFormedMarkup::AddList(int depth)
{
    constexpr std::string_view kLists[] = {"ul", "ol", "dl"};
    const std::string_view list = AnyOf(kLists);
    AddStartTag(list, ">");
    open_.push_back(list);
    for (std::size_t count = Pick(random_, 3); count > 0; --count) {
        AddSpace();
        AddElement(list != "dl" ? "li" : Coin() ? "dt" : "dd", depth);
        AddSpace();
    }
    open_.pop_back();
    AddEndTag(list);
}

void RandomWellFormedMarkup::AddTable(int depth)
{
    AddStartTag("table", ">");
    open_.push_back("table");
    AddSpace();
    for (std::size_t count = Pick(random_, 3); count > 0; --count) {
        if (Coin()) {
            AddRows(depth);
            continue;
        }
        constexpr std::string_view kSections[] = {"tbody", "thead", "tfoot"};
        const std::string_view section = AnyOf(kSections);
        AddStartTag(section, ">");
        AddRows(depth);
        AddEndTag(section);
        AddSpace();
    }
    open_.pop_back();
    AddEndTag("table");
}

void RandomWellFormedMarkup::AddRows(int depth)
{
    for (std::size_t rows = Pick(random_, 3); rows > 0; --rows) {
        AddSpace();
        AddStartTag("tr", ">");
        for (std::size_t cells = Pick(random_, 3); cells > 0; --cells) {
            AddSpace();
            AddElement(Coin(4) ? "th" : "td", depth);
        }
        AddSpace();
        AddEndTag("tr");
        AddSpace();
    }
}

void RandomWellFormedMarkup::AddVoid(std::string_view name)
{
    AddStartTag(name, Coin() ? ">" : Coin() ? "/>" : " />");
}

void RandomWellFormedMarkup::AddText()
{
    for (std::size_t count = Pick(random_, 3) + 1; count > 0; --count) {
        html_ += AnyOf(kText);
        html_ += ' ';
    }
}

void RandomWellFormedMarkup::AddSpace()
{
    if (Coin()) {
        html_ += AnyOf(kSpace);
    }
}

void RandomWellFormedMarkup::AddStartTag(std::string_view name, std::string_view end)
{
    html_ += '<';
    html_ += Cased(name);
    const std::size_t first = Pick(random_, std::size(kAttributes));
    const std::size_t count = Coin() ? 0 : Pick(random_, 4);
    for (std::size_t index = first; index < std::min(first + count, std::size(kAttributes));
         ++index) {
        html_ += AnyOf(kSpace);
        AddAttribute(kAttributes[index]);
    }
    html_ += Coin(4) && end == ">" ? AnyOf(kSpace) : "";
    // A slash would be the end of a bare value.
    html_ += end == "/>" && count > 0 ? " />" : end;
}

void RandomWellFormedMarkup::AddAttribute(std::string_view name)
{
    html_ += Cased(name);
    if (Coin(3)) {
        return;
    }
    html_ += Coin(6) ? " =\n" : "=";
    const std::string_view value = AnyOf(kValues);
    const bool mayStandBare = value == "0_1" || value == "display:none;" || value == "/";
    const std::string_view quote = mayStandBare && Coin() ? "" : Coin() ? "\"" : "'";
    html_ += quote;
    html_ += value;
    html_ += quote;
}

void RandomWellFormedMarkup::AddEndTag(std::string_view name)
{
    html_ += "</";
    html_ += Cased(name);
    html_ += Coin(6) ? " \r\n>" : ">";
}

std::string RandomWellFormedMarkup::Cased(std::string_view name)
{
    std::string cased(name);
    if (Coin(8)) {
        const std::size_t at = Pick(random_, cased.size());
        cased[at] = cased[at] >= 'a' && cased[at] <= 'z' ? char(cased[at] - 'a' + 'A') : cased[at];
    }
    return cased;
}

}  // namespace HtmlEngine::Test
