// The element names of HTML and of the panel's templates, and what a reader and a writer of markup
// must know of each. One table; constant data. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace HtmlEngine::Internal {

using ElementTraits = std::uint32_t;

namespace ElementTrait {
// Its start tag ends an open paragraph.
constexpr ElementTraits kBlock = 1U << 0;
constexpr ElementTraits kParagraph = 1U << 1;
// Has neither content nor an end tag.
constexpr ElementTraits kVoid = 1U << 2;
constexpr ElementTraits kList = 1U << 3;
constexpr ElementTraits kListItem = 1U << 4;
// Term or description of a definition list.
constexpr ElementTraits kDefinition = 1U << 5;
constexpr ElementTraits kTable = 1U << 6;
constexpr ElementTraits kTableSection = 1U << 7;
constexpr ElementTraits kTableRow = 1U << 8;
constexpr ElementTraits kTableCell = 1U << 9;
// `caption` and `colgroup`: directly in a table, and not for rows.
constexpr ElementTraits kTableHead = 1U << 10;
constexpr ElementTraits kTableColumn = 1U << 11;
constexpr ElementTraits kOption = 1U << 12;
constexpr ElementTraits kOptionGroup = 1U << 13;
constexpr ElementTraits kRubyText = 1U << 14;
constexpr ElementTraits kRubyContainer = 1U << 24;
// Its content is text up to its end tag.
constexpr ElementTraits kRawText = 1U << 15;
// The same, with character references.
constexpr ElementTraits kEscapableText = 1U << 16;
// A line break that comes first in it does not count.
constexpr ElementTraits kDropsLineBreak = 1U << 17;
// Stands in the head of a page.
constexpr ElementTraits kHeadContent = 1U << 18;
// `html`, `head`, `body` and the frames: once in a page, or never.
constexpr ElementTraits kPageStructure = 1U << 19;
// `svg` and `math`.
constexpr ElementTraits kForeignRoot = 1U << 20;
// The end of its holder ends it: an end tag of its own may be left out.
constexpr ElementTraits kOptionalEnd = 1U << 21;
// The tooltip of an element, which names it in `titleid`.
constexpr ElementTraits kTooltip = 1U << 22;

// Holds what may stand anywhere, parts of tables too.
constexpr ElementTraits kTemplate = 1U << 23;

constexpr ElementTraits kTablePart =
    kTableSection | kTableRow | kTableCell | kTableHead | kTableColumn;
// End tags of what is around these do not reach inside, nor theirs outside.
constexpr ElementTraits kBarrier =
    kList | kListItem | kDefinition | kTable | kTableCell | kTableHead;
}  // namespace ElementTrait

// One name of the table.
struct KnownElement {
    std::string_view name;
    ElementTraits traits = 0;
};

// Number of names; indices are below it.
std::size_t KnownElementCount();

constexpr std::size_t kUnknownElement = static_cast<std::size_t>(-1);

// The index of a name, in any case; kUnknownElement for a name that is not in the table.
std::size_t IndexOfElement(std::string_view name);

// The element at an index.
const KnownElement& ElementAt(std::size_t place);

}  // namespace HtmlEngine::Internal
