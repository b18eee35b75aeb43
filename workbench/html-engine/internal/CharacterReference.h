// Character references in markup, as the HTML standard names and numbers them: `&amp;`, `&#1071;`,
// `&#x2014;`. Only one that ends with its semicolon is a reference; any other ampersand is text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace HtmlEngine::Internal {

// Appends to `out`, in UTF-8, what the reference at the beginning of `text` stands for, which
// begins with an ampersand. The length of the reference; 0, and nothing appended, where none
// stands. U+FFFD for a number that is no character.
std::size_t AppendCharacterReference(std::string_view text, std::string& out);

}  // namespace HtmlEngine::Internal
