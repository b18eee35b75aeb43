// Search for a text in the comments of a document, in the order of its list. [any-thread]
#pragma once

#include "documents/Document.h"
#include "services/PanelElements.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

// A text as it is compared: without regard to case, and with one space for every run of white
// space. Case is folded character by character, to upper and then to lower case, by the Unicode
// tables of Boost; letters and their accents are not taken apart. Unpaired surrogates stand for
// themselves.
std::u16string FoldText(std::u16string_view text);

// What the list shows of a text that may be markup: characters without tags, references resolved,
// white space where the line is broken, and nothing of what is never shown.
std::u16string ShownText(std::u16string_view text);

struct FoundComments {
    std::uint64_t revision = 0;                // of the document, when the search began
    std::vector<CommentPosition> positions{};  // in ascending order
};

// The listed comments with `text` in contents, author or subject. A comment that stands on a page
// several times is found once, in its first place. The search is given up, with what it has found,
// when `isWanted` becomes false.
FoundComments FindComments(Documents::Document& document, const std::string& text,
                           const std::atomic<bool>& isWanted);

}  // namespace Workbench
