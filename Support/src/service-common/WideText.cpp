#include "service-common/WideText.h"

#include "service-common/UnicodeText.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace {

constexpr bool kWideIsUtf16 = sizeof(wchar_t) == sizeof(char16_t);

using namespace UnicodeText;

constexpr char32_t UnitOf(wchar_t wide)
{
    return static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(wide));
}

// Joins the surrogate pairs among `length` wide characters, each of which is a UTF-16 code unit, in
// place; the new length. Where wide text is UTF-16 there is nothing to join.
std::size_t JoinSurrogates(wchar_t* text, std::size_t length)
{
    if (kWideIsUtf16) {
        return length;
    }
    wchar_t* out = text;
    for (std::size_t i = 0; i < length; ++i) {
        const char32_t unit = UnitOf(text[i]);
        if (IsHighSurrogate(unit) && i + 1 < length && IsLowSurrogate(UnitOf(text[i + 1]))) {
            *out++ = static_cast<wchar_t>(Combine(unit, UnitOf(text[++i])));
        } else {
            *out++ = static_cast<wchar_t>(unit);
        }
    }
    return static_cast<std::size_t>(out - text);
}

constexpr std::size_t kBlock = 16;

// Whether the block, of kBlock characters, holds nothing but ASCII.
bool IsAscii(const wchar_t* block)
{
    char32_t bits = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
        bits |= UnitOf(block[i]);
    }
    return bits < 0x80;
}

}  // namespace

std::u16string ToUtf16(std::wstring_view text)
{
    // Most text is in the basic plane: one loop that the compiler can widen.
    std::u16string result(text.size(), u'\0');
    unsigned beyond = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result[i] = static_cast<char16_t>(text[i]);
        beyond |= UnitOf(text[i]) >= kFirstSupplementary ? 1u : 0u;
    }
    if (beyond == 0) {
        return result;
    }
    result.clear();
    for (const wchar_t wide : text) {
        const char32_t unit = UnitOf(wide);
        Append(result, unit > kLastCodePoint ? kReplacement : unit);
    }
    return result;
}

void AppendFromUtf16(std::wstring& target, std::u16string_view text)
{
    const std::size_t start = target.size();
    target.resize(start + text.size());
    wchar_t* const first = target.data() + start;
    unsigned surrogates = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        first[i] = static_cast<wchar_t>(text[i]);
        surrogates |= (text[i] & 0xF800u) == 0xD800u ? 1u : 0u;
    }
    if (surrogates != 0) {
        target.resize(start + JoinSurrogates(first, text.size()));
    }
}

std::wstring FromUtf16(std::u16string_view text)
{
    std::wstring result;
    AppendFromUtf16(result, text);
    return result;
}

std::wstring FromUtf16LittleEndian(const std::uint8_t* bytes, std::size_t units)
{
    std::wstring result(units, L'\0');
    wchar_t* const first = result.data();
    unsigned surrogates = 0;
    for (std::size_t i = 0; i < units; ++i) {
        const unsigned unit = bytes[2 * i] | unsigned{bytes[2 * i + 1]} << 8;
        first[i] = static_cast<wchar_t>(unit);
        surrogates |= (unit & 0xF800u) == 0xD800u ? 1u : 0u;
    }
    if (surrogates != 0) {
        result.resize(JoinSurrogates(first, units));
    }
    return result;
}

std::wstring FromUtf16(const char16_t* text)
{
    return text == nullptr ? std::wstring() : FromUtf16(std::u16string_view(text));
}

void AppendUtf8(std::string& target, std::wstring_view text)
{
    constexpr std::size_t kLongest = 4 * kBlock;  // of a block
    char part[16 * kLongest];
    char* out = part;
    for (std::size_t i = 0; i < text.size();) {
        if (out > std::end(part) - kLongest) {
            target.append(part, out);
            out = part;
        }
        if (i + kBlock <= text.size() && IsAscii(text.data() + i)) {
            for (std::size_t k = 0; k < kBlock; ++k) {
                out[k] = static_cast<char>(text[i + k]);
            }
            out += kBlock;
            i += kBlock;
            continue;
        }
        for (const std::size_t end = std::min(text.size(), i + kBlock); i < end;) {
            char32_t unit = UnitOf(text[i++]);
            if (kWideIsUtf16 && IsHighSurrogate(unit) && i < text.size() &&
                IsLowSurrogate(UnitOf(text[i]))) {
                unit = Combine(unit, UnitOf(text[i++]));
            } else if (IsSurrogate(unit) || unit > kLastCodePoint) {
                unit = kReplacement;
            }
            out = WriteUtf8(out, unit);
        }
    }
    target.append(part, out);
}

std::string ToUtf8(std::wstring_view text)
{
    std::string result;
    AppendUtf8(result, text);
    return result;
}

std::wstring FromAscii(std::string_view text)
{
    std::wstring result;
    result.reserve(text.size());
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        result.push_back(value < 0x80 ? static_cast<wchar_t>(value)
                                      : static_cast<wchar_t>(kReplacement));
    }
    return result;
}
