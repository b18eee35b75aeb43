#include "html-engine/internal/ElementTraits.h"

#include "html-engine/internal/Ascii.h"

#include <algorithm>
#include <array>

namespace HtmlEngine::Internal {

namespace {

using namespace ElementTrait;

constexpr ElementTraits kHeadVoid = kVoid | kHeadContent;
constexpr ElementTraits kItem = kBlock | kListItem | kOptionalEnd;
constexpr ElementTraits kTerm = kBlock | kDefinition | kOptionalEnd;
constexpr ElementTraits kSection = kTableSection | kOptionalEnd;
constexpr ElementTraits kCell = kTableCell | kOptionalEnd;
constexpr ElementTraits kRuby = kRubyText | kOptionalEnd;

// Sorted by name.
constexpr auto kElements = std::to_array<KnownElement>({
    {"a"},
    {"abbr"},
    {"acronym"},
    {"address", kBlock},
    {"applet"},
    {"area", kVoid},
    {"article", kBlock},
    {"aside", kBlock},
    {"audio"},
    {"b"},
    {"base", kHeadVoid},
    {"basefont", kHeadVoid},
    {"bdi"},
    {"bdo"},
    {"bgsound", kHeadVoid},
    {"big"},
    {"blink"},
    {"blockquote", kBlock},
    {"body", kPageStructure},
    {"br", kVoid},
    {"button"},
    {"canvas"},
    {"caption", kTableHead | kOptionalEnd},
    {"center", kBlock},
    {"cite"},
    {"code"},
    {"col", kTableColumn | kVoid},
    {"colgroup", kTableHead | kOptionalEnd},
    {"data"},
    {"datalist"},
    {"dd", kTerm},
    {"del"},
    {"details", kBlock},
    {"dfn"},
    {"dialog", kBlock},
    {"dir", kBlock | kList},
    {"div", kBlock},
    {"dl", kBlock | kList},
    {"dt", kTerm},
    {"em"},
    {"embed", kVoid},
    {"fieldset", kBlock},
    {"figcaption", kBlock},
    {"figure", kBlock},
    {"font"},
    {"footer", kBlock},
    {"form", kBlock},
    {"frame", kPageStructure | kVoid},
    {"frameset", kPageStructure},
    {"h1", kBlock},
    {"h2", kBlock},
    {"h3", kBlock},
    {"h4", kBlock},
    {"h5", kBlock},
    {"h6", kBlock},
    {"head", kPageStructure},
    {"header", kBlock},
    {"hgroup", kBlock},
    {"hr", kBlock | kVoid},
    {"html", kPageStructure},
    {"i"},
    {"iframe", kRawText},
    {"img", kVoid},
    {"input", kVoid},
    {"ins"},
    {"kbd"},
    {"keygen", kVoid},
    {"label"},
    {"legend"},
    {"li", kItem},
    {"link", kHeadVoid},
    {"listing", kBlock | kDropsLineBreak},
    {"main", kBlock},
    {"map"},
    {"mark"},
    {"marquee"},
    {"math", kForeignRoot},
    {"menu", kBlock | kList},
    {"meta", kHeadVoid},
    {"meter"},
    {"nav", kBlock},
    {"nobr"},
    {"noembed", kRawText},
    {"noframes", kRawText | kHeadContent},
    {"noscript"},
    {"object"},
    {"ol", kBlock | kList},
    {"optgroup", kOptionGroup | kOptionalEnd},
    {"option", kOption | kOptionalEnd},
    {"output"},
    {"p", kBlock | kParagraph | kOptionalEnd},
    {"param", kVoid},
    {"picture"},
    {"popup", kTooltip},
    {"pre", kBlock | kDropsLineBreak},
    {"progress"},
    {"q"},
    {"rb", kRuby},
    {"rp", kRuby},
    {"rt", kRuby},
    {"rtc", kRubyContainer | kOptionalEnd},
    {"ruby"},
    {"s"},
    {"samp"},
    {"script", kRawText | kHeadContent},
    {"search", kBlock},
    {"section", kBlock},
    {"select"},
    {"slot"},
    {"small"},
    {"source", kVoid},
    {"span"},
    {"strike"},
    {"strong"},
    {"style", kRawText | kHeadContent},
    {"sub"},
    {"summary", kBlock},
    {"sup"},
    {"svg", kForeignRoot},
    {"table", kBlock | kTable},
    {"tbody", kSection},
    {"td", kCell},
    {"template", kHeadContent | kTemplate},
    {"textarea", kEscapableText | kDropsLineBreak},
    {"tfoot", kSection},
    {"th", kCell},
    {"thead", kSection},
    {"time"},
    {"title", kEscapableText | kHeadContent},
    {"tr", kTableRow | kOptionalEnd},
    {"track", kVoid},
    {"tt"},
    {"u"},
    {"ul", kBlock | kList},
    {"var"},
    {"video"},
    {"wbr", kVoid},
    {"xmp", kBlock | kRawText},
});

static_assert(std::ranges::is_sorted(kElements, {}, &KnownElement::name));

constexpr std::size_t kLongestName =
    std::ranges::max(kElements, {}, [](const KnownElement& element) {
        return element.name.size();
    }).name.size();

// The places of names that begin with a letter, from that of `a` on: where each letter's begin.
constexpr auto kLetters = [] {
    std::array<std::uint8_t, 27> begins{};
    for (std::size_t letter = 0; letter < begins.size(); ++letter) {
        const auto isBefore = [&](const KnownElement& element) {
            return static_cast<std::size_t>(element.name[0] - 'a') < letter;
        };
        begins[letter] = static_cast<std::uint8_t>(std::ranges::count_if(kElements, isBefore));
    }
    return begins;
}();

}  // namespace

std::size_t KnownElementCount()
{
    return kElements.size();
}

std::size_t IndexOfElement(std::string_view name)
{
    if (name.empty() || name.size() > kLongestName || !IsAsciiLetter(name[0])) {
        return kUnknownElement;
    }
    const auto letter = static_cast<std::size_t>(ToAsciiLower(name[0]) - 'a');
    for (std::size_t place = kLetters[letter]; place < kLetters[letter + 1]; ++place) {
        if (EqualsIgnoringCase(name, kElements[place].name)) {
            return place;
        }
    }
    return kUnknownElement;
}

const KnownElement& ElementAt(std::size_t place)
{
    return kElements[place];
}

}  // namespace HtmlEngine::Internal
