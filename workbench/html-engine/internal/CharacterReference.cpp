#include "html-engine/internal/CharacterReference.h"

#include "html-engine/internal/Ascii.h"
#include "html-engine/internal/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace HtmlEngine::Internal {

namespace {

struct NamedReference {
    std::string_view name;
    std::string_view text;
};

// The rows are made when the build is configured.
constexpr auto kNamed = [] {
    auto rows = std::to_array<NamedReference>({
#include "NamedReferences.inc"
    });
    std::ranges::sort(rows, {}, &NamedReference::name);
    return rows;
}();
static_assert(std::size(kNamed) == 2125, "the named references of the HTML standard");

constexpr std::size_t kLongestName = 31;

// What numbers from 0x80 to 0x9F mean: windows-1252.
constexpr std::uint32_t kFirstWindows = 0x80;
constexpr std::array<std::uint16_t, 32> kWindows = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::uint32_t kBeyondUnicode = 0x110000;

// The value of a digit in base 16, or 16 for what is none.
std::uint32_t DigitValue(char c)
{
    const char lower = ToAsciiLower(c);
    if (IsAsciiDigit(c)) {
        return static_cast<std::uint32_t>(c - '0');
    }
    return lower >= 'a' && lower <= 'f' ? static_cast<std::uint32_t>(lower - 'a') + 10 : 16;
}

std::size_t AppendNumber(std::string_view text, std::string& out)
{
    const bool isHexadecimal = text.size() > 2 && ToAsciiLower(text[2]) == 'x';
    const std::uint32_t base = isHexadecimal ? 16 : 10;
    const std::size_t from = isHexadecimal ? 3 : 2;
    std::size_t at = from;
    std::uint32_t number = 0;
    for (; at < text.size() && DigitValue(text[at]) < base; ++at) {
        number = std::min(number * base + DigitValue(text[at]), kBeyondUnicode);
    }
    if (at == from || at == text.size() || text[at] != ';') {
        return 0;
    }
    const bool isWindows = number >= kFirstWindows && number < kFirstWindows + kWindows.size();
    AppendUtf8(isWindows ? kWindows[number - kFirstWindows] : number, out);
    return at + 1;
}

}  // namespace

std::size_t AppendCharacterReference(std::string_view text, std::string& out)
{
    if (text.size() > 1 && text[1] == '#') {
        return AppendNumber(text, out);
    }
    std::size_t at = 1;
    while (at < text.size() && at <= kLongestName &&
           (IsAsciiLetter(text[at]) || IsAsciiDigit(text[at]))) {
        ++at;
    }
    if (at == text.size() || text[at] != ';') {
        return 0;
    }
    const std::string_view name = text.substr(1, at - 1);
    const auto row = std::ranges::lower_bound(kNamed, name, {}, &NamedReference::name);
    if (row == kNamed.end() || row->name != name) {
        return 0;
    }
    out += row->text;
    return at + 1;
}

}  // namespace HtmlEngine::Internal
