// UTF-8 and UTF-16, and the characters that they consist of. Nothing here fails: what is no text
// becomes a replacement character. [any-thread]
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace UnicodeText {

inline constexpr char32_t kReplacement = 0xFFFD;
inline constexpr char32_t kFirstSupplementary = 0x10000;
inline constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t unit) noexcept
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t unit) noexcept
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
constexpr bool IsSurrogate(char32_t unit) noexcept
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

// The character of a surrogate pair.
constexpr char32_t Combine(char32_t high, char32_t low) noexcept
{
    return kFirstSupplementary + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Writes up to 4 bytes of UTF-8 for a code point that is none of the surrogates; the end of them.
inline char* WriteUtf8(char* out, char32_t codePoint) noexcept
{
    const auto continuation = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (codePoint < 0x80) {
        *out++ = static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        *out++ = static_cast<char>(0xC0 | (codePoint >> 6));
        *out++ = continuation(codePoint);
    } else if (codePoint < kFirstSupplementary) {
        *out++ = static_cast<char>(0xE0 | (codePoint >> 12));
        *out++ = continuation(codePoint >> 6);
        *out++ = continuation(codePoint);
    } else {
        *out++ = static_cast<char>(0xF0 | (codePoint >> 18));
        *out++ = continuation(codePoint >> 12);
        *out++ = continuation(codePoint >> 6);
        *out++ = continuation(codePoint);
    }
    return out;
}

void Append(std::string& target, char32_t codePoint);
void Append(std::u16string& target, char32_t codePoint);

struct Character {
    char32_t codePoint;  // U+FFFD when malformed
    std::size_t length;  // in bytes; of what is malformed the longest part that begins well
    bool isWellFormed;
};

// The character that UTF-8 text, which is not empty, begins with.
Character FirstCharacter(std::string_view text) noexcept;

// `replacement` stands in for an unpaired surrogate.
std::string ToUtf8(std::u16string_view text, char32_t replacement = kReplacement);

// The longest prefix of a malformed sequence becomes one U+FFFD.
std::u16string ToUtf16(std::string_view text);

std::u16string WithoutUnpairedSurrogates(std::u16string_view text, char16_t replacement);

}  // namespace UnicodeText
