#include "platform-libraries/UnicodeText.h"

namespace UnicodeText {

namespace {

constexpr bool IsHighSurrogate(char16_t unit) noexcept
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsLowSurrogate(char16_t unit) noexcept
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool IsPairAt(std::u16string_view text, std::size_t position) noexcept
{
    return IsHighSurrogate(text[position]) && position + 1 < text.size() &&
           IsLowSurrogate(text[position + 1]);
}

void AppendCharacter(std::string& target, char32_t character)
{
    const auto append = [&target](char32_t byte) { target += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | (character >> 6));
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | (character >> 12));
        append(0x80 | ((character >> 6) & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | (character >> 18));
        append(0x80 | ((character >> 12) & 0x3F));
        append(0x80 | ((character >> 6) & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

void AppendCharacter(std::u16string& target, char32_t character)
{
    if (character < 0x10000) {
        target += static_cast<char16_t>(character);
    } else {
        target += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        target += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
}

// How a sequence goes on after its first byte (Unicode, table 3-7): the number of bytes that
// follow, and the bounds of the second one. 0: no sequence begins with that byte.
struct SequenceShape {
    unsigned following;
    unsigned lowest;
    unsigned highest;
};

constexpr SequenceShape ShapeOf(unsigned first) noexcept
{
    if (first >= 0xC2 && first <= 0xDF) {
        return {1, 0x80, 0xBF};
    }
    if (first >= 0xE0 && first <= 0xEF) {
        return {2, first == 0xE0 ? 0xA0u : 0x80u, first == 0xED ? 0x9Fu : 0xBFu};
    }
    if (first >= 0xF0 && first <= 0xF4) {
        return {3, first == 0xF0 ? 0x90u : 0x80u, first == 0xF4 ? 0x8Fu : 0xBFu};
    }
    return {0, 0, 0};
}

}  // namespace

std::string ToUtf8(std::u16string_view text, char32_t replacement)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (IsPairAt(text, i)) {
            const char32_t high = static_cast<char32_t>(unit - 0xD800) << 10;
            AppendCharacter(result, 0x10000 + high + (text[++i] - 0xDC00u));
        } else {
            AppendCharacter(result,
                            IsHighSurrogate(unit) || IsLowSurrogate(unit) ? replacement : unit);
        }
    }
    return result;
}

std::u16string ToUtf16(std::string_view text)
{
    std::u16string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (position < text.size()) {
        const unsigned first = static_cast<unsigned char>(text[position++]);
        if (first < 0x80) {
            result += static_cast<char16_t>(first);
            continue;
        }
        const SequenceShape shape = ShapeOf(first);
        char32_t character = first & (0x3Fu >> shape.following);
        unsigned taken = 0;
        while (taken < shape.following && position < text.size()) {
            const unsigned byte = static_cast<unsigned char>(text[position]);
            if (byte < (taken == 0 ? shape.lowest : 0x80u) ||
                byte > (taken == 0 ? shape.highest : 0xBFu)) {
                break;
            }
            character = (character << 6) | (byte & 0x3Fu);
            ++taken;
            ++position;
        }
        const bool isWhole = shape.following != 0 && taken == shape.following;
        AppendCharacter(result, isWhole ? character : U'\uFFFD');
    }
    return result;
}

std::u16string WithoutUnpairedSurrogates(std::u16string_view text, char16_t replacement)
{
    std::u16string result(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (IsPairAt(text, i)) {
            ++i;
        } else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i])) {
            result[i] = replacement;
        }
    }
    return result;
}

}  // namespace UnicodeText
