#include "web/CommentSearch.h"

#include "documents/Records.h"
#include "html-engine/Document.h"
#include "html-engine/TreeReader.h"
#include "service-common/UnicodeText.h"

#include <boost/spirit/home/support/char_encoding/unicode/query.hpp>

#include <algorithm>
#include <array>
#include <unordered_set>

namespace Workbench {

namespace {

using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;

constexpr char16_t kSpace = u' ';

char32_t FoldCase(char32_t character)
{
    namespace Ucd = boost::spirit::ucd;
    return Ucd::to_lowercase(Ucd::to_uppercase(character));
}

bool IsWhiteSpace(char16_t unit)
{
    return (unit >= u'\t' && unit <= u'\r') || unit == kSpace || unit == u'\u00A0';
}

// Folded characters of the basic plane, where folding stays inside the plane.
const std::array<char16_t, 0x10000>& FoldedUnits()
{
    static const auto units = [] {
        std::array<char16_t, 0x10000> folded{};
        for (char32_t unit = 0; unit < folded.size(); ++unit) {
            const bool isCharacter = !UnicodeText::IsSurrogate(unit);
            folded[unit] = static_cast<char16_t>(isCharacter ? FoldCase(unit) : unit);
        }
        return folded;
    }();
    return units;
}

// Folding makes no text longer: two units stay two, or become fewer.
void FoldInto(std::u16string_view text, std::u16string& folded)
{
    const auto& units = FoldedUnits();
    folded.resize(text.size());
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        if (!IsWhiteSpace(unit)) {
            folded[end++] = units[unit];
        } else if (end == 0 || folded[end - 1] != kSpace) {
            folded[end++] = kSpace;
        }
        if (UnicodeText::IsLowSurrogate(unit) && at > 0 &&
            UnicodeText::IsHighSurrogate(text[at - 1])) {
            std::u16string pair;
            UnicodeText::Append(pair, FoldCase(UnicodeText::Combine(text[at - 1], unit)));
            end = end - 2 + pair.copy(&folded[end - 2], 2);
        }
    }
    folded.resize(end);
}

// --- Shown text ---

// Elements inside a line; any other one begins and ends lines.
constexpr std::string_view kInLine[] = {
    "a",    "abbr",   "acronym", "b",   "bdi", "bdo",  "big",  "cite", "code", "del",  "dfn",
    "em",   "font",   "i",       "ins", "kbd", "mark", "nobr", "q",    "s",    "samp", "small",
    "span", "strike", "strong",  "sub", "sup", "time", "tt",   "u",    "var",  "wbr"};
constexpr std::string_view kNeverShown[] = {"link", "popup", "script", "style", "title"};

template <std::size_t kCount>
bool IsOneOf(const std::string_view (&names)[kCount], std::string_view name)
{
    return std::find(names, names + kCount, name) != names + kCount;
}

void AppendShown(const HtmlEngine::TreeReader& tree, NodeHandle top, std::string& out)
{
    NodeHandle node = top;
    const auto isBreak = [&](NodeHandle element) {
        return tree.Kind(element) == NodeKind::Element && !IsOneOf(kInLine, tree.TagName(element));
    };
    for (;;) {
        if (tree.Kind(node) == NodeKind::Text) {
            out += tree.Text(node);
        }
        out += isBreak(node) ? " " : "";
        const bool isShown = !IsOneOf(kNeverShown, tree.TagName(node));
        NodeHandle next = isShown ? tree.FirstChild(node) : HtmlEngine::kNoNodeHandle;
        while (next == HtmlEngine::kNoNodeHandle) {
            if (node == top) {
                return;
            }
            out += isBreak(node) ? " " : "";
            next = tree.NextSibling(node);
            node = next == HtmlEngine::kNoNodeHandle ? tree.Parent(node) : node;
        }
        node = next;
    }
}

// Reads texts as the list shows them. Few have markup, so most are taken as they are.
class ShownTexts {
public:
    std::u16string_view operator()(std::u16string_view text)
    {
        if (std::none_of(text.begin(), text.end(),
                         [](char16_t unit) { return unit == u'<' || unit == u'&'; })) {
            return text;
        }
        const HtmlEngine::ElementHandle body = page_.Child(page_.Root(), 1);
        page_.SetHtml(body, "<p>" + UnicodeText::ToUtf8(text) + "</p>",
                      HtmlEngine::InsertPosition::ReplaceContent);
        std::string shown;
        AppendShown(HtmlEngine::TreeReader(page_), body, shown);
        shown_ = UnicodeText::ToUtf16(shown);
        return shown_;
    }

private:
    HtmlEngine::Document page_;
    std::u16string shown_;
};

}  // namespace

std::u16string FoldText(std::u16string_view text)
{
    std::u16string folded;
    FoldInto(text, folded);
    return folded;
}

std::u16string ShownText(std::u16string_view text)
{
    return std::u16string(ShownTexts()(text));
}

FoundComments FindComments(Documents::Document& document, const std::string& text,
                           const std::atomic<bool>& isWanted)
{
    FoundComments found{.revision = document.Revision()};
    const std::u16string wanted = FoldText(UnicodeText::ToUtf16(text));
    ShownTexts shownText;
    std::u16string folded;
    const auto holds = [&](std::u16string_view value) {
        FoldInto(shownText(value), folded);
        return folded.find(wanted) != folded.npos;
    };
    for (std::uint32_t page = 0; page < document.PageCount() && isWanted; ++page) {
        const Documents::PageRef snapshot = document.AcquirePage(page);
        std::unordered_set<const _PDAnnotRec*> known;
        const std::size_t count = snapshot ? snapshot.Get()->annotations.size() : 0;
        for (std::uint32_t index = 0; index < count && isWanted; ++index) {
            const _PDAnnotRec* const annotation = snapshot.Get()->annotations[index].Get();
            if (annotation == nullptr) {
                continue;
            }
            const Documents::PropertyBlockRef block = annotation->properties.Load();
            const Documents::AnnotationProperties& values = block->properties;
            if (block->listed &&
                (holds(values.contents) || holds(values.title) || holds(values.subject)) &&
                known.insert(annotation).second) {
                found.positions.push_back({page, index});
            }
        }
    }
    return found;
}

}  // namespace Workbench
