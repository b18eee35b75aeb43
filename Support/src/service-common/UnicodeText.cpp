#include "service-common/UnicodeText.h"

namespace UnicodeText {

namespace {

bool IsPairAt(std::u16string_view text, std::size_t position) noexcept
{
    return IsHighSurrogate(text[position]) && position + 1 < text.size() &&
           IsLowSurrogate(text[position + 1]);
}

}  // namespace

void Append(std::string& target, char32_t codePoint)
{
    char bytes[4];
    target.append(bytes, WriteUtf8(bytes, codePoint));
}

void Append(std::u16string& target, char32_t codePoint)
{
    if (codePoint < kFirstSupplementary) {
        target += static_cast<char16_t>(codePoint);
    } else {
        target += static_cast<char16_t>(0xD800 + ((codePoint - kFirstSupplementary) >> 10));
        target += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    }
}

// Which second byte may follow a first one: Unicode, table 3-7.
Character FirstCharacter(std::string_view text) noexcept
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {kReplacement, 1, false};
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t codePoint = lead & (0x7Fu >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if (at >= text.size() || byte(at) < low || byte(at) > high) {
            return {kReplacement, at, false};
        }
        codePoint = codePoint << 6 | (byte(at) & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {codePoint, length, true};
}

std::string ToUtf8(std::u16string_view text, char32_t replacement)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit < 0x80) {
            result += static_cast<char>(unit);
        } else if (IsPairAt(text, i)) {
            Append(result, Combine(unit, text[++i]));
        } else {
            Append(result, IsSurrogate(unit) ? replacement : unit);
        }
    }
    return result;
}

std::u16string ToUtf16(std::string_view text)
{
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        Append(result, character.codePoint);
        text.remove_prefix(character.length);
    }
    return result;
}

std::u16string WithoutUnpairedSurrogates(std::u16string_view text, char16_t replacement)
{
    std::u16string result(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (IsPairAt(text, i)) {
            ++i;
        } else if (IsSurrogate(text[i])) {
            result[i] = replacement;
        }
    }
    return result;
}

}  // namespace UnicodeText
