#include "service-common/WideText.h"

#include <type_traits>

namespace {

constexpr bool kWideIsUtf16 = sizeof(wchar_t) == sizeof(char16_t);

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

constexpr char32_t Combine(char32_t high, char32_t low)
{
    return kFirstSupplementary + ((high - 0xD800) << 10) + (low - 0xDC00);
}

void AppendUtf8(std::string& target, char32_t codePoint)
{
    const auto continuation = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (codePoint < 0x80) {
        target.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        target.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        target.push_back(continuation(codePoint));
    } else if (codePoint < kFirstSupplementary) {
        target.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        target.push_back(continuation(codePoint >> 6));
        target.push_back(continuation(codePoint));
    } else {
        target.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        target.push_back(continuation(codePoint >> 12));
        target.push_back(continuation(codePoint >> 6));
        target.push_back(continuation(codePoint));
    }
}

}  // namespace

std::u16string ToUtf16(std::wstring_view text)
{
    std::u16string result;
    result.reserve(text.size());
    for (const wchar_t wide : text) {
        const auto unit = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(wide));
        if (kWideIsUtf16 || unit < kFirstSupplementary) {
            result.push_back(static_cast<char16_t>(unit));
        } else if (unit > kLastCodePoint) {
            result.push_back(static_cast<char16_t>(kReplacement));
        } else {
            const char32_t bits = unit - kFirstSupplementary;
            result.push_back(static_cast<char16_t>(0xD800 + (bits >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + (bits & 0x3FF)));
        }
    }
    return result;
}

void AppendFromUtf16(std::wstring& target, std::u16string_view text)
{
    const std::size_t start = target.size();
    target.resize(start + text.size());
    wchar_t* const first = target.data() + start;
    // Most text has no surrogates: one loop that the compiler can widen.
    unsigned surrogates = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        first[i] = static_cast<wchar_t>(text[i]);
        surrogates |= (text[i] & 0xF800u) == 0xD800u ? 1u : 0u;
    }
    if (kWideIsUtf16 || surrogates == 0) {
        return;
    }
    wchar_t* out = first;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            *out++ = static_cast<wchar_t>(Combine(text[i], text[i + 1]));
            ++i;
        } else {
            *out++ = static_cast<wchar_t>(text[i]);
        }
    }
    target.resize(static_cast<std::size_t>(out - target.data()));
}

std::wstring FromUtf16(std::u16string_view text)
{
    std::wstring result;
    AppendFromUtf16(result, text);
    return result;
}

std::wstring FromUtf16(const char16_t* text)
{
    return text == nullptr ? std::wstring() : FromUtf16(std::u16string_view(text));
}

void AppendUtf8(std::string& target, std::wstring_view text)
{
    const auto unitAt = [text](std::size_t i) {
        return static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(text[i]));
    };
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i;
        while (end < text.size() && unitAt(end) < 0x80) {
            ++end;
        }
        if (end > i) {
            const std::size_t start = target.size();
            target.resize(start + (end - i));
            for (char* out = target.data() + start; i < end; ++i) {
                *out++ = static_cast<char>(text[i]);
            }
            continue;
        }
        char32_t unit = unitAt(i++);
        if (kWideIsUtf16 && IsHighSurrogate(unit) && i < text.size() && IsLowSurrogate(unitAt(i))) {
            unit = Combine(unit, unitAt(i++));
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit) || unit > kLastCodePoint) {
            unit = kReplacement;
        }
        AppendUtf8(target, unit);
    }
}

std::string ToUtf8(std::wstring_view text)
{
    std::string result;
    result.reserve(text.size());
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
