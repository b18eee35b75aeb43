#pragma once

// Character references in markup (`&amp;`, `&#1071;`), as far as they need no long table: numeric
// ones and the common names. Anything else is told apart from a bare ampersand, so that a reader
// can leave it to somebody who knows all names.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace HtmlEngine::Internal {

struct CharacterReference {
    enum class Kind : std::uint8_t {
        /// The ampersand stands for itself.
        None,
        Known,
        /// May be a reference: a name that is not in the table, or one without its semicolon.
        Unknown,
    };

    Kind kind = Kind::None;
    /// Of a known one: the code point, U+FFFD for a number that is none.
    std::uint32_t codePoint = 0;
    /// Of a known one: its bytes, from the ampersand to the semicolon.
    std::size_t length = 0;
};

/// What stands at the beginning of `text`, whose first character is an ampersand.
CharacterReference ReadCharacterReference(std::string_view text);

}  // namespace HtmlEngine::Internal
