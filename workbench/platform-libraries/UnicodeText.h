// Conversions between UTF-16 and UTF-8 on the host's side. Nothing here fails: what is no text
// becomes a replacement character. [any-thread]
#pragma once

#include <string>
#include <string_view>

namespace UnicodeText {

// `replacement` stands in for an unpaired surrogate.
std::string ToUtf8(std::u16string_view text, char32_t replacement = U'\uFFFD');

// The longest prefix of a malformed sequence becomes one U+FFFD.
std::u16string ToUtf16(std::string_view text);

std::u16string WithoutUnpairedSurrogates(std::u16string_view text, char16_t replacement);

}  // namespace UnicodeText
