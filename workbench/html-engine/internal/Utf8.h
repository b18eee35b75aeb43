#pragma once

// UTF-8 in and out of the engine.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace HtmlEngine::Internal {

/// Length of the character at the front of `text`, which is not empty; 0 for NUL and for what is
/// malformed or cut short.
std::size_t CharacterLength(std::string_view text);

/// Appends one code point; U+FFFD for what is none (0, a surrogate, beyond U+10FFFF).
void AppendUtf8(std::uint32_t codePoint, std::string& out);

/// `text` itself when it is well-formed UTF-8 without NUL. Otherwise a copy in `storage`, in which
/// U+FFFD stands for every NUL and for every longest part that begins like a character and is cut
/// short or impossible.
std::string_view RepairUtf8(std::string_view text, std::string& storage);

}  // namespace HtmlEngine::Internal
