// Character classes and case of ASCII, independent of any locale; bytes above 127 are left alone.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace HtmlEngine::Internal {

constexpr bool IsAsciiSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}
constexpr bool IsAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}
constexpr bool IsAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool IsAscii(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}
constexpr char ToAsciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string AsciiLower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), ToAsciiLower);
    return lower;
}

inline bool EqualsIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return ToAsciiLower(a) == ToAsciiLower(b); });
}

inline std::string_view TrimAscii(std::string_view text)
{
    while (!text.empty() && IsAsciiSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsAsciiSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Calls `function` with each word between white space.
template <typename Function>
void ForEachWord(std::string_view text, Function&& function)
{
    for (std::size_t from = 0; from < text.size();) {
        std::size_t to = from;
        while (to < text.size() && !IsAsciiSpace(text[to])) {
            ++to;
        }
        if (to > from) {
            function(text.substr(from, to - from));
        }
        from = to + 1;
    }
}

}  // namespace HtmlEngine::Internal
