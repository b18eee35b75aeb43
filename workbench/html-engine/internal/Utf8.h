// UTF-8 on its way into the engine.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace HtmlEngine::Internal {

// Appends the character of a number; U+FFFD for what is none (0, a surrogate, beyond U+10FFFF).
void AppendUtf8(std::uint32_t number, std::string& out);

// `text` itself when it is well-formed UTF-8 without NUL. Otherwise a copy in `storage`, in which
// U+FFFD stands for every NUL and for every longest part that begins like a character and is cut
// short or impossible.
std::string_view RepairUtf8(std::string_view text, std::string& storage);

}  // namespace HtmlEngine::Internal
